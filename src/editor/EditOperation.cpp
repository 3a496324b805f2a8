#include "editor/EditOperation.h"

#include "editor/StraightenGeometry.h"

#include <QColorSpace>
#include <QPainter>
#include <QTransform>

EditOperation EditOperation::cropTo(const QRect &rect)
{
    EditOperation op;
    op.kind = Crop;
    op.crop = rect;
    return op;
}

EditOperation EditOperation::straighten(double degrees)
{
    EditOperation op;
    op.kind = Straighten;
    op.degrees = degrees;
    return op;
}

EditOperation EditOperation::turn(Kind kind)
{
    EditOperation op;
    op.kind = kind;
    return op;
}

EditOperation EditOperation::annotate(const QList<Annotation> &annotations)
{
    EditOperation op;
    op.kind = Annotate;
    op.annotations = annotations;
    return op;
}

EditOperation EditOperation::adjust(const PhotoAdjustments &adjustments)
{
    EditOperation op;
    op.kind = Adjust;
    op.adjustments = adjustments;
    return op;
}

QString EditOperation::name() const
{
    switch (kind) {
    case Crop: return QStringLiteral("Crop");
    case Straighten: return QStringLiteral("Straighten %1°").arg(degrees, 0, 'f', 1);
    case TurnLeft: return QStringLiteral("Rotate Left");
    case TurnRight: return QStringLiteral("Rotate Right");
    case FlipHorizontal: return QStringLiteral("Flip Horizontal");
    case FlipVertical: return QStringLiteral("Flip Vertical");
    case Annotate: return annotations.size() == 1 ? QStringLiteral("Annotation") : QStringLiteral("Annotations");
    case Adjust: return QStringLiteral("Adjustments");
    }
    return QString();
}

QSize EditOperation::resultSize(const QSize &size) const
{
    switch (kind) {
    case Crop: {
        const QRect kept = crop.intersected(QRect(QPoint(0, 0), size));
        return kept.isEmpty() ? size : kept.size();
    }
    case Straighten: return StraightenGeometry::straightenedSize(size, degrees);
    case TurnLeft:
    case TurnRight: return size.transposed();
    default: return size;
    }
}

// A format QPainter draws into at full quality, keeping whether the picture has alpha.
static QImage paintable(const QImage &image)
{
    const QImage::Format format = image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
    return image.format() == format ? image.copy() : image.convertToFormat(format);
}

QImage EditOperation::apply(const QImage &image) const
{
    if (image.isNull())
        return image;
    switch (kind) {
    case Crop: {
        const QRect kept = crop.intersected(image.rect());
        return kept.isEmpty() ? image : image.copy(kept);
    }
    case Straighten: {
        if (qFuzzyIsNull(degrees))
            return image;
        const QSize size = StraightenGeometry::straightenedSize(image.size(), degrees);
        QImage out(size, image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
        out.setColorSpace(image.colorSpace());
        out.fill(Qt::transparent);
        QPainter painter(&out);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(size.width() / 2.0, size.height() / 2.0);
        painter.rotate(degrees);
        painter.translate(-image.width() / 2.0, -image.height() / 2.0);
        painter.drawImage(0, 0, image);
        painter.end();
        return out;
    }
    case TurnLeft:
        return image.transformed(QTransform().rotate(-90));
    case TurnRight:
        return image.transformed(QTransform().rotate(90));
    case FlipHorizontal:
        return image.mirrored(true, false);
    case FlipVertical:
        return image.mirrored(false, true);
    case Annotate: {
        QImage out = paintable(image);
        QPainter painter(&out);
        for (const Annotation &a : annotations)
            a.paint(painter);
        painter.end();
        return out;
    }
    case Adjust:
        return adjustments.isNeutral() ? image : adjustments.applyTo(image);
    }
    return image;
}

#include "model/TilePainter.h"

#include "model/TileLabelGeometry.h"
#include "model/TileLayout.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

void TilePainter::paint(QPainter &painter, const QRect &target, const TileLayout &tile, const QImage &photo,
                        double collageBorderWidth, bool turned)
{
    if (target.isEmpty())
        return;
    // The tile is drawn on its own first and then laid on the collage at the module's opacity,
    // so its photo, border and labels fade together as one layer.
    QImage layer(target.size(), QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    const double w = target.width();
    const double h = target.height();
    {
        QPainter p(&layer);
        p.setRenderHint(QPainter::Antialiasing);
        QPainterPath bounds;
        bounds.addRoundedRect(QRectF(0, 0, w, h), tile.cornerRadius, tile.cornerRadius);

        p.save();
        p.setClipPath(bounds);
        if (!photo.isNull()) {
            // The selected photo's tile keeps a 3-point margin for the outline; the photo is
            // centred and not scaled, so the margin crops it.
            if (tile.selected)
                p.setClipRect(QRectF(3, 3, w - 6, h - 6), Qt::IntersectClip);
            p.drawImage(QPointF((w - photo.width()) * 0.5, (h - photo.height()) * 0.5), photo);
        }
        p.restore();

        if (tile.borderWidth > 0) {
            // The border lies inside the tile's bounds and follows its corners.
            const double b = tile.borderWidth;
            QPainterPath ring = bounds;
            QPainterPath inner;
            const double r = std::max(0.0, tile.cornerRadius - b);
            inner.addRoundedRect(QRectF(b, b, w - 2 * b, h - 2 * b), r, r);
            ring = ring.subtracted(inner);
            p.fillPath(ring, tile.borderColor);
        }

        const QString title = tile.module ? tile.module->title() : QString();
        if (!title.trimmed().isEmpty()) {
            const QRectF label = TileLabelGeometry::titleLabelFrame(QSizeF(w, h), tile.borderWidth, turned ? 6.0 : collageBorderWidth);
            // Measured from the bottom edge: the label sits along the tile's bottom.
            const QRectF box(label.x(), h - label.y() - label.height(), label.width(), label.height());
            QFont font(QStringLiteral("Helvetica"));
            font.setBold(true);
            font.setPixelSize(std::max(1, int(TileLabelGeometry::fontSize(label))));
            p.save();
            p.setClipRect(box.adjusted(0, -label.height(), 0, 0).intersected(QRectF(0, 0, w, h)));
            p.setFont(font);
            p.setPen(Qt::white);
            p.drawText(box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, title);
            p.restore();
        }

        // The photo's number, in the bottom-left corner, black on a small light plate sized to
        // its text, so it reads on dark photos too.
        QFont indexFont;
        indexFont.setPixelSize(13);
        p.setFont(indexFont);
        const QString number = QString::number(tile.tag + 1);
        const QFontMetricsF metrics(indexFont);
        const QRectF numberBox(0, h - metrics.height(), metrics.horizontalAdvance(number) + 6, metrics.height());
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(255, 255, 255, 215));
        p.drawRoundedRect(numberBox, 3, 3);
        p.setPen(Qt::black);
        p.drawText(numberBox, Qt::AlignCenter, number);

        if (tile.selected) {
            p.setCompositionMode(QPainter::CompositionMode_Multiply);
            p.setPen(QPen(selectionColor(), 3));
            p.setBrush(Qt::NoBrush);
            p.drawRoundedRect(QRectF(0, 0, w, h), 3, 3);
        }
    }
    painter.save();
    painter.setOpacity(std::clamp(tile.alpha, 0.0, 1.0));
    painter.drawImage(target.topLeft(), layer);
    painter.restore();
}

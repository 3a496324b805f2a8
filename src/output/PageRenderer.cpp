#include "output/PageRenderer.h"

#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>

QImage PageRenderer::resample(const QImage &picture, const PagePreset &page)
{
    const QSize size = page.renderSize(QSizeF(picture.size()));
    if (picture.isNull() || size.isEmpty() || size == picture.size())
        return picture;
    return picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

void PageRenderer::paint(QPainter &painter, const QImage &picture, const PagePreset &page, double deviceDotsPerInch)
{
    if (picture.isNull() || !page.isValid() || !(deviceDotsPerInch > 0))
        return;
    // The placement of the picture the page asks for; a picture of another size stands for it.
    const QSize planned = page.renderSize(QSizeF(picture.size()));
    const PagePreset::Placement place = page.place(planned);
    if (place.target.isEmpty())
        return;
    const double kx = double(picture.width()) / planned.width();
    const double ky = double(picture.height()) / planned.height();
    const QRectF source(place.source.x() * kx, place.source.y() * ky, place.source.width() * kx,
                        place.source.height() * ky);
    const double k = deviceDotsPerInch / page.dotsPerInch();
    const QRectF target(place.target.x() * k, place.target.y() * k, place.target.width() * k,
                        place.target.height() * k);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (source == QRectF(picture.rect()))
        painter.drawImage(target, picture);
    else if (source == QRectF(source.toRect()))
        painter.drawImage(target, picture.copy(source.toRect())); // the overflow is not embedded
    else
        painter.drawImage(target, picture, source);
}

QImage PageRenderer::pageImage(const QImage &picture, const PagePreset &page)
{
    QImage sheet(page.pixelSize(), QImage::Format_RGB32);
    if (sheet.isNull())
        return sheet;
    sheet.fill(Qt::white);
    const int dotsPerMeter = int(std::lround(page.dotsPerInch() / 0.0254));
    sheet.setDotsPerMeterX(dotsPerMeter);
    sheet.setDotsPerMeterY(dotsPerMeter);
    QPainter painter(&sheet);
    paint(painter, picture, page, page.dotsPerInch());
    return sheet;
}

QString PageRenderer::pdfPath(const QString &chosen)
{
    return chosen.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive) ? chosen : chosen + QStringLiteral(".pdf");
}

bool PageRenderer::writePdf(const QImage &picture, const PagePreset &page, const QString &path,
                            const Document &document, QString *error)
{
    const auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return false;
    };
    if (picture.isNull())
        return fail(QStringLiteral("there is no picture to write"));
    if (!page.isValid())
        return fail(QStringLiteral("the margins leave no room on a %1 page").arg(page.name()));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(file.errorString());
    {
        QPdfWriter writer(&file);
        QPageLayout layout = page.pageLayout();
        layout.setMode(QPageLayout::FullPageMode); // painting starts at the paper's corner
        writer.setPageLayout(layout);
        writer.setResolution(int(std::lround(page.dotsPerInch())));
        writer.setTitle(document.title);
        writer.setCreator(document.creator);
        QPainter painter;
        if (!painter.begin(&writer)) {
            file.cancelWriting();
            return fail(QStringLiteral("the PDF could not be started"));
        }
        paint(painter, picture, page, writer.resolution());
        if (!painter.end()) {
            file.cancelWriting();
            return fail(QStringLiteral("the PDF could not be finished"));
        }
    }
    if (file.error() != QFileDevice::NoError) {
        const QString why = file.errorString();
        file.cancelWriting();
        return fail(why);
    }
    if (!file.commit())
        return fail(file.errorString());
    return true;
}

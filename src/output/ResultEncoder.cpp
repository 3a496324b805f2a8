#include "output/ResultEncoder.h"

#include "foundation/AtomicFileWriter.h"
#include "output/ResultFormat.h"
#include "output/ParallelPngWriter.h"

#include <QBuffer>
#include <QImageWriter>
#include <QPainter>
#include <QSaveFile>

namespace {

bool writeWithQt(const QImage &image, QIODevice &device, const ResultEncoder::Settings &settings, QString *error)
{
    QImageWriter writer(&device, settings.format);
    if (ResultFormat::hasQuality(settings.format))
        writer.setQuality(std::clamp(settings.quality, 0, 100));
    if (ResultFormat::hasCompression(settings.format))
        writer.setCompression(settings.tiffCompression);
    if (writer.write(image))
        return true;
    if (error)
        *error = writer.errorString();
    return false;
}

bool writeTo(const QImage &image, QIODevice &device, const ResultEncoder::Settings &settings, QString *error,
             const ResultEncoder::Progress &progress)
{
    if (image.isNull()) {
        if (error)
            *error = QStringLiteral("there is no picture to write");
        return false;
    }
    if (!ResultFormat::isWritable(settings.format)) {
        if (error)
            *error = QStringLiteral("pictures cannot be written as %1 here").arg(QString::fromLatin1(settings.format));
        return false;
    }
    if (progress)
        progress(1, 10); // prepared
    const QImage picture = ResultEncoder::prepared(image, settings);
    if (progress)
        progress(2, 10);
    bool ok = false;
    if (settings.format == "png") {
        ParallelPngWriter::Options options;
        options.dotsPerMeter = settings.dotsPerMeter;
        if (progress)
            options.progress = [&progress](int done, int total) { progress(2 + 8 * done / total, 10); };
        ok = ParallelPngWriter::write(picture, device, options, error);
    } else {
        ok = writeWithQt(picture, device, settings, error);
    }
    if (ok && progress)
        progress(10, 10);
    return ok;
}

} // namespace

QImage ResultEncoder::resampled(const QImage &image, const QSize &size)
{
    if (image.isNull() || size.isEmpty() || image.size() == size)
        return image;
    const QImage covering = image.scaled(size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    if (covering.size() == size)
        return covering;
    return covering.copy((covering.width() - size.width()) / 2, (covering.height() - size.height()) / 2,
                         size.width(), size.height());
}

QImage ResultEncoder::prepared(const QImage &image, const Settings &settings)
{
    QImage picture = resampled(image, settings.pixelSize);
    if (picture.hasAlphaChannel() && !ResultFormat::keepsAlpha(settings.format)) {
        QImage flat(picture.size(), QImage::Format_RGB32);
        flat.fill(Qt::white);
        QPainter painter(&flat);
        painter.drawImage(0, 0, picture);
        painter.end();
        picture = flat;
    }
    if (settings.dotsPerMeter > 0) {
        picture.setDotsPerMeterX(settings.dotsPerMeter);
        picture.setDotsPerMeterY(settings.dotsPerMeter);
    }
    return picture;
}

bool ResultEncoder::writeFile(const QImage &image, const QString &path, const Settings &settings, QString *error,
                              const Progress &progress)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error)
            *error = AtomicFileWriter::failureReason(file);
        return false;
    }
    QString reason;
    if (!writeTo(image, file, settings, &reason, progress)) {
        if (error)
            *error = AtomicFileWriter::failureReason(file, reason);
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        if (error)
            *error = AtomicFileWriter::failureReason(file);
        return false;
    }
    return true;
}

QByteArray ResultEncoder::encode(const QImage &image, const Settings &settings, QString *error, const Progress &progress)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!writeTo(image, buffer, settings, error, progress))
        return QByteArray();
    return bytes;
}

QByteArray ResultEncoder::lzwTiff(const QImage &image)
{
    Settings settings;
    settings.format = "tiff";
    settings.tiffCompression = 1;
    return encode(image, settings);
}

QByteArray ResultEncoder::png(const QImage &image)
{
    return encode(image, Settings());
}

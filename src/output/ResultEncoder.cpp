#include "output/ResultEncoder.h"

#include "foundation/AtomicFileWriter.h"
#include "output/ResultFormat.h"
#include "output/ParallelPngWriter.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageWriter>
#include <QPainter>
#include <QSaveFile>
#include <QScopeGuard>

#include <tiffio.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include <algorithm>
#include <cstdarg>
#include <mutex>

namespace {

using Canceled = ResultEncoder::Canceled;

bool isCanceled(const Canceled &canceled)
{
    return canceled && canceled();
}

// libtiff (on the standard error stream, of its own accord) and Qt's JPEG writer (in its
// logging category) tell of every failed write. A write refused because the work was given up,
// or cut short by the device (the write then fails with the system's reason), is no error worth
// a line on the terminal: while this thread's encoder is being stopped, their complaints are
// dropped; all others still go where they went.
thread_local bool tGivingUp = false;
TIFFErrorHandler gTiffErrors = nullptr;
QtMessageHandler gQtMessages = nullptr;

void tiffError(const char *module, const char *format, va_list args)
{
    if (!tGivingUp && gTiffErrors)
        gTiffErrors(module, format, args);
}

void qtMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (tGivingUp && context.category && qstrcmp(context.category, "qt.gui.imageio.jpeg") == 0)
        return;
    if (gQtMessages)
        gQtMessages(type, context, text);
}

void quietWhenGivingUp()
{
    static std::once_flag once;
    std::call_once(once, [] {
        gTiffErrors = TIFFSetErrorHandler(tiffError);
        gQtMessages = qInstallMessageHandler(qtMessage);
    });
}

// Passes an encoder's writes (and seeks, for TIFF) on to the real device until the work is
// cancelled; from then on every write fails, so an encoder that writes as it goes (JPEG, TIFF,
// BMP) stops at its next write.
class GuardedDevice : public QIODevice
{
public:
    GuardedDevice(QIODevice &target, const Canceled &canceled)
        : m_target(target)
        , m_canceled(canceled)
    {
        open((target.openMode() & QIODevice::ReadWrite) | QIODevice::Unbuffered);
        if (!target.isSequential())
            QIODevice::seek(target.pos());
    }
    bool isSequential() const override { return m_target.isSequential(); }
    qint64 size() const override { return m_target.size(); }
    bool canceled() const { return m_wasCanceled; }
    // The device took fewer bytes than it was given, once or more (as on a full disk).
    bool cutShort() const { return m_cutShort; }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        if (!follow())
            return -1;
        return m_target.read(data, maxSize);
    }
    qint64 writeData(const char *data, qint64 size) override
    {
        if (isCanceled(m_canceled)) {
            m_wasCanceled = true;
            tGivingUp = true;
            setErrorString(ResultEncoder::canceledReason());
            return -1;
        }
        if (!follow())
            return -1;
        const qint64 written = m_target.write(data, size);
        if (written < size) {
            m_cutShort = true;
            tGivingUp = true; // the failure is told with the system's reason
        }
        return written;
    }

private:
    // The real device at this one's position.
    bool follow()
    {
        return m_target.isSequential() || m_target.pos() == pos() || m_target.seek(pos());
    }

    QIODevice &m_target;
    const Canceled &m_canceled;
    bool m_wasCanceled = false;
    bool m_cutShort = false;
};

// WebP through libwebp itself rather than Qt's plug-in, the same way (lossless at quality 100,
// the colour profile kept), so that its long encode of a large picture can be given up.
bool writeWebp(const QImage &image, QIODevice &device, int quality, QString *error, const Canceled &canceled)
{
    const auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return false;
    };
    if (std::max(image.width(), image.height()) > WEBP_MAX_DIMENSION)
        return fail(QStringLiteral("the picture is too large for WebP (at most %1 pixels a side)").arg(WEBP_MAX_DIMENSION));
    const bool alpha = image.hasAlphaChannel();
    const QImage pixels = image.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    WebPConfig config;
    WebPPicture picture;
    if (!WebPConfigInit(&config) || !WebPPictureInit(&picture))
        return fail(QStringLiteral("the WebP encoder could not be started"));
    config.lossless = quality >= 100 ? 1 : 0;
    config.quality = float(std::clamp(quality, 0, 100));
    picture.width = pixels.width();
    picture.height = pixels.height();
    picture.use_argb = 1;
    const bool imported = alpha ? WebPPictureImportRGBA(&picture, pixels.constBits(), int(pixels.bytesPerLine()))
                                : WebPPictureImportRGB(&picture, pixels.constBits(), int(pixels.bytesPerLine()));
    if (!imported) {
        WebPPictureFree(&picture);
        return fail(QStringLiteral("out of memory"));
    }
    WebPMemoryWriter memory;
    WebPMemoryWriterInit(&memory);
    picture.writer = WebPMemoryWrite;
    picture.custom_ptr = &memory;
    // The encoder asks as it goes; a zero stops it.
    picture.user_data = const_cast<Canceled *>(&canceled);
    picture.progress_hook = [](int, const WebPPicture *p) {
        return isCanceled(*static_cast<const Canceled *>(p->user_data)) ? 0 : 1;
    };
    // Turning the pixels into the encoder's colours takes a while before it first asks.
    const bool encoded = !isCanceled(canceled) && WebPEncode(&config, &picture) != 0;
    if (!encoded && isCanceled(canceled))
        picture.error_code = VP8_ENC_ERROR_USER_ABORT;
    const WebPEncodingError why = picture.error_code;
    WebPPictureFree(&picture);
    const auto done = qScopeGuard([&memory] { WebPMemoryWriterClear(&memory); });
    if (!encoded)
        return fail(why == VP8_ENC_ERROR_USER_ABORT ? ResultEncoder::canceledReason()
                                                    : QStringLiteral("the WebP encoder failed (error %1)").arg(int(why)));
    QByteArray bytes(reinterpret_cast<const char *>(memory.mem), qsizetype(memory.size));
    if (image.colorSpace().isValid()) {
        // The colour profile in an ICCP chunk, as Qt's plug-in writes it.
        const QByteArray icc = image.colorSpace().iccProfile();
        WebPMux *mux = WebPMuxNew();
        const WebPData picturePart{reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size())};
        const WebPData iccPart{reinterpret_cast<const uint8_t *>(icc.constData()), size_t(icc.size())};
        WebPData assembled{nullptr, 0};
        if (mux && WebPMuxSetImage(mux, &picturePart, 0) == WEBP_MUX_OK && WebPMuxSetChunk(mux, "ICCP", &iccPart, 0) == WEBP_MUX_OK
            && WebPMuxAssemble(mux, &assembled) == WEBP_MUX_OK)
            bytes = QByteArray(reinterpret_cast<const char *>(assembled.bytes), qsizetype(assembled.size));
        WebPDataClear(&assembled);
        WebPMuxDelete(mux);
    }
    return AtomicFileWriter::writeAll(device, bytes, error);
}

bool writeWithQt(const QImage &image, QIODevice &device, const ResultEncoder::Settings &settings, QString *error,
                 const Canceled &canceled)
{
    quietWhenGivingUp();
    GuardedDevice guarded(device, canceled);
    const auto given = qScopeGuard([] { tGivingUp = false; });
    QImageWriter writer(&guarded, settings.format);
    if (ResultFormat::hasQuality(settings.format))
        writer.setQuality(std::clamp(settings.quality, 0, 100));
    if (ResultFormat::hasCompression(settings.format))
        writer.setCompression(settings.tiffCompression);
    // Qt's TIFF writer does not hear of a write libtiff could not finish as it closes.
    if (writer.write(image) && !guarded.cutShort())
        return true;
    if (error) {
        *error = guarded.canceled() ? ResultEncoder::canceledReason()
                 : guarded.cutShort() ? QStringLiteral("not all of the picture could be written")
                                      : writer.errorString();
    }
    return false;
}

bool writeTo(const QImage &image, QIODevice &device, const ResultEncoder::Settings &settings, QString *error,
             const ResultEncoder::Progress &progress, const Canceled &canceled)
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
    const auto stop = [&] {
        if (!isCanceled(canceled))
            return false;
        if (error)
            *error = ResultEncoder::canceledReason();
        return true;
    };
    if (stop())
        return false;
    if (progress)
        progress(1, 10); // prepared
    const QImage picture = ResultEncoder::prepared(image, settings);
    if (stop())
        return false;
    if (progress)
        progress(2, 10);
    bool ok = false;
    if (settings.format == "png") {
        ParallelPngWriter::Options options;
        options.dotsPerMeter = settings.dotsPerMeter;
        options.level = settings.pngLevel;
        options.threads = settings.threads;
        if (progress)
            options.progress = [&progress](int done, int total) { progress(2 + 8 * done / total, 10); };
        options.canceled = canceled;
        ok = ParallelPngWriter::write(picture, device, options, error);
        if (!ok && isCanceled(canceled) && error)
            *error = ResultEncoder::canceledReason();
    } else if (settings.format == "webp") {
        ok = writeWebp(picture, device, settings.quality, error, canceled);
    } else {
        ok = writeWithQt(picture, device, settings, error, canceled);
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

QString ResultEncoder::canceledReason()
{
    return QStringLiteral("the work was given up");
}

bool ResultEncoder::writeFile(const QImage &image, const QString &path, const Settings &settings, QString *error,
                              const Progress &progress, const Canceled &canceled)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error)
            *error = AtomicFileWriter::failureReason(file);
        return false;
    }
    QString reason;
    if (!writeTo(image, file, settings, &reason, progress, canceled)) {
        if (error)
            *error = AtomicFileWriter::failureReason(file, reason);
        file.cancelWriting();
        return false;
    }
    // The last moment to give up: after this the file is there, whole.
    if (isCanceled(canceled)) {
        file.cancelWriting();
        if (error)
            *error = canceledReason();
        return false;
    }
    if (!file.commit()) {
        if (error)
            *error = AtomicFileWriter::failureReason(file);
        return false;
    }
    return true;
}

QByteArray ResultEncoder::encode(const QImage &image, const Settings &settings, QString *error, const Progress &progress,
                                 const Canceled &canceled)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!writeTo(image, buffer, settings, error, progress, canceled))
        return QByteArray();
    return bytes;
}

QByteArray ResultEncoder::lzwTiff(const QImage &image, const Canceled &canceled)
{
    Settings settings;
    settings.format = "tiff";
    settings.tiffCompression = 1;
    return encode(image, settings, nullptr, {}, canceled);
}

QByteArray ResultEncoder::png(const QImage &image, const Canceled &canceled)
{
    return encode(image, Settings(), nullptr, {}, canceled);
}

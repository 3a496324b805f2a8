#include "foundation/AtomicFileWriter.h"

#include <QFileDevice>
#include <QSaveFile>

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace {

bool tellsWhy(const QString &reason)
{
    return !reason.isEmpty() && reason != QLatin1String("Unknown error");
}

} // namespace

QString AtomicFileWriter::failureReason(QFileDevice &file, const QString &fallback)
{
    if (file.error() != QFileDevice::NoError && tellsWhy(file.errorString()))
        return file.errorString();
    // Written at the end, past the space the file already holds, until the system refuses
    // (a partial write comes first on a full disk); at most 1 MiB. Only a file that was written
    // to is asked: an encoder may also fail before it writes anything.
    const int fd = file.handle();
    const bool written = file.error() != QFileDevice::NoError || file.size() > 0;
    if (written && fd >= 0 && ::lseek(fd, 0, SEEK_END) >= 0) {
        static const char zeros[64 * 1024] = {};
        for (int i = 0; i < 16; ++i) {
            errno = 0;
            if (::write(fd, zeros, sizeof zeros) < 0) {
                if (errno != 0)
                    return QString::fromLocal8Bit(std::strerror(errno));
                break;
            }
        }
    }
    if (tellsWhy(fallback))
        return fallback;
    return QStringLiteral("The file could not be written.");
}

bool AtomicFileWriter::writeAll(QIODevice &device, const QByteArray &bytes, QString *error)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        // After a short write the next one fails at once, and then the system tells why.
        const qint64 n = device.write(bytes.constData() + done, bytes.size() - done);
        if (n <= 0) {
            if (error)
                *error = device.errorString();
            return false;
        }
        done += n;
    }
    return true;
}

bool AtomicFileWriter::write(const QString &path, const QByteArray &bytes, QString *error)
{
    QSaveFile file(path);
    QString reason;
    bool ok = file.open(QIODevice::WriteOnly);
    if (!ok) {
        reason = failureReason(file);
    } else if (!(ok = writeAll(file, bytes, &reason))) {
        reason = failureReason(file, reason);
        file.cancelWriting();
    } else if (!(ok = file.commit())) {
        reason = failureReason(file);
    }
    if (!ok && error)
        *error = reason;
    return ok;
}

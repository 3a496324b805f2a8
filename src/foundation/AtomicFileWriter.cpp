#include "foundation/AtomicFileWriter.h"

#include <QFileDevice>
#include <QSaveFile>

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
    if (!ok)
        reason = file.errorString();
    else if (!(ok = writeAll(file, bytes, &reason)))
        file.cancelWriting();
    else if (!(ok = file.commit()))
        reason = file.errorString();
    if (!ok && error)
        *error = reason;
    return ok;
}

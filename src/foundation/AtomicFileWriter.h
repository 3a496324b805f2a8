#pragma once

#include <QByteArray>
#include <QString>

class QFileDevice;
class QIODevice;

// Writes bytes so that a failure is never silent and always says why in the system's words
// ("No space left on device", "File too large"), also when the disk fills up halfway through
// a write, which the system reports as a short write without a reason.
class AtomicFileWriter
{
public:
    // Writes all the bytes to the device; on failure *error (may be null) receives the reason.
    static bool writeAll(QIODevice &device, const QByteArray &bytes, QString *error = nullptr);
    // Writes the file atomically (a temporary file renamed over the target): a failed write
    // leaves any earlier file in place. *error (may be null) receives the reason.
    static bool write(const QString &path, const QByteArray &bytes, QString *error = nullptr);
    // Why a write to the open file failed, in the system's words. An encoder that stops at a
    // short write says only "Unknown error", and so may the file; then more is written to the
    // file (which is being abandoned anyway) and the system's refusal is the reason. Falls back
    // to `fallback`, then to a plain sentence, never to "Unknown error".
    static QString failureReason(QFileDevice &file, const QString &fallback = QString());
};

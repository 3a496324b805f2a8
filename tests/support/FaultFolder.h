#pragma once

#include <QDir>
#include <QFile>
#include <QString>

#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

// A folder where writes fail as on a person's machine, and the system's words for it:
//  - ReadOnly: a read-only file system mounted there ("Read-only file system"); without the right
//    to mount, a folder without write permission ("Permission denied"), which binds only when
//    not running as root (then usable() is false).
//  - Full: a 64 KiB file system mounted there ("No space left on device"); without the right to
//    mount, a file-size limit on this process ("File too large"), with SIGXFSZ ignored, so that
//    writes past it fail instead of ending the process. The limit is lifted by the destructor.
// Made in `parent`, which must exist; everything is undone when the object goes.
class FaultFolder
{
public:
    enum class Kind { ReadOnly, Full };

    FaultFolder(const QString &parent, Kind kind)
        : m_path(QDir(parent).filePath(kind == Kind::ReadOnly ? QStringLiteral("read-only") : QStringLiteral("full")))
    {
        QDir().mkpath(m_path);
        const QByteArray where = QFile::encodeName(m_path);
        const char *options = kind == Kind::ReadOnly ? "ro,size=64k" : "size=64k";
        if (::mount("tmpfs", where.constData(), "tmpfs", kind == Kind::ReadOnly ? MS_RDONLY : 0, options) == 0) {
            m_mounted = true;
            m_reason = kind == Kind::ReadOnly ? QStringLiteral("Read-only file system")
                                              : QStringLiteral("No space left on device");
        } else if (kind == Kind::ReadOnly) {
            QFile::setPermissions(m_path, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
            if (::geteuid() != 0)
                m_reason = QStringLiteral("Permission denied");
        } else {
            std::signal(SIGXFSZ, SIG_IGN);
            ::getrlimit(RLIMIT_FSIZE, &m_limit);
            rlimit small = m_limit;
            small.rlim_cur = 64 * 1024;
            m_limited = ::setrlimit(RLIMIT_FSIZE, &small) == 0;
            if (m_limited)
                m_reason = QStringLiteral("File too large");
        }
    }
    ~FaultFolder()
    {
        if (m_mounted)
            ::umount2(QFile::encodeName(m_path).constData(), MNT_DETACH);
        if (m_limited)
            ::setrlimit(RLIMIT_FSIZE, &m_limit);
        QFile::setPermissions(m_path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }
    FaultFolder(const FaultFolder &) = delete;
    FaultFolder &operator=(const FaultFolder &) = delete;

    bool usable() const { return !m_reason.isEmpty(); }
    QString path() const { return m_path; }
    QString filePath(const QString &name) const { return QDir(m_path).filePath(name); }
    // The system's words for a write that fails here.
    QString reason() const { return m_reason; }

private:
    QString m_path;
    QString m_reason;
    bool m_mounted = false;
    bool m_limited = false;
    rlimit m_limit{};
};

#include "photos/FileWatcher.h"

#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// How long events of one burst are gathered before they are reported.
constexpr int kGatherMilliseconds = 30;

constexpr uint32_t kWatchMask = IN_DELETE_SELF | IN_MODIFY | IN_MOVE_SELF | IN_ATTRIB;

bool statPath(const QString &path, struct stat *st)
{
    return ::stat(QFile::encodeName(path).constData(), st) == 0;
}

} // namespace

FileWatcher::FileWatcher(QObject *parent)
    : QObject(parent)
{
    m_fd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_fd < 0)
        return;
    m_notifier = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &FileWatcher::readEvents);
}

FileWatcher::~FileWatcher()
{
    if (m_fd >= 0)
        ::close(m_fd); // closing the instance ends all its watches
}

QString FileWatcher::wordForChanges(unsigned changes)
{
    if (changes & Deleted)
        return QStringLiteral("deleted");
    if (changes & Renamed)
        return QStringLiteral("renamed");
    if (changes & Written)
        return QStringLiteral("modified");
    return QString();
}

bool FileWatcher::watch(const QString &path)
{
    unwatch(path);
    if (m_fd < 0 || path.isEmpty())
        return false;
    // A file that cannot be read is not watched, as nothing of it could be shown either. The
    // probe never blocks (a named pipe would wait for a writer forever).
    const int probe = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (probe < 0)
        return false;
    struct stat st;
    const bool statted = ::fstat(probe, &st) == 0;
    ::close(probe);
    if (!statted)
        return false;
    const int wd = inotify_add_watch(m_fd, QFile::encodeName(path).constData(), kWatchMask);
    if (wd < 0)
        return false; // ENOSPC when the watch limit is reached: listed, but unwatched
    m_watches.insert(path, Watch{wd, quint64(st.st_dev), quint64(st.st_ino)});
    m_pathsOfDescriptor.insert(wd, path);
    return true;
}

void FileWatcher::removeKernelWatch(const QString &path)
{
    const auto it = m_watches.constFind(path);
    if (it == m_watches.constEnd())
        return;
    const int wd = it->wd;
    m_watches.erase(it);
    m_pathsOfDescriptor.remove(wd, path);
    // The kernel keeps one watch per file; it ends only when no other path still uses it.
    if (!m_pathsOfDescriptor.contains(wd))
        inotify_rm_watch(m_fd, wd);
}

void FileWatcher::unwatch(const QString &path)
{
    removeKernelWatch(path);
    if (m_pending.remove(path))
        m_pendingOrder.removeAll(path);
}

void FileWatcher::unwatchAll()
{
    const QStringList paths = m_watches.keys();
    for (const QString &path : paths)
        unwatch(path);
}

void FileWatcher::readEvents()
{
    alignas(struct inotify_event) char buffer[8192];
    for (;;) {
        const ssize_t length = ::read(m_fd, buffer, sizeof buffer);
        if (length <= 0)
            break; // EAGAIN: all read
        for (ssize_t offset = 0; offset < length;) {
            const auto *event = reinterpret_cast<const struct inotify_event *>(buffer + offset);
            offset += ssize_t(sizeof(struct inotify_event) + event->len);
            if (event->wd < 0)
                continue; // queue overflow: nothing to attribute it to
            if (event->mask & IN_IGNORED) {
                // The kernel dropped the watch (file gone, or removed by us): forget the
                // descriptor unless a path is still waiting for its report.
                const QStringList paths = m_pathsOfDescriptor.values(event->wd);
                for (const QString &path : paths) {
                    if (!m_pending.contains(path)) {
                        m_watches.remove(path);
                        m_pathsOfDescriptor.remove(event->wd, path);
                    }
                }
                continue;
            }
            unsigned raw = 0;
            if (event->mask & IN_DELETE_SELF)
                raw |= RawDeleteSelf;
            if (event->mask & IN_MODIFY)
                raw |= RawModify;
            if (event->mask & IN_MOVE_SELF)
                raw |= RawMoveSelf;
            if (event->mask & IN_ATTRIB)
                raw |= RawAttrib;
            if (!raw)
                continue;
            const QStringList paths = m_pathsOfDescriptor.values(event->wd);
            for (const QString &path : paths) {
                if (!m_pending.contains(path))
                    m_pendingOrder.append(path);
                m_pending[path] |= raw;
            }
        }
        if (length < ssize_t(sizeof buffer))
            break;
    }
    if (!m_pending.isEmpty() && !m_flushScheduled) {
        m_flushScheduled = true;
        QTimer::singleShot(kGatherMilliseconds, this, &FileWatcher::flushPending);
    }
}

unsigned FileWatcher::changesFor(const QString &path, const Watch &watch, unsigned raw) const
{
    struct stat st;
    const bool present = statPath(path, &st);
    const bool sameFile = present && quint64(st.st_dev) == watch.device && quint64(st.st_ino) == watch.inode;
    // An editor that saves by writing a new file and renaming it over the old one (or by
    // moving the old one aside first) ends the watched file, but the user sees the same name
    // with new content: a modification.
    const bool replaced = present && !sameFile;
    unsigned changes = 0;
    if (raw & RawModify)
        changes |= Written;
    if (raw & RawDeleteSelf)
        changes |= replaced ? Written : Deleted;
    if (raw & RawMoveSelf)
        changes |= replaced ? Written : Renamed;
    if ((raw & RawAttrib) && !(raw & (RawDeleteSelf | RawMoveSelf)) && !sameFile) {
        // The link count dropped (the file was unlinked while another name keeps it alive),
        // or the name now leads to another file. Plain permission or time changes are not
        // changes of the picture and keep the watch.
        changes |= present ? Written : Deleted;
    }
    return changes;
}

void FileWatcher::flushPending()
{
    m_flushScheduled = false;
    const QStringList order = m_pendingOrder;
    const QHash<QString, unsigned> pending = m_pending;
    m_pendingOrder.clear();
    m_pending.clear();
    for (const QString &path : order) {
        const auto it = m_watches.constFind(path);
        if (it == m_watches.constEnd())
            continue;
        const unsigned changes = changesFor(path, *it, pending.value(path));
        if (!changes)
            continue;
        // A watch fires once.
        removeKernelWatch(path);
        emit fileChanged(path, changes);
    }
}

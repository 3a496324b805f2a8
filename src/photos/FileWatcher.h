#pragma once

#include <QHash>
#include <QMultiHash>
#include <QObject>
#include <QString>
#include <QStringList>

class QSocketNotifier;

// Watches single files for changes made by other programs, through one inotify instance whose
// descriptor is read on the main thread through a QSocketNotifier.
//
// Each watched path has at most one watch. A watch fires once: the first change of the file is
// reported with fileChanged() and the watch is then gone, so the owner decides what happens
// next. Events that the kernel delivers in one burst (an unlink gives an attribute change and
// then the deletion; an editor's save gives several writes) are gathered for a few milliseconds
// and reported together, so a file is never reported twice for one change.
class FileWatcher : public QObject
{
    Q_OBJECT
public:
    // What happened to a file, as bits so that a burst of events can be combined.
    enum Change : unsigned {
        Deleted = 0x1,
        Written = 0x2,
        Renamed = 0x20,
    };

    explicit FileWatcher(QObject *parent = nullptr);
    ~FileWatcher() override;

    // The word shown to the user for a set of change bits: a deletion wins over everything,
    // then a rename, and anything else is a modification. Empty when no bit is set.
    static QString wordForChanges(unsigned changes);

    // Starts watching the path, replacing any earlier watch of it. Returns false, leaving the
    // path unwatched, when the file cannot be opened or the kernel refuses another watch
    // (for example when the inotify watch limit is reached).
    bool watch(const QString &path);
    // Stops watching the path; nothing happens when it is not watched.
    void unwatch(const QString &path);
    void unwatchAll();

    bool isWatching(const QString &path) const { return m_watches.contains(path); }
    QStringList watchedPaths() const { return m_watches.keys(); }
    bool isValid() const { return m_fd >= 0; }

signals:
    // The file at path was changed by someone else; changes holds Change bits (never 0).
    // The watch of the path has already ended when this is emitted.
    void fileChanged(const QString &path, unsigned changes);

private:
    // What the kernel told about one watch, before it is turned into Change bits.
    enum RawEvent : unsigned {
        RawDeleteSelf = 0x1,
        RawModify = 0x2,
        RawMoveSelf = 0x4,
        RawAttrib = 0x8,
    };
    struct Watch {
        int wd = -1;
        quint64 device = 0;
        quint64 inode = 0;
    };

    void readEvents();
    void flushPending();
    unsigned changesFor(const QString &path, const Watch &watch, unsigned raw) const;
    void removeKernelWatch(const QString &path);

    int m_fd = -1;
    QSocketNotifier *m_notifier = nullptr;
    QHash<QString, Watch> m_watches;
    // Several paths can name one file (the kernel then hands out one descriptor for all).
    QMultiHash<int, QString> m_pathsOfDescriptor;
    // Raw event bits gathered per path until the burst is over.
    QHash<QString, unsigned> m_pending;
    QStringList m_pendingOrder;
    bool m_flushScheduled = false;
};

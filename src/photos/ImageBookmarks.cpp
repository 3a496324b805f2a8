#include "photos/ImageBookmarks.h"

#include "foundation/AlertPresenter.h"
#include "foundation/ImagesFolder.h"
#include "foundation/Log.h"
#include "foundation/PlistValue.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "photos/FileWatcher.h"

#include <QDir>
#include <QRegularExpression>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QSet>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace {

// The pause between the dismissal of a file-change alert and the removal of its entries.
constexpr int kRemovalDelayMilliseconds = 1000;

const QStringList kStoredKeys{Preferences::Bookmarks, Preferences::Aligments, Preferences::Framings};

} // namespace

int ImageBookmarks::validAlignment(qint64 alignment)
{
    return alignment >= 0 && alignment < kAlignmentCount ? int(alignment) : ResizeCrop;
}

ImageBookmarks::ImageBookmarks(UserDefaults &defaults, const QString &resourcesFolder, AlertPresenter &alerts, QObject *parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_resourcesFolder(resourcesFolder)
    , m_alerts(alerts)
    , m_watcher(new FileWatcher(this))
{
    connect(m_watcher, &FileWatcher::fileChanged, this, &ImageBookmarks::fileChanged);
    loadBookmarks();
}

ImageBookmarks::~ImageBookmarks() = default;

// ---------------------------------------------------------------- persistence

ImageBookmarks::Batch::~Batch()
{
    if (--m_list.m_batchDepth == 0 && m_list.m_unsaved)
        m_list.saveSecurityBookmarks();
}

void ImageBookmarks::loadBookmarks()
{
    cancelDispatchSources();
    m_pendingEdits.clear();
    m_committed.clear();
    m_datums.clear();
    m_urls.clear();
    m_images.clear();
    m_imageAlignments.clear();
    m_framings.clear();
    const QVariant storedBookmarks = m_defaults.objectForKey(Preferences::Bookmarks);
    const QVariant storedAlignments = m_defaults.objectForKey(Preferences::Aligments);
    const QVariant storedFramings = m_defaults.objectForKey(Preferences::Framings);
    Entries loaded = entriesFromStored(storedBookmarks, storedAlignments, storedFramings, true);
    const bool firstRun = loaded.isEmpty() && !m_defaults.hasObject(Preferences::FirstRunLoadFactoryImages);
    if (firstRun)
        loaded = factoryEntries();
    m_committed = loaded;
    adoptStored(loaded);
    QVariantMap asLoaded;
    storeEntries(loaded, asLoaded);
    // Written back only when loading changed it (dropped entries, factory photos), and then
    // to the list as it is stored now, which another process may have changed meanwhile.
    if (firstRun || asLoaded.value(Preferences::Bookmarks) != storedBookmarks
        || asLoaded.value(Preferences::Aligments) != storedAlignments
        || (storedFramings.isValid() && asLoaded.value(Preferences::Framings) != storedFramings)) {
        Entries result;
        const QStringList keys = kStoredKeys + QStringList{Preferences::FirstRunLoadFactoryImages};
        const bool saved = m_defaults.update(keys, [&](QVariantMap &values) {
            result = entriesFromStored(values.value(Preferences::Bookmarks), values.value(Preferences::Aligments),
                                       values.value(Preferences::Framings), true);
            if (result.isEmpty() && !values.contains(Preferences::FirstRunLoadFactoryImages)) {
                values.insert(Preferences::FirstRunLoadFactoryImages, false);
                result = factoryEntries();
            }
            storeEntries(result, values);
            return true;
        });
        if (saved) {
            m_committed = result;
            adoptStored(result);
        } else {
            qCWarning(lcTessary, "The photo list could not be saved after loading: %s", qPrintable(m_defaults.errorString()));
        }
    }
    emit changed();
}

bool ImageBookmarks::loadSecurityBookmarks()
{
    const Entries loaded = entriesFromStored(m_defaults.objectForKey(Preferences::Bookmarks),
                                             m_defaults.objectForKey(Preferences::Aligments),
                                             m_defaults.objectForKey(Preferences::Framings), true);
    const Batch batch(*this);
    for (const Entry &entry : loaded) {
        insertURL(entry.url, entry.datum, entry.alignment, count());
        if (!entry.framing.isNull())
            setFraming(entry.framing, count() - 1);
    }
    return !loaded.isEmpty();
}

ImageBookmarks::Entries ImageBookmarks::entriesFromStored(const QVariant &bookmarks, const QVariant &alignments,
                                                          const QVariant &framings, bool resolving) const
{
    const QVariantList datums = bookmarks.typeId() == QMetaType::QVariantList ? bookmarks.toList() : QVariantList{};
    const QVariantList numbers = alignments.typeId() == QMetaType::QVariantList ? alignments.toList() : QVariantList{};
    const QVariantList frames = framings.typeId() == QMetaType::QVariantList ? framings.toList() : QVariantList{};
    QList<bool> used(m_committed.size(), false);
    Entries entries;
    entries.reserve(datums.size());
    for (qsizetype i = 0; i < datums.size(); ++i) {
        const QVariant &datum = datums.at(i);
        Entry entry;
        entry.datum = datum;
        entry.alignment = i < numbers.size() ? validAlignment(PlistValue::integerValue(numbers.at(i))) : ResizeCrop;
        entry.framing = i < frames.size() ? PhotoFraming::fromVariant(frames.at(i)) : PhotoFraming();
        if (datum.typeId() == QMetaType::QByteArray) {
            if (datum.toByteArray().isEmpty())
                continue;
            entry.path = QFile::decodeName(datum.toByteArray());
            // A bookmark whose file is gone is stale and dropped without a word.
            if (resolving && !QFileInfo(entry.path).isFile())
                continue;
        } else if (datum.typeId() == QMetaType::QString) {
            const QString name = datum.toString();
            entry.path = factoryImagePath(name);
            // A missing resource (or a user file stored by name) is skipped silently; factory
            // photos always come back centred.
            if (resolving) {
                if (name.isEmpty() || name.contains(QLatin1Char('/')) || !QFileInfo(entry.path).isFile())
                    continue;
                entry.alignment = ResizeCrop;
            }
        } else {
            continue;
        }
        for (qsizetype j = 0; j < m_committed.size() && !entry.url; ++j) {
            if (!used.at(j) && m_committed.at(j).datum == datum) {
                used[j] = true;
                entry.url = m_committed.at(j).url;
                entry.path = m_committed.at(j).path;
            }
        }
        if (!entry.url)
            entry.url = std::make_shared<const QUrl>(QUrl::fromLocalFile(entry.path));
        entries.append(entry);
    }
    return entries;
}

ImageBookmarks::Entries ImageBookmarks::factoryEntries() const
{
    Entries entries;
    for (int i = 0; i < kFactoryImageCount; ++i) {
        const QString name = QStringLiteral("images-%1").arg(i);
        const QString path = factoryImagePath(name);
        if (QFileInfo(path).isFile())
            entries.append({name, std::make_shared<const QUrl>(QUrl::fromLocalFile(path)), path, ResizeCrop, PhotoFraming()});
    }
    return entries;
}

void ImageBookmarks::storeEntries(const Entries &entries, QVariantMap &values)
{
    QVariantList datums;
    QVariantList alignments;
    QVariantList framings;
    datums.reserve(entries.size());
    alignments.reserve(entries.size());
    bool framed = false;
    for (const Entry &entry : entries) {
        datums.append(entry.datum);
        alignments.append(QVariant::fromValue(qint64(entry.alignment)));
        framings.append(entry.framing.toVariant());
        framed = framed || !entry.framing.isNull();
    }
    values.insert(Preferences::Bookmarks, datums);
    values.insert(Preferences::Aligments, alignments);
    // A list without framings leaves the key out, as a store of an earlier version has it.
    if (framed)
        values.insert(Preferences::Framings, framings);
    else
        values.remove(Preferences::Framings);
}

ImageBookmarks::Entries ImageBookmarks::currentEntries() const
{
    Entries entries;
    entries.reserve(count());
    for (qsizetype i = 0; i < count(); ++i)
        entries.append({m_datums.at(i), m_urls.at(i), m_images.at(i), m_imageAlignments.at(i), m_framings.at(i)});
    return entries;
}

bool ImageBookmarks::adopt(const Entries &entries)
{
    const bool same = entries.size() == count() && std::equal(entries.cbegin(), entries.cend(), m_urls.cbegin(),
        [this](const Entry &entry, const UrlRef &url) {
            const qsizetype i = &url - m_urls.constData();
            return entry.url == url && entry.path == m_images.at(i) && entry.alignment == m_imageAlignments.at(i)
                && entry.framing == m_framings.at(i) && entry.datum == m_datums.at(i);
        });
    if (same)
        return false;
    const QSet<QString> before(m_images.cbegin(), m_images.cend());
    m_datums.clear();
    m_urls.clear();
    m_images.clear();
    m_imageAlignments.clear();
    m_framings.clear();
    for (const Entry &entry : entries) {
        m_datums.append(entry.datum);
        m_urls.append(entry.url);
        m_images.append(entry.path);
        m_imageAlignments.append(entry.alignment);
        m_framings.append(entry.framing);
    }
    const QSet<QString> after(m_images.cbegin(), m_images.cend());
    for (const QString &path : before) {
        if (!after.contains(path))
            cancelDispatchSource(path);
    }
    for (const QString &path : after) {
        if (!before.contains(path))
            startDispatchSource(path);
    }
    return true;
}

void ImageBookmarks::adoptStored(const Entries &entries)
{
    if (adopt(entries))
        emit listChanged(PhotoListChange{PhotoListChange::Reset});
}

qsizetype ImageBookmarks::indexIn(const Entries &entries, const UrlRef &url)
{
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (entries.at(i).url == url)
            return i;
    }
    return -1;
}

void ImageBookmarks::edit(const Edit &change, const QList<PhotoListChange> &shown, bool save)
{
    Entries entries = currentEntries();
    change(entries);
    if (adopt(entries)) {
        for (const PhotoListChange &row : shown)
            emit listChanged(row);
    }
    m_pendingEdits.append(change);
    if (save)
        saveSecurityBookmarks();
}

void ImageBookmarks::saveSecurityBookmarks()
{
    if (m_batchDepth > 0) {
        m_unsaved = true;
        return;
    }
    m_unsaved = false;
    const QList<Edit> edits = std::exchange(m_pendingEdits, {});
    Entries result;
    m_lastSaveSucceeded = m_defaults.update(kStoredKeys, [&](QVariantMap &values) {
        result = entriesFromStored(values.value(Preferences::Bookmarks), values.value(Preferences::Aligments),
                                   values.value(Preferences::Framings), false);
        for (const Edit &change : edits)
            change(result);
        storeEntries(result, values);
        return true;
    });
    if (m_lastSaveSucceeded) {
        m_committed = result;
        adoptStored(result);
        emit changed();
        return;
    }
    // Nothing was stored: the list shows what the store holds, and the user is told why.
    const QString reason = m_defaults.errorString();
    adoptStored(m_committed);
    qCWarning(lcTessary, "The photo list could not be saved: %s", qPrintable(reason));
    AlertPresenter::Alert alert;
    alert.messageText = QStringLiteral("The photo list could not be saved.");
    alert.informativeText = reason;
    alert.style = AlertPresenter::Style::Critical;
    m_alerts.presentAlert(alert, {});
}

QByteArray ImageBookmarks::createSecurityBookmarkForURL(const QUrl &url)
{
    if (!url.isLocalFile())
        return QByteArray();
    const QString path = QFileInfo(url.toLocalFile()).absoluteFilePath();
    return path.isEmpty() ? QByteArray() : QFile::encodeName(path);
}

void ImageBookmarks::resolveAndInsertBookmark(const QByteArray &bookmark, int alignment)
{
    if (bookmark.isEmpty())
        return;
    const QString path = QFile::decodeName(bookmark);
    // A bookmark whose file is gone is stale and dropped without a word.
    if (!QFileInfo(path).isFile())
        return;
    insertURL(std::make_shared<const QUrl>(QUrl::fromLocalFile(path)), bookmark, alignment, count());
}

QString ImageBookmarks::factoryImagePath(const QString &name) const
{
    const QString suffix = name == QLatin1String("blank") ? QStringLiteral(".png") : QStringLiteral(".jpg");
    return QDir(m_resourcesFolder).filePath(name + suffix);
}

QString ImageBookmarks::titleForPath(const QString &path) const
{
    const QFileInfo info(path);
    if (!path.isEmpty() && info.absolutePath() == QDir(m_resourcesFolder).absolutePath()) {
        const QString base = info.completeBaseName();
        if (base == QLatin1String("blank"))
            return QStringLiteral("Blank");
        static const QRegularExpression factory(QStringLiteral("^images-(\\d+)$"));
        const QRegularExpressionMatch match = factory.match(base);
        if (match.hasMatch())
            return QStringLiteral("Sample %1").arg(match.captured(1).toInt() + 1);
    }
    return info.fileName();
}

void ImageBookmarks::loadFactoryImage(const QString &name)
{
    if (name.isEmpty() || name.contains(QLatin1Char('/')))
        return;
    const QString path = factoryImagePath(name);
    if (!QFileInfo(path).isFile())
        return; // a missing resource (or a user file stored by name) is skipped silently
    insertURL(std::make_shared<const QUrl>(QUrl::fromLocalFile(path)), QString(name), ResizeCrop, count());
}

void ImageBookmarks::loadFactoryImages()
{
    const Batch batch(*this);
    for (int i = 0; i < kFactoryImageCount; ++i)
        loadFactoryImage(QStringLiteral("images-%1").arg(i));
}

QStringList ImageBookmarks::builtInImages() const
{
    QStringList paths;
    for (int i = 0; i < kFactoryImageCount; ++i) {
        const QString path = factoryImagePath(QStringLiteral("images-%1").arg(i));
        if (QFileInfo(path).isFile())
            paths.append(path);
    }
    return paths;
}

// ---------------------------------------------------------------- reading

ImageBookmarks::UrlRef ImageBookmarks::urlAtIndex(qsizetype index) const
{
    return index >= 0 && index < m_urls.size() ? m_urls.at(index) : UrlRef();
}

QString ImageBookmarks::pathAtIndex(qsizetype index) const
{
    return index >= 0 && index < m_images.size() ? m_images.at(index) : QString();
}

qsizetype ImageBookmarks::indexOfURL(const UrlRef &url) const
{
    if (!url)
        return -1;
    for (qsizetype i = 0; i < m_urls.size(); ++i) {
        if (m_urls.at(i) == url)
            return i;
    }
    return -1;
}

int ImageBookmarks::alignmentIndexAtIndex(qsizetype index) const
{
    return index >= 0 && index < m_imageAlignments.size() ? m_imageAlignments.at(index) : 0;
}

PhotoFraming ImageBookmarks::framingAtIndex(qsizetype index) const
{
    return index >= 0 && index < m_framings.size() ? m_framings.at(index) : PhotoFraming();
}

QList<qsizetype> ImageBookmarks::bookmarksWithPath(const QString &path) const
{
    QList<qsizetype> indexes;
    for (qsizetype i = 0; i < m_images.size(); ++i) {
        if (m_images.at(i) == path)
            indexes.append(i);
    }
    return indexes;
}

// ---------------------------------------------------------------- editing

QString ImageBookmarks::nameWithoutExtension(const QUrl &url)
{
    return QFileInfo(url.path()).completeBaseName();
}

void ImageBookmarks::addBookmarkForPath(const QString &path, int alignment)
{
    insertBookmarkForPath(path, alignment, count());
}

void ImageBookmarks::insertBookmarkForPath(const QString &path, int alignment, qsizetype index)
{
    const QUrl url = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    if (path.isEmpty() || !QFileInfo::exists(path))
        return;
    const QByteArray bookmark = createSecurityBookmarkForURL(url);
    insertURL(std::make_shared<const QUrl>(url), bookmark.isEmpty() ? QVariant() : QVariant(bookmark), alignment, index);
}

void ImageBookmarks::replaceBookmarkForPath(const QString &path, int alignment, qsizetype index)
{
    const QUrl url = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    if (path.isEmpty() || !QFileInfo::exists(path))
        return;
    const QByteArray bookmark = createSecurityBookmarkForURL(url);
    replaceURL(std::make_shared<const QUrl>(url), bookmark.isEmpty() ? QVariant() : QVariant(bookmark), alignment, index);
}

void ImageBookmarks::insertURL(const UrlRef &url, const QVariant &datum, int alignment, qsizetype index)
{
    if (!url || url->isEmpty() || index < 0 || index > count())
        return;
    const Entry entry{datum.isValid() ? datum : QVariant(nameWithoutExtension(*url)), url, url->toLocalFile(), validAlignment(alignment), PhotoFraming()};
    // Placed before the entry it went before here; at the end when it went there.
    const UrlRef before = urlAtIndex(index);
    edit([entry, before](Entries &entries) {
        const qsizetype at = before ? indexIn(entries, before) : -1;
        entries.insert(at < 0 ? entries.size() : at, entry);
    }, {{PhotoListChange::Insert, index, index}});
}

void ImageBookmarks::replaceURL(const UrlRef &url, const QVariant &datum, int alignment, qsizetype index)
{
    if (!url || url->isEmpty() || index < 0 || index >= count())
        return;
    const Entry entry{datum.isValid() ? datum : QVariant(nameWithoutExtension(*url)), url, url->toLocalFile(), validAlignment(alignment), PhotoFraming()};
    const UrlRef old = m_urls.at(index);
    edit([entry, old](Entries &entries) {
        const qsizetype at = indexIn(entries, old);
        if (at >= 0)
            entries[at] = entry;
    }, {{PhotoListChange::Update, index, index}});
}

void ImageBookmarks::removeBookmarkAtIndex(qsizetype index)
{
    if (index < 0 || index >= count())
        return;
    const UrlRef gone = m_urls.at(index);
    edit([gone](Entries &entries) {
        const qsizetype at = indexIn(entries, gone);
        if (at >= 0)
            entries.removeAt(at);
    }, {{PhotoListChange::Remove, index, index}});
}

void ImageBookmarks::removeBookmarksWithPath(const QString &path)
{
    // Highest row first, so each row is counted as the list stands at its removal.
    QList<PhotoListChange> removed;
    for (qsizetype i = count() - 1; i >= 0; --i) {
        if (m_images.at(i) == path)
            removed.append({PhotoListChange::Remove, i, i});
    }
    edit([path](Entries &entries) { entries.removeIf([&path](const Entry &entry) { return entry.path == path; }); },
         removed, false);
}

void ImageBookmarks::moveBookmarkAtIndex(qsizetype from, qsizetype to)
{
    if (from < 0 || from >= count() || to < 0 || to > count())
        return;
    const UrlRef moving = m_urls.at(from);
    const UrlRef before = urlAtIndex(to);
    if (before == moving)
        return saveSecurityBookmarks();
    edit([moving, before](Entries &entries) {
        const qsizetype at = indexIn(entries, moving);
        if (at < 0)
            return;
        const Entry entry = entries.takeAt(at);
        const qsizetype target = before ? indexIn(entries, before) : -1;
        entries.insert(target < 0 ? entries.size() : target, entry);
    }, {{PhotoListChange::Move, from, to}});
}

void ImageBookmarks::exchangeBookmarkAtIndex(qsizetype index, qsizetype withIndex)
{
    if (index < 0 || index >= count() || withIndex < 0 || withIndex >= count())
        return;
    const UrlRef a = m_urls.at(index);
    const UrlRef b = m_urls.at(withIndex);
    edit([a, b](Entries &entries) {
        const qsizetype i = indexIn(entries, a);
        const qsizetype j = indexIn(entries, b);
        if (i >= 0 && j >= 0)
            entries.swapItemsAt(i, j);
    }, {{PhotoListChange::Update, index, index}, {PhotoListChange::Update, withIndex, withIndex}});
}

void ImageBookmarks::setAligment(int alignment, qsizetype index)
{
    if (index < 0 || index >= count() || alignment < 0 || alignment >= kAlignmentCount)
        return;
    const UrlRef target = m_urls.at(index);
    edit([target, alignment](Entries &entries) {
        const qsizetype at = indexIn(entries, target);
        if (at >= 0) {
            entries[at].alignment = alignment;
            entries[at].framing = PhotoFraming();
        }
    }, {{PhotoListChange::Update, index, index}});
}

void ImageBookmarks::setFraming(const PhotoFraming &framing, qsizetype index)
{
    if (index < 0 || index >= count())
        return;
    const UrlRef target = m_urls.at(index);
    edit([target, framing](Entries &entries) {
        const qsizetype at = indexIn(entries, target);
        if (at >= 0)
            entries[at].framing = framing;
    }, {{PhotoListChange::Update, index, index}});
}

void ImageBookmarks::setAllAlignments(int alignment)
{
    if (m_imageAlignments.isEmpty())
        return;
    edit([alignment](Entries &entries) {
        for (Entry &entry : entries) {
            entry.alignment = alignment;
            entry.framing = PhotoFraming();
        }
    }, {{PhotoListChange::Update, 0, count() - 1}});
}

void ImageBookmarks::setAligmentCenterAll()
{
    setAllAlignments(ResizeCrop);
}

void ImageBookmarks::setAligmentFitAll()
{
    setAllAlignments(ResizeScale);
}

void ImageBookmarks::setAligmentSmartAll()
{
    setAllAlignments(ResizeSmart);
}

// ---------------------------------------------------------------- watching

bool ImageBookmarks::startDispatchSource(const QString &path)
{
    return m_watcher->watch(path);
}

void ImageBookmarks::cancelDispatchSource(const QString &path)
{
    m_watcher->unwatch(path);
}

void ImageBookmarks::cancelDispatchSources()
{
    m_watcher->unwatchAll();
}

bool ImageBookmarks::isWatching(const QString &path) const
{
    return m_watcher->isWatching(path);
}

QString ImageBookmarks::changeMessage(const QString &path, const QString &word)
{
    return QStringLiteral("The image file \"%1\" has been %2 by another app, due to a change to it externally. It will be removed.")
        .arg(QFileInfo(path).fileName(), word);
}

void ImageBookmarks::fileChanged(const QString &path, unsigned changes)
{
    qCInfo(lcTessary, "A file has been deleted, renamed or modified.");
    AlertPresenter::Alert alert;
    alert.messageText = changeMessage(path, FileWatcher::wordForChanges(changes));
    alert.informativeText = QStringLiteral("You may reload another image to replace it.");
    alert.defaultButton = QStringLiteral("OK");
    // The alert may outlive the list (the window closing while it is up).
    const QPointer<ImageBookmarks> self(this);
    m_alerts.presentAlert(alert, [self, path](int) {
        if (!self)
            return;
        ImageBookmarks *const list = self.data();
        QTimer::singleShot(kRemovalDelayMilliseconds, list, [list, path] {
            const QList<qsizetype> indexes = list->bookmarksWithPath(path);
            if (indexes.isEmpty())
                return;
            if (list->m_removalHandler) {
                list->m_removalHandler(indexes);
                return;
            }
            for (auto it = indexes.crbegin(); it != indexes.crend(); ++it)
                list->removeBookmarkAtIndex(*it);
        });
    });
}

QUrl ImageBookmarks::renameURLWithUUID(const QUrl &url)
{
    const QFileInfo info(url.toLocalFile());
    const QString extension = info.suffix();
    if (!url.isLocalFile() || extension.isEmpty())
        return QUrl();
    const QString name = ImagesFolder::newFileName(extension);
    const QString target = info.dir().filePath(name);
    if (!QFile::rename(info.filePath(), target))
        return QUrl();
    return QUrl::fromLocalFile(target);
}

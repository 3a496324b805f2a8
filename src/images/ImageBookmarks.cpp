#include "images/ImageBookmarks.h"

#include "foundation/AlertPresenter.h"
#include "foundation/Log.h"
#include "foundation/PlistValue.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "images/FileWatcher.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QTimer>
#include <QUuid>

#include <algorithm>

namespace {

// The pause between the dismissal of a file-change alert and the removal of its entries.
constexpr int kRemovalDelayMilliseconds = 1000;

int validAlignment(qint64 alignment)
{
    return alignment >= 0 && alignment < ImageBookmarks::kAlignmentCount ? int(alignment) : ImageBookmarks::ResizeCrop;
}

template <typename List>
void moveInList(List &list, qsizetype from, qsizetype to)
{
    auto item = list.takeAt(from);
    list.insert(from < to ? to - 1 : to, std::move(item));
}

} // namespace

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
    const Batch batch(*this);
    cancelDispatchSources();
    m_datums.clear();
    m_urls.clear();
    m_images.clear();
    m_imageAlignments.clear();
    const bool loaded = loadSecurityBookmarks();
    if (!loaded && !m_defaults.hasObject(Preferences::FirstRunLoadFactoryImages)) {
        m_defaults.setBool(false, Preferences::FirstRunLoadFactoryImages);
        loadFactoryImages();
    }
    saveSecurityBookmarks();
}

bool ImageBookmarks::loadSecurityBookmarks()
{
    const QVariantList bookmarks = m_defaults.arrayForKey(Preferences::Bookmarks);
    const QVariantList alignments = m_defaults.arrayForKey(Preferences::Aligments);
    for (qsizetype i = 0; i < bookmarks.size(); ++i) {
        const int alignment = i < alignments.size() ? validAlignment(PlistValue::integerValue(alignments.at(i))) : 0;
        const QVariant &datum = bookmarks.at(i);
        if (datum.typeId() == QMetaType::QByteArray)
            resolveAndInsertBookmark(datum.toByteArray(), alignment);
        else if (datum.typeId() == QMetaType::QString)
            loadFactoryImage(datum.toString()); // factory photos always come back centred
    }
    return !m_datums.isEmpty();
}

void ImageBookmarks::saveSecurityBookmarks()
{
    if (m_batchDepth > 0) {
        m_unsaved = true;
        return;
    }
    m_unsaved = false;
    QVariantList alignments;
    alignments.reserve(m_imageAlignments.size());
    for (int alignment : std::as_const(m_imageAlignments))
        alignments.append(QVariant::fromValue(qint64(alignment)));
    m_defaults.setValuesForKeys({{Preferences::Bookmarks, m_datums}, {Preferences::Aligments, alignments}});
    m_defaults.synchronize();
    emit changed();
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
    const QString path = url->toLocalFile();
    m_datums.insert(index, datum.isValid() ? datum : QVariant(nameWithoutExtension(*url)));
    m_urls.insert(index, url);
    m_images.insert(index, path);
    m_imageAlignments.insert(index, validAlignment(alignment));
    startDispatchSource(path);
    saveSecurityBookmarks();
}

void ImageBookmarks::replaceURL(const UrlRef &url, const QVariant &datum, int alignment, qsizetype index)
{
    if (!url || url->isEmpty() || index < 0 || index >= count())
        return;
    const QString path = url->toLocalFile();
    m_datums[index] = datum.isValid() ? datum : QVariant(nameWithoutExtension(*url));
    cancelDispatchSource(m_images.at(index));
    startDispatchSource(path);
    m_urls[index] = url;
    m_images[index] = path;
    m_imageAlignments[index] = validAlignment(alignment);
    saveSecurityBookmarks();
}

void ImageBookmarks::removeBookmarkAtIndex(qsizetype index)
{
    if (index < 0 || index >= count())
        return;
    cancelDispatchSource(m_images.at(index));
    m_urls.removeAt(index);
    m_datums.removeAt(index);
    m_images.removeAt(index);
    m_imageAlignments.removeAt(index);
    saveSecurityBookmarks();
}

void ImageBookmarks::removeBookmarksWithPath(const QString &path)
{
    for (qsizetype i = count() - 1; i >= 0; --i) {
        if (m_images.at(i) == path) {
            m_urls.removeAt(i);
            m_datums.removeAt(i);
            m_images.removeAt(i);
            m_imageAlignments.removeAt(i);
        }
    }
}

void ImageBookmarks::moveBookmarkAtIndex(qsizetype from, qsizetype to)
{
    if (from < 0 || from >= count() || to < 0 || to > count())
        return;
    moveInList(m_urls, from, to);
    moveInList(m_datums, from, to);
    moveInList(m_images, from, to);
    moveInList(m_imageAlignments, from, to);
    saveSecurityBookmarks();
}

void ImageBookmarks::exchangeBookmarkAtIndex(qsizetype index, qsizetype withIndex)
{
    if (index < 0 || index >= count() || withIndex < 0 || withIndex >= count())
        return;
    m_urls.swapItemsAt(index, withIndex);
    m_datums.swapItemsAt(index, withIndex);
    m_images.swapItemsAt(index, withIndex);
    m_imageAlignments.swapItemsAt(index, withIndex);
    saveSecurityBookmarks();
}

void ImageBookmarks::setAligment(int alignment, qsizetype index)
{
    if (index < 0 || index >= count() || alignment < 0 || alignment >= kAlignmentCount)
        return;
    m_imageAlignments[index] = alignment;
    saveSecurityBookmarks();
}

void ImageBookmarks::setAllAlignments(int alignment)
{
    if (m_imageAlignments.isEmpty())
        return;
    std::fill(m_imageAlignments.begin(), m_imageAlignments.end(), alignment);
    saveSecurityBookmarks();
}

void ImageBookmarks::setAligmentCenterAll()
{
    setAllAlignments(ResizeCrop);
}

void ImageBookmarks::setAligmentFitAll()
{
    setAllAlignments(ResizeScale);
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
    const QString name = QStringLiteral("%1.%2").arg(QUuid::createUuid().toString(QUuid::WithoutBraces), extension);
    const QString target = info.dir().filePath(name);
    if (!QFile::rename(info.filePath(), target))
        return QUrl();
    return QUrl::fromLocalFile(target);
}

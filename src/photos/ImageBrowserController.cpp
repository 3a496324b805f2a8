#include "photos/ImageBrowserController.h"

#include "foundation/ImagesFolder.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "photos/FileWatcher.h"
#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserSelection.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QMimeData>
#include <QUrl>

#include <algorithm>

namespace {

// The preview follows the selection after this pause, so that quick clicking stays cheap.
constexpr int kPreviewDelayMilliseconds = 1000;
// A drop is placed after this pause, so the drag source can finish first.
constexpr int kConcludeDropMilliseconds = 100;

// A regular file (or a link to one): folders, pipes and devices are no photos.
bool isPlainFile(const QString &path)
{
    return QFileInfo(path).isFile();
}

} // namespace

ImageBrowserController::ImageBrowserController(UserDefaults &defaults, const QString &resourcesFolder,
                                               AlertPresenter &alerts, QObject *parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_alerts(alerts)
    , m_imageBookmarks(new ImageBookmarks(defaults, resourcesFolder, alerts, this))
    , m_selection(new ImageBrowserSelection([this](qsizetype index) { return m_imageBookmarks->pathAtIndex(index); }, this))
    , m_blankImage(m_imageBookmarks->factoryImagePath(QStringLiteral("blank")))
{
    // Entries whose file another program changed leave through the same door as a user's
    // removal, but the file stays: what is there now is the other program's work (an image
    // edited and saved elsewhere), not Tessary's copy.
    m_imageBookmarks->setRemovalHandler([this](const QList<qsizetype> &indexes) { removeItemsAtIndexes(indexes, true); });
    m_previewTimer.setSingleShot(true);
    m_previewTimer.setInterval(kPreviewDelayMilliseconds);
    connect(&m_previewTimer, &QTimer::timeout, this, &ImageBrowserController::refreshPreview);
    connect(m_selection, &ImageBrowserSelection::selectionChanged, this, &ImageBrowserController::selectionDidChange);
    // A listed file changed on disk: what shows it is brought up to date (it may no longer be
    // readable) while the person reads the alert about it.
    connect(&m_imageBookmarks->fileWatcher(), &FileWatcher::fileChanged, this, &ImageBrowserController::photoFileChanged);
}

void ImageBrowserController::photoFileChanged(const QString &path)
{
    emit photoChanged(path);
    if (m_selection->hasSelection() && m_selection->selectedPath() == path)
        refreshPreview();
}

ImageBrowserController::~ImageBrowserController() = default;

// ---------------------------------------------------------------- reading

QStringList ImageBrowserController::images() const
{
    return m_imageBookmarks->images();
}

qsizetype ImageBrowserController::count() const
{
    return m_imageBookmarks->count();
}

int ImageBrowserController::alignmentIndexAtIndex(qsizetype index) const
{
    return m_imageBookmarks->alignmentIndexAtIndex(index);
}

PhotoFraming ImageBrowserController::framingAtIndex(qsizetype index) const
{
    return m_imageBookmarks->framingAtIndex(index);
}

qsizetype ImageBrowserController::selectedItem() const
{
    return m_selection->selectedIndex();
}

QString ImageBrowserController::imageLabelText() const
{
    return m_selection->labelText();
}

// ---------------------------------------------------------------- start and end

void ImageBrowserController::setInitialSelection()
{
    if (count() > 0)
        m_selection->select(0);
    if (m_defaults.hasObject(Preferences::ImageBrowserSeletion)) {
        const qint64 stored = Preferences(m_defaults).imageBrowserSeletion();
        if (stored >= 0 && stored < count())
            m_selection->select(stored);
    }
    saveSelection();
}

void ImageBrowserController::appWillTerminate()
{
    m_imageBookmarks->cancelDispatchSources();
    m_imageBookmarks->stopAccessingSecurityScopedResources();
    saveSelection();
}

void ImageBrowserController::saveSelection()
{
    if (m_selection->hasSelection())
        m_defaults.setInteger(m_selection->selectedIndex(), Preferences::ImageBrowserSeletion);
}

// ---------------------------------------------------------------- refresh

void ImageBrowserController::reloadCollage()
{
    if (m_reloadCollage)
        m_reloadCollage();
}

void ImageBrowserController::reloadData()
{
    emit browserReloaded();
    // One selection change at most: a selection past the end (the list shrank) is none, none
    // becomes the first item, and a pending selection wins.
    qsizetype target = m_selection->selectedIndex();
    if (target >= count())
        target = -1;
    if (target < 0 && count() > 0)
        target = 0;
    if (m_pendingSelection >= 0 && m_pendingSelection < count())
        target = m_pendingSelection;
    m_pendingSelection = -1;
    // The collage is laid out once, after the selection settled, not again for the selection.
    m_reloading = true;
    m_selection->select(target);
    m_reloading = false;
    reloadCollage();
}

void ImageBrowserController::selectionDidChange()
{
    if (!m_reloading)
        reloadCollage();
    m_previewTimer.start();
}

void ImageBrowserController::refreshPreview()
{
    announcePreview();
    saveSelection();
}

void ImageBrowserController::announcePreview()
{
    const qsizetype index = m_selection->selectedIndex();
    if (index >= 0 && index < count())
        emit previewChanged(m_imageBookmarks->pathAtIndex(index), m_imageBookmarks->alignmentIndexAtIndex(index));
    else
        emit previewChanged(QString(), 0);
}

// ---------------------------------------------------------------- editing

void ImageBrowserController::insertImage(const QString &path, qsizetype index)
{
    if (!isPlainFile(path)) {
        doAlert(QStringLiteral("Image can not be inserted."), QStringLiteral("The image does not exist."),
                AlertPresenter::Style::Critical);
        return;
    }
    index = std::clamp<qsizetype>(index, 0, count());
    m_imageBookmarks->insertBookmarkForPath(path, ImageBookmarks::ResizeCrop, index);
    setPendingSelection(index);
    reloadData();
}

void ImageBrowserController::insertImage(const QString &path)
{
    insertImage(path, std::max<qsizetype>(selectedItem(), 0));
}

void ImageBrowserController::replaceImage(const QString &path, qsizetype index)
{
    if (!isPlainFile(path)) {
        doAlert(QStringLiteral("Image can not be replaced."), QStringLiteral("The replacement image does not exist."),
                AlertPresenter::Style::Critical);
        return;
    }
    if (index < 0 || index >= count()) {
        m_alerts.beep();
        return;
    }
    const QString oldPath = m_imageBookmarks->pathAtIndex(index);
    m_imageBookmarks->replaceBookmarkForPath(path, ImageBookmarks::ResizeCrop, index);
    // A file goes only once the list without it is stored.
    if (m_imageBookmarks->lastSaveSucceeded())
        deleteIfOwned(oldPath);
    setPendingSelection(index);
    reloadData();
}

void ImageBrowserController::insertBlankImage()
{
    insertImage(m_blankImage);
}

void ImageBrowserController::addImagesWithPaths(const QStringList &paths)
{
    {
        const ImageBookmarks::Batch batch(*m_imageBookmarks); // stored once, not per file
        for (const QString &path : paths) {
            if (!isPlainFile(path) || QFileInfo(path).fileName().startsWith(QLatin1Char('.')))
                continue;
            m_imageBookmarks->addBookmarkForPath(path, ImageBookmarks::ResizeCrop);
        }
    }
    if (count() > 0) {
        setPendingSelection(count() - 1);
        reloadData();
    }
}

void ImageBrowserController::loadFactoryImages()
{
    addImagesWithPaths(m_imageBookmarks->builtInImages());
}

void ImageBrowserController::clearImages()
{
    QList<qsizetype> all;
    for (qsizetype i = 0; i < count(); ++i)
        all.append(i);
    removeItemsAtIndexes(all);
}

void ImageBrowserController::removeItemsAtIndexes(const QList<qsizetype> &indexes, bool keepFiles)
{
    QList<qsizetype> sorted = indexes;
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    qsizetype last = -1;
    QStringList removedPaths;
    {
        const ImageBookmarks::Batch batch(*m_imageBookmarks); // stored once, not per entry
        // Highest first, so each removal leaves the lower indexes valid.
        for (auto it = sorted.crbegin(); it != sorted.crend(); ++it) {
            const qsizetype index = *it;
            if (index < 0 || index >= count())
                continue;
            removedPaths.append(m_imageBookmarks->pathAtIndex(index));
            m_imageBookmarks->removeBookmarkAtIndex(index);
            last = index;
        }
    }
    // Files go only once the list without them is stored.
    if (!keepFiles && m_imageBookmarks->lastSaveSucceeded()) {
        for (const QString &path : std::as_const(removedPaths))
            deleteIfOwned(path);
    }
    if (last >= 0)
        setPendingSelection(std::min(last, count() - 1));
    reloadData();
}

bool ImageBrowserController::moveItemsAtIndexes(const QList<qsizetype> &indexes, qsizetype destination,
                                                DropOperation operation)
{
    if (indexes.isEmpty())
        return false;
    const qsizetype from = indexes.first();
    const qsizetype end = operation == DropBefore ? count() + 1 : count();
    if (from < 0 || from >= count() || destination < 0 || destination >= end)
        return false;
    if (operation == DropBefore) {
        m_imageBookmarks->moveBookmarkAtIndex(from, destination);
        setPendingSelection(from < destination ? destination - 1 : destination);
    } else {
        m_imageBookmarks->exchangeBookmarkAtIndex(from, destination);
        setPendingSelection(destination);
    }
    reloadData();
    return true;
}

void ImageBrowserController::exchangeItem(qsizetype index, qsizetype withIndex)
{
    if (index < 0 || index >= count() || withIndex < 0 || withIndex >= count()) {
        m_alerts.beep();
        return;
    }
    m_imageBookmarks->exchangeBookmarkAtIndex(index, withIndex);
    reloadData();
}

void ImageBrowserController::selectIndex(qsizetype index)
{
    if (index < 0 || index >= count())
        return;
    setPendingSelection(index);
    reloadData();
}

bool ImageBrowserController::selectItemNumber(const QString &text)
{
    if (count() == 0)
        return false;
    bool ok = false;
    const qint64 number = text.trimmed().toLongLong(&ok);
    if (!ok || number < 1 || number > count())
        return false;
    m_selection->select(number - 1);
    return true;
}

QString ImageBrowserController::duplicateImage(qsizetype index)
{
    // Always ".png": the copy is the source's bytes under a name of Tessary's own.
    const QString copy = ImagesFolder::copy(m_imageBookmarks->pathAtIndex(index), QStringLiteral("png"));
    if (copy.isEmpty())
        return QString();
    insertImage(copy);
    return copy;
}

void ImageBrowserController::imageAligmentDidChange(int alignment)
{
    if (!m_selection->hasSelection())
        return;
    m_imageBookmarks->setAligment(alignment, m_selection->selectedIndex());
    emit browserReloaded(); // a hand framing it ended is no longer marked
    reloadCollage();
}

void ImageBrowserController::imageAligmentCenterAll()
{
    if (!m_selection->hasSelection())
        return;
    m_imageBookmarks->setAligmentCenterAll();
    emit selectedAlignmentChanged(m_imageBookmarks->alignmentIndexAtIndex(m_selection->selectedIndex()));
    emit browserReloaded();
    reloadCollage();
}

void ImageBrowserController::imageAligmentFitAll()
{
    if (!m_selection->hasSelection())
        return;
    m_imageBookmarks->setAligmentFitAll();
    emit selectedAlignmentChanged(m_imageBookmarks->alignmentIndexAtIndex(m_selection->selectedIndex()));
    emit browserReloaded();
    reloadCollage();
}

void ImageBrowserController::imageAligmentSmartAll()
{
    if (!hasImages())
        return;
    m_imageBookmarks->setAligmentSmartAll();
    emit selectedAlignmentChanged(m_imageBookmarks->alignmentIndexAtIndex(m_selection->selectedIndex()));
    emit browserReloaded();
    reloadCollage();
}

void ImageBrowserController::setFramingAtIndex(qsizetype index, const PhotoFraming &framing)
{
    if (index < 0 || index >= count() || m_imageBookmarks->framingAtIndex(index) == framing)
        return;
    m_imageBookmarks->setFraming(framing, index);
    // The browser marks framed photos.
    emit browserReloaded();
    reloadCollage();
}

void ImageBrowserController::deleteIfOwned(const QString &oldPath)
{
    // A file Tessary made goes with its entry; but not while another entry still shows it.
    if (!ImagesFolder::isOwned(oldPath) || !m_imageBookmarks->bookmarksWithPath(oldPath).isEmpty())
        return;
    QFile::remove(oldPath);
}

// ---------------------------------------------------------------- clipboard and drops

bool ImageBrowserController::paste(const QMimeData &clipboard)
{
    if (clipboard.hasImage()) {
        const QImage image = qvariant_cast<QImage>(clipboard.imageData());
        QString error;
        const QString path = ImagesFolder::writePng(image, &error);
        if (path.isEmpty()) {
            if (!image.isNull())
                doAlert(QStringLiteral("The pasted image could not be saved."), error, AlertPresenter::Style::Critical);
            return false;
        }
        insertImage(path);
        return true;
    }
    const QStringList files = filesFromMimeData(clipboard);
    if (!files.isEmpty()) {
        insertImage(files.first());
        return true;
    }
    // A path copied as text.
    const QUrl url = QUrl::fromUserInput(clipboard.text().trimmed());
    if (url.isLocalFile()) {
        insertImage(url.toLocalFile());
        return true;
    }
    return false;
}

QStringList ImageBrowserController::filesFromMimeData(const QMimeData &data) const
{
    QStringList files;
    const QList<QUrl> urls = data.urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    }
    return files;
}

bool ImageBrowserController::performDragOperation(const QMimeData &data, qsizetype dropIndex, DropOperation operation)
{
    m_droppedFiles.clear();
    m_dropIndex = dropIndex;
    m_dropOperation = operation;
    m_droppedFiles = filesFromMimeData(data);
    if (m_droppedFiles.isEmpty()) {
        // A picture dragged out of a web browser comes as data, not as a file: keep it in the
        // images folder as a promised file would be, in its own format when it is one we read.
        const QStringList formats = data.formats();
        for (const QString &format : formats) {
            if (!format.startsWith(QLatin1String("image/")))
                continue;
            const QByteArray bytes = data.data(format);
            QImage probe;
            if (bytes.isEmpty() || !probe.loadFromData(bytes))
                continue;
            QString extension = format.mid(6).section(QLatin1Char('+'), 0, 0).section(QLatin1Char(';'), 0, 0);
            if (extension == QLatin1String("jpeg"))
                extension = QStringLiteral("jpg");
            QString error;
            const QString path = ImagesFolder::write(bytes, extension, &error);
            if (path.isEmpty()) {
                doAlert(QStringLiteral("The dropped image could not be saved."), error, AlertPresenter::Style::Critical);
                return false;
            }
            m_droppedFiles.append(path);
            break;
        }
    }
    if (m_droppedFiles.isEmpty() && data.hasImage()) {
        const QImage image = qvariant_cast<QImage>(data.imageData());
        QString error;
        const QString path = ImagesFolder::writePng(image, &error);
        if (!path.isEmpty())
            m_droppedFiles.append(path);
        else if (!image.isNull())
            doAlert(QStringLiteral("The dropped image could not be saved."), error, AlertPresenter::Style::Critical);
    }
    if (m_droppedFiles.isEmpty())
        return false;
    QTimer::singleShot(kConcludeDropMilliseconds, this, &ImageBrowserController::doConcludeDragOperation);
    return true;
}

void ImageBrowserController::doConcludeDragOperation()
{
    const QStringList files = m_droppedFiles;
    m_droppedFiles.clear();
    if (!files.isEmpty())
        processDroppedFiles(files);
}

void ImageBrowserController::processDroppedFiles(const QStringList &paths)
{
    // Dropped on the empty space after the last item (or anywhere on an empty browser): append.
    if (m_dropIndex < 0 || m_dropIndex > count() || (m_dropOperation == DropOn && m_dropIndex >= count())) {
        m_dropIndex = count();
        m_dropOperation = DropBefore;
    }
    QStringList replacedPaths;
    {
        const ImageBookmarks::Batch batch(*m_imageBookmarks); // stored once, not per file
        for (const QString &path : paths) {
            if (!isPlainFile(path))
                continue;
            if (m_dropOperation == DropBefore) {
                m_imageBookmarks->insertBookmarkForPath(path, ImageBookmarks::ResizeCrop, m_dropIndex);
            } else {
                replacedPaths.append(m_imageBookmarks->pathAtIndex(m_dropIndex));
                m_imageBookmarks->replaceBookmarkForPath(path, ImageBookmarks::ResizeCrop, m_dropIndex);
            }
        }
    }
    if (m_imageBookmarks->lastSaveSucceeded()) {
        for (const QString &oldPath : std::as_const(replacedPaths))
            deleteIfOwned(oldPath);
    }
    setPendingSelection(m_dropIndex);
    reloadData();
}

// ---------------------------------------------------------------- helpers

void ImageBrowserController::doAlert(const QString &message, const QString &informative, AlertPresenter::Style style)
{
    m_alerts.beep();
    AlertPresenter::Alert alert;
    alert.messageText = message;
    alert.informativeText = informative;
    alert.defaultButton = QStringLiteral("OK");
    alert.style = style;
    m_alerts.presentAlert(alert, {});
}

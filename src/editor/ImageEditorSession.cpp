#include "editor/ImageEditorSession.h"

#include "foundation/AlertPresenter.h"
#include "foundation/Log.h"
#include "foundation/ImagesFolder.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageBrowserSelection.h"

#include <QFile>

ImageEditorSession::ImageEditorSession(ImageBrowserController &browser)
    : m_browser(browser)
{
}

QString ImageEditorSession::editingPath() const
{
    return m_editingURL ? m_editingURL->toLocalFile() : QString();
}

ImageEditorSession::EditAction ImageEditorSession::actionForSelection(ImageBookmarks::UrlRef *url) const
{
    const qsizetype index = m_browser.selection().selectedIndex();
    if (index < 0)
        return EditAction::Nothing;
    const ImageBookmarks::UrlRef selected = m_browser.imageBookmarks().urlAtIndex(index);
    if (url)
        *url = selected;
    if (!selected || selected == m_editingURL)
        return EditAction::Nothing;
    return m_editingURL ? EditAction::AskFirst : EditAction::Begin;
}

QString ImageEditorSession::writeEditedImage(const QImage &image)
{
    if (ImagesFolder::path().isEmpty())
        return QString();
    if (image.isNull()) {
        qCInfo(lcTessary, "*** saveImageToPath - no image");
        return QString();
    }
    return ImagesFolder::writePng(image);
}

void ImageEditorSession::insertEditedFile(const QString &path)
{
    if (!path.isEmpty())
        m_browser.insertImage(path);
}

bool ImageEditorSession::replaceWithEditedFile(const QString &path)
{
    if (path.isEmpty())
        return false;
    ImageBookmarks &bookmarks = m_browser.imageBookmarks();
    const qsizetype index = m_editingURL ? bookmarks.indexOfURL(m_editingURL) : -1;
    if (index < 0) {
        m_browser.alerts().beep();
        QFile::remove(path);
        return false;
    }
    m_browser.replaceImage(path, index);
    if (bookmarks.pathAtIndex(index) != path) { // the list refused it (and said why)
        QFile::remove(path);
        return false;
    }
    m_editingURL = bookmarks.urlAtIndex(index);
    return true;
}

#pragma once

#include "photos/ImageBookmarks.h"

#include <QImage>
#include <QString>

class ImageBrowserController;

// What the image editor edits and how its picture goes back into the photo list, without a
// window: which photo a request to edit opens (the first selected one), whether that is the
// photo already open (by the identity of its URL object, not by its path), and adding the
// edited picture as a new photo or putting it in place of the photo it came from.
class ImageEditorSession
{
public:
    enum class EditAction {
        Nothing,   // no selection, no URL, or the very photo already open
        Begin,     // nothing is open: open it at once
        AskFirst,  // another photo is open: ask before replacing it
    };

    // Beeps go where the photo list's alerts go.
    explicit ImageEditorSession(ImageBrowserController &browser);

    ImageBookmarks::UrlRef editingURL() const { return m_editingURL; }
    void setEditingURL(const ImageBookmarks::UrlRef &url) { m_editingURL = url; }
    QString editingPath() const;

    // The request to edit the browser's selection: what to do, and the URL it is about.
    EditAction actionForSelection(ImageBookmarks::UrlRef *url) const;

    // Writes the picture as a PNG named after a new UUID into the images folder; the path, or
    // empty (logged when there is no picture). Thread-safe.
    static QString writeEditedImage(const QImage &image);
    // Adds a written file to the photo list at the browser's default place.
    void insertEditedFile(const QString &path);
    // Puts a written file in place of the photo being edited and makes it the photo being
    // edited; when that photo is no longer in the list, beeps and deletes the file. True when
    // it replaced.
    bool replaceWithEditedFile(const QString &path);

private:
    ImageBrowserController &m_browser;
    ImageBookmarks::UrlRef m_editingURL;
};

#pragma once

#include "model/CollageDocument.h"

#include <QString>
#include <QVariantMap>

// Which collage document is open and whether the collage on screen has unsaved changes: it
// has them when what would be written now differs from what the document's file holds (as it
// was saved or opened). A collage with no document has nothing unsaved: it is the working
// collage, kept in the store and brought back at the next start.
class CollageDocumentTracker
{
public:
    // The collage was just saved to, or opened from, path: it is the document's content.
    void becomeCurrent(const QString &path, const CollageDocument &content);
    // Forgets the document (the collage becomes the working collage again).
    void clear();

    QString path() const { return m_path; }
    bool hasDocument() const { return !m_path.isEmpty(); }

    // Compares the collage with the document; returns true when the answer of isModified
    // changed.
    bool update(const CollageDocument &current);
    bool isModified() const { return m_modified; }

private:
    QVariantMap written(const CollageDocument &content) const;

    QString m_path;
    QVariantMap m_baseline;
    bool m_modified = false;
};

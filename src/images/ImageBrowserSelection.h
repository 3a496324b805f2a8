#pragma once

#include <QObject>
#include <QString>

// The selected item of the image browser: one index, or -1 for none. The window's grid binds
// to it; the controller and the collage view read and set it.
class ImageBrowserSelection : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    qsizetype selectedIndex() const { return m_index; }
    bool hasSelection() const { return m_index >= 0; }
    // Selects the index (any negative value clears); emits selectionChanged when it changed.
    void select(qsizetype index);
    void clear() { select(-1); }

    // The text beside the preview: "Image N" with the 1-based number, or one blank.
    QString labelText() const;

signals:
    void selectionChanged(qsizetype index);

private:
    qsizetype m_index = -1;
};

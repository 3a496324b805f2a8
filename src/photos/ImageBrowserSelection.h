#pragma once

#include <QObject>
#include <QString>

#include <functional>

// The selected photo of the image browser: its index, or -1 for none, and the photo at that
// index. The window's grid, the preview and its label, and the collage view all follow it.
//
// A selection is of a photo, not only of a place in the list: when the list changes under an
// unchanged index (the selected photo removed, another inserted or pasted in its place),
// selecting that index again announces the change, so whatever shows the selected photo is
// brought up to date by the one signal, whichever edit changed the list.
class ImageBrowserSelection : public QObject
{
    Q_OBJECT
public:
    // photoAt: the path of the photo at an index of the list (empty when there is none).
    explicit ImageBrowserSelection(std::function<QString(qsizetype)> photoAt, QObject *parent = nullptr);

    qsizetype selectedIndex() const { return m_index; }
    // The photo selected, as it was when it was selected.
    QString selectedPath() const { return m_path; }
    bool hasSelection() const { return m_index >= 0; }
    // Selects the index (any negative value clears); emits selectionChanged when the index or
    // the photo at it changed.
    void select(qsizetype index);
    void clear() { select(-1); }

    // The text beside the preview: "Image N" with the 1-based number, or one blank.
    QString labelText() const;

signals:
    void selectionChanged(qsizetype index);

private:
    std::function<QString(qsizetype)> m_photoAt;
    qsizetype m_index = -1;
    QString m_path;
};

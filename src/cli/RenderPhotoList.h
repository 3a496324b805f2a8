#pragma once

#include "images/TessaryViewDelegate.h"

#include <QList>
#include <QStringList>

// The photos of a collage rendered from the command line: a fixed list with one alignment each
// and an optional selected photo. Nothing is swapped or selected from here.
class RenderPhotoList : public TessaryViewDelegate
{
public:
    RenderPhotoList(QStringList photos, QList<int> alignments, qsizetype selected = -1);

    QStringList pickedPhotos() const override { return m_photos; }
    int alignmentIndexAtIndex(qsizetype index) const override;
    qsizetype selectedItem() const override { return m_selected; }
    void selectIndex(qsizetype) override {}
    void exchangeItem(qsizetype, qsizetype) override {}

    // Every photo fitted the same way.
    void setAllAlignments(int alignment);

private:
    QStringList m_photos;
    QList<int> m_alignments;
    qsizetype m_selected;
};

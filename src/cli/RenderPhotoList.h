#pragma once

#include "photos/TessaryViewDelegate.h"

#include <QList>
#include <QStringList>

// The photos of a collage rendered from the command line: a fixed list with one alignment (and
// framing) each
// and an optional selected photo. Nothing is swapped or selected from here.
class RenderPhotoList : public TessaryViewDelegate
{
public:
    RenderPhotoList(QStringList photos, QList<int> alignments, qsizetype selected = -1, QList<PhotoFraming> framings = {});

    QStringList pickedPhotos() const override { return m_photos; }
    int alignmentIndexAtIndex(qsizetype index) const override;
    PhotoFraming framingAtIndex(qsizetype index) const override { return m_framings.value(index); }
    qsizetype selectedItem() const override { return m_selected; }
    void selectIndex(qsizetype) override {}
    void exchangeItem(qsizetype, qsizetype) override {}

    // Every photo fitted the same way (framings end).
    void setAllAlignments(int alignment);

private:
    QStringList m_photos;
    QList<int> m_alignments;
    QList<PhotoFraming> m_framings;
    qsizetype m_selected;
};

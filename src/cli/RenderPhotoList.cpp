#include "RenderPhotoList.h"

RenderPhotoList::RenderPhotoList(QStringList photos, QList<int> alignments, qsizetype selected, QList<PhotoFraming> framings)
    : m_photos(std::move(photos))
    , m_alignments(std::move(alignments))
    , m_framings(std::move(framings))
    , m_selected(selected)
{
}

int RenderPhotoList::alignmentIndexAtIndex(qsizetype index) const
{
    // Photos without a stored alignment are cropped about their centre.
    return index >= 0 && index < m_alignments.size() ? m_alignments[index] : 0;
}

void RenderPhotoList::setAllAlignments(int alignment)
{
    m_alignments = QList<int>(m_photos.size(), alignment);
    m_framings.clear();
}

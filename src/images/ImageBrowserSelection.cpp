#include "images/ImageBrowserSelection.h"

void ImageBrowserSelection::select(qsizetype index)
{
    const qsizetype next = index < 0 ? -1 : index;
    if (next == m_index)
        return;
    m_index = next;
    emit selectionChanged(m_index);
}

QString ImageBrowserSelection::labelText() const
{
    return m_index < 0 ? QStringLiteral(" ") : QStringLiteral("Image %1").arg(m_index + 1);
}

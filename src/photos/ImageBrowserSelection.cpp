#include "photos/ImageBrowserSelection.h"

ImageBrowserSelection::ImageBrowserSelection(std::function<QString(qsizetype)> photoAt, QObject *parent)
    : QObject(parent)
    , m_photoAt(std::move(photoAt))
{
}

void ImageBrowserSelection::select(qsizetype index)
{
    const qsizetype next = index < 0 ? -1 : index;
    const QString path = next >= 0 && m_photoAt ? m_photoAt(next) : QString();
    if (next == m_index && path == m_path)
        return;
    m_index = next;
    m_path = path;
    emit selectionChanged(m_index);
}

QString ImageBrowserSelection::labelText() const
{
    return m_index < 0 ? QStringLiteral(" ") : QStringLiteral("Image %1").arg(m_index + 1);
}

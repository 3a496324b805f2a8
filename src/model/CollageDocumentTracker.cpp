#include "model/CollageDocumentTracker.h"

#include <QFileInfo>

QVariantMap CollageDocumentTracker::written(const CollageDocument &content) const
{
    return content.toPropertyList(QFileInfo(m_path).absolutePath());
}

void CollageDocumentTracker::becomeCurrent(const QString &path, const CollageDocument &content)
{
    m_path = QFileInfo(path).absoluteFilePath();
    m_baseline = written(content);
    m_modified = false;
}

void CollageDocumentTracker::clear()
{
    m_path.clear();
    m_baseline.clear();
    m_modified = false;
}

bool CollageDocumentTracker::update(const CollageDocument &current)
{
    const bool modified = hasDocument() && written(current) != m_baseline;
    if (modified == m_modified)
        return false;
    m_modified = modified;
    return true;
}

#include "editor/EditDocument.h"

#include <QtConcurrent>

EditDocument::EditDocument(QObject *parent)
    : QObject(parent)
{
}

EditDocument::~EditDocument()
{
    // A worker still running only reads its own copies; let it end before its watcher goes.
    for (QFutureWatcher<QImage> *watcher : std::as_const(m_running)) {
        watcher->disconnect(this);
        watcher->waitForFinished();
    }
}

void EditDocument::setSource(const QImage &source)
{
    ++m_generation;
    m_source = source;
    m_image = source;
    m_operations.clear();
    m_ids.clear();
    m_steps.clear();
    m_count = 0;
    setBusy(false);
    emit imageChanged();
}

QSize EditDocument::targetSize() const
{
    QSize size = m_source.size();
    for (int i = 0; i < m_count; ++i)
        size = m_operations.at(i).resultSize(size);
    return size;
}

void EditDocument::setOperation(int index, const EditOperation &operation)
{
    index = std::clamp(index, 0, int(m_operations.size()));
    m_operations.resize(index);
    m_ids.resize(index);
    m_operations.append(operation);
    m_ids.append(m_nextId++);
    m_count = index + 1;
    recompute();
}

void EditDocument::setCount(int count)
{
    count = std::clamp(count, 0, int(m_operations.size()));
    if (count == m_count && !m_busy)
        return;
    m_count = count;
    recompute();
}

void EditDocument::recompute()
{
    const quint64 generation = ++m_generation;
    const QList<quint64> target = m_ids.mid(0, m_count);
    // Start from the longest remembered step on the way to the target.
    QImage start = m_source;
    qsizetype done = 0;
    for (const Step &step : std::as_const(m_steps)) {
        if (step.ids.size() > done && step.ids.size() <= target.size() && target.mid(0, step.ids.size()) == step.ids) {
            start = step.image;
            done = step.ids.size();
        }
    }
    const QList<EditOperation> remaining = m_operations.mid(done, m_count - done);
    const auto work = [start, remaining] {
        QImage image = start;
        for (const EditOperation &op : remaining)
            image = op.apply(image);
        return image;
    };
    if (remaining.isEmpty() || qint64(start.width()) * start.height() <= m_synchronousPixels) {
        finish(generation, target, work());
        return;
    }
    setBusy(true);
    auto *watcher = new QFutureWatcher<QImage>(this);
    m_running.append(watcher);
    connect(watcher, &QFutureWatcher<QImage>::finished, this, [this, watcher, generation, target] {
        m_running.removeOne(watcher);
        watcher->deleteLater();
        finish(generation, target, watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(work));
}

void EditDocument::finish(quint64 generation, const QList<quint64> &ids, const QImage &image)
{
    // A later request (or a new photo) has taken over: this result is only worth remembering.
    if (generation != m_generation) {
        if (m_ids.mid(0, ids.size()) == ids)
            remember(ids, image);
        return;
    }
    remember(ids, image);
    m_image = image;
    setBusy(false);
    emit imageChanged();
}

void EditDocument::remember(const QList<quint64> &ids, const QImage &image)
{
    if (ids.isEmpty())
        return; // the source is always at hand
    for (qsizetype i = 0; i < m_steps.size(); ++i) {
        if (m_steps.at(i).ids == ids) {
            m_steps.move(i, m_steps.size() - 1);
            return;
        }
    }
    m_steps.append(Step{ids, image});
    while (m_steps.size() > kCachedSteps)
        m_steps.removeFirst();
}

void EditDocument::setBusy(bool busy)
{
    if (busy == m_busy)
        return;
    m_busy = busy;
    emit busyChanged(busy);
}

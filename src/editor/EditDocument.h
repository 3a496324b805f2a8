#pragma once

#include "editor/EditOperation.h"

#include <QFutureWatcher>
#include <QImage>
#include <QList>
#include <QObject>

// The photo open in the image editor: its source picture, the edits made to it in order, and
// the picture at the current step of that history. Going back or forward (undo, redo) changes
// only how many edits count; the picture is made again from the nearest remembered step (a few
// recent steps are kept) by applying the edits, never restored from a copy per edit. Big
// pictures are worked out on a worker thread: the current picture stays on show meanwhile and
// imageChanged() tells when the new one is in.
class EditDocument : public QObject
{
    Q_OBJECT
public:
    // Pictures up to this many pixels are edited at once, on the calling thread.
    static constexpr qint64 kSynchronousPixels = 2'000'000;
    static constexpr int kCachedSteps = 3;

    explicit EditDocument(QObject *parent = nullptr);
    ~EditDocument() override;

    void setSynchronousPixelLimit(qint64 pixels) { m_synchronousPixels = pixels; }
    // A new photo: no edits, the source on show.
    void setSource(const QImage &source);
    const QImage &source() const { return m_source; }
    // The picture after the edits that count (the last one worked out while busy).
    const QImage &image() const { return m_image; }
    // The size the picture will have once the current work is done.
    QSize targetSize() const;
    const QList<EditOperation> &operations() const { return m_operations; }
    int count() const { return m_count; }
    bool isBusy() const { return m_busy; }

    // Puts the edit at `index` (dropping those after it) and makes it the last that counts.
    void setOperation(int index, const EditOperation &operation);
    // Only the first `count` edits count (clamped to the edits there are).
    void setCount(int count);

signals:
    void imageChanged();
    void busyChanged(bool busy);

private:
    struct Step {
        QList<quint64> ids;
        QImage image;
    };
    void recompute();
    void finish(quint64 generation, const QList<quint64> &ids, const QImage &image);
    void remember(const QList<quint64> &ids, const QImage &image);
    void setBusy(bool busy);

    QImage m_source;
    QImage m_image;
    QList<EditOperation> m_operations;
    QList<quint64> m_ids;
    int m_count = 0;
    quint64 m_nextId = 1;
    quint64 m_generation = 0;
    qint64 m_synchronousPixels = kSynchronousPixels;
    bool m_busy = false;
    QList<Step> m_steps;
    QList<QFutureWatcher<QImage> *> m_running;
};

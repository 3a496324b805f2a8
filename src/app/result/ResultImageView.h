#pragma once

#include "foundation/BackgroundJob.h"

#include <QAbstractScrollArea>
#include <QImage>

// The picture of the result window. Proportionally down (the zoom-to-fit rule) shrinks a picture
// larger than the view to fit and shows a smaller one at its own size; None shows it at its own
// size with scroll bars. Both centre the picture on a neutral backdrop.
//
// A large result (26 megapixels) is never scaled smoothly on the main thread: a reduced copy is
// made on a worker when the picture arrives and the view draws from it; until it is ready the
// picture is drawn with fast scaling.
class ResultImageView : public QAbstractScrollArea
{
    Q_OBJECT
public:
    enum class Scaling { ProportionallyDown, None };

    explicit ResultImageView(QWidget *parent = nullptr);

    void setImage(const QImage &image);
    QImage image() const { return m_image; }
    void setImageScaling(Scaling scaling);
    Scaling imageScaling() const { return m_scaling; }
    // The rectangle the picture occupies in the viewport, in viewport pixels.
    QRectF pictureRect() const;
    // The reduced copy the view draws from is ready (or none is needed).
    bool previewReady() const { return !m_preview.isNull() || !needsPreview(); }

signals:
    void previewUpdated();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    bool needsPreview() const;
    void updateScrollBars();

    QImage m_image;
    QImage m_preview;
    Scaling m_scaling = Scaling::ProportionallyDown;
    // The reduced copy is made on a thread of its own, not one of the global pool's; the copy of
    // a picture no longer shown is dropped.
    BackgroundJob m_previewJob;
};

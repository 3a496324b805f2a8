#pragma once

#include <QImage>
#include <QPointer>
#include <QString>
#include <QWidget>

class QMimeData;
class TessaryDataView;

// The photo of one collage tile. It draws the picture already fitted to the tile (centred, not
// scaled), clipped to the tile's rounded corners, with the chosen image frame style and the
// tile's border on top. Until the fitted picture arrives it shows the previous picture of the
// same photo scaled into place, or a neutral loading look; a photo that cannot be read shows the
// "cannot be read" mark.
//
// Tiles showing a photo can be dragged onto each other: the drag carries the tile's tag under
// a private type, and a drop asks the collage view to exchange the two photos.
//
// Framing by hand: Alt+drag in the selected tile pans its photo, Ctrl+wheel (or a pinch) over a
// tile zooms it about the pointer, and Alt+double-click ends the framing. The view only forwards
// these to the collage view, which works the framing out and hands back a preview to draw
// (the reduced photo and the part of it to show) until the framed picture is fitted.
class DragDropImageView : public QWidget
{
    Q_OBJECT
public:
    // The image frame styles, in the order of the pop-up.
    enum FrameStyle { FrameNone = 0, FramePhoto = 1, FrameGrayBezel = 2, FrameGroove = 3, FrameButton = 4 };

    explicit DragDropImageView(TessaryDataView *dataView);

    // The MIME type of a tile drag, named after the application id.
    static QString privateType();
    // The drag data of a tile: the keyed archive of its tag.
    static QMimeData *mimeDataForTag(qint64 tag);

    TessaryDataView *dataView() const { return m_dataView; }

    // The picture fitted to the tile; a null image with loading cleared shows nothing.
    void setImage(const QImage &image);
    QImage image() const { return m_image; }
    // What the view draws now: the fitted picture, else the stand-in.
    QImage shownImage() const { return m_image.isNull() ? m_interim : m_image; }
    // A stand-in drawn scaled until the fitted picture arrives (the same photo at another size).
    void setInterimImage(const QImage &image);
    // The neutral look of a photo that is still being decoded.
    void setLoading(bool loading);
    bool isLoading() const { return m_loading; }
    // The photo cannot be read: the tile shows the "cannot be read" mark (and the reason as its
    // tool tip) instead of a picture or the loading look. An empty reason clears it.
    void setUnreadable(const QString &reason);
    bool isUnreadable() const { return !m_unreadable.isEmpty(); }
    // While a framing is being changed: `source` (the reduced photo) cropped to `crop` (its
    // pixels) is drawn over the fitted picture's place, `fitSize` large. A null source ends it,
    // keeping what it showed as the picture until the new fit arrives.
    void setFramingPreview(const QImage &source, const QRectF &crop, const QSizeF &fitSize);
    bool hasFramingPreview() const { return !m_previewSource.isNull(); }
    // A point of this view in the fitted picture's points (the picture is centred here).
    QPointF pointInPicture(const QPointF &position, const QSizeF &fitSize) const;
    void setImageFrameStyle(int style);
    int imageFrameStyle() const { return m_frameStyle; }

    bool highlight() const { return m_highlight; }
    // Whether the tile shows a photo of the list: only those take part in a drag.
    bool canBeSourceOrDestination() const;
    // The drop: exchanges the dragged tile's photo with this tile's and selects the dragged
    // photo. Data without the private type does nothing. Always accepted.
    bool performDragOperation(const QMimeData *data);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    bool event(QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void setHighlight(bool on);
    void paintFrameStyle(QPainter &painter);

    QPointer<TessaryDataView> m_dataView;
    QImage m_image;
    QImage m_interim;
    bool m_loading = false;
    QString m_unreadable; // why the photo cannot be read
    int m_frameStyle = FrameNone;
    bool m_highlight = false;
    QPoint m_pressPosition;
    bool m_pressed = false;
    bool m_panning = false;
    QImage m_previewSource;
    QRectF m_previewCrop;
    QSizeF m_previewSize;
};

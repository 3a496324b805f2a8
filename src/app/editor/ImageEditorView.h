#pragma once

#include "editor/EditOperation.h"

#include <QGraphicsView>
#include <QImage>

class AnnotateTool;
class CropTool;
class QGraphicsPixmapItem;
class QGraphicsRectItem;
class StraightenTool;

// The image editor's picture: shown on a dark ground at a zoom factor, with the five tool modes
// (move, select, crop, rotate, annotate). It shows what it is given and forwards what the tools
// emit as operations (operationReady); the edits themselves are made by the document.
class ImageEditorView : public QGraphicsView
{
    Q_OBJECT
public:
    enum ToolMode { Move = 0, Select, Crop, Rotate, Annotate };
    static constexpr int kToolModeCount = 5;

    explicit ImageEditorView(QWidget *parent = nullptr);
    ~ImageEditorView() override;

    // The picture to show and edit; the tools start afresh on it.
    void setImage(const QImage &image);
    QImage image() const { return m_image; }
    QSize pictureSize() const { return m_image.size(); }
    // Shows a (smaller) preview stretched over the picture, until endPreview().
    void showPreview(const QImage &preview);
    void endPreview();
    bool isPreviewing() const { return m_previewing; }

    ToolMode toolMode() const { return m_mode; }
    // Leaving a tool keeps what was done with it (its pending edit is applied).
    void setToolMode(ToolMode mode);
    // Emits the current tool's pending edit (Enter does the same).
    void applyTool();
    // Forgets the current tool's pending edit (Escape).
    void cancelTool();
    // Whether the current tool holds an edit not yet applied.
    bool hasPendingEdit() const;

    double zoomFactor() const { return m_zoom; }
    void setZoomFactor(double factor);
    // Fits the picture, and keeps it fitted while the view changes size, until another zoom.
    void zoomImageToFit();
    bool isFitting() const { return m_fitting; }
    void zoomImageToActualSize();
    // The area a step of the zoom table fits into.
    QSizeF fitArea() const;

    // The rubber band's area in picture pixels (empty when nothing is selected).
    QRectF selectionRect() const { return m_selection; }
    void clearSelection();

    CropTool &cropTool() const { return *m_crop; }
    StraightenTool &straightenTool() const { return *m_straighten; }
    AnnotateTool &annotateTool() const { return *m_annotate; }

signals:
    void operationReady(const EditOperation &operation);
    void zoomChanged(double factor);
    void toolModeChanged(ToolMode mode);
    void selectionChanged(const QRectF &rect);

protected:
    void wheelEvent(QWheelEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void drawBackground(QPainter *painter, const QRectF &rect) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void showTools();
    void rubberBandChanged(const QRect &viewRect, const QPointF &from, const QPointF &to);
    void zoomAround(double factor, const QPoint &viewportPoint);
    void applyZoom(double factor);

    QImage m_image;
    QGraphicsPixmapItem *m_pixmap;
    QGraphicsRectItem *m_selectionItem;
    CropTool *m_crop;
    StraightenTool *m_straighten;
    AnnotateTool *m_annotate;
    ToolMode m_mode = Move;
    double m_zoom = 1.0;
    bool m_previewing = false;
    bool m_fitting = false;
    QRectF m_selection;
};

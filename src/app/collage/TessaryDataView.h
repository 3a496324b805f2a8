#pragma once

#include "model/TileLayout.h"

#include <QPointer>
#include <QWidget>

#include <memory>

class DragDropImageView;
class QLabel;
class TessaryView;

// One placed module of the collage on screen: its photo (DragDropImageView), its title along
// the bottom edge, the index label the collage view adds, and the look the module asks for
// (opacity, border, rounded corners). The tile of the selected photo keeps a 3-point margin
// around its photo for the blue selection outline.
//
// Everything it shows comes from the TileLayout the layout engine made; the tile computes no
// geometry of its own beyond placing its children.
class TessaryDataView : public QWidget
{
    Q_OBJECT
public:
    // Inset of the selected tile's photo, leaving room for the outline.
    static constexpr int kSelectionInset = 3;

    // tile: the placed module (its frame is already transformed); collageBorderWidth: the
    // collage's scaled border width, which limits the title's width; view: the owning collage
    // view (may be null in tests of a lone tile).
    TessaryDataView(const TileLayout &tile, TessaryView *view, double collageBorderWidth, QWidget *parent = nullptr);
    ~TessaryDataView() override;

    const TileLayout &tile() const { return m_tile; }
    qint64 tag() const { return m_tile.tag; }
    QString imagePath() const { return m_tile.imagePath; }
    int imageAlignment() const { return m_tile.imageAlignment; }
    bool isPlaceholder() const { return m_tile.placeholder; }
    bool isSelected() const { return m_tile.selected; }
    const std::shared_ptr<TessaryData> &module() const { return m_tile.module; }
    TessaryView *tessaryView() const;

    DragDropImageView *imageView() const { return m_imageView; }
    QLabel *titleLabel() const { return m_titleLabel; }
    QLabel *indexLabel() const { return m_indexLabel; }
    // The index label the collage view makes (replacing any earlier one).
    void setIndexLabel(QLabel *label);

    // Border width and corner radius in points, as the module asks for them.
    double computeBorderWidth() const { return m_tile.borderWidth; }
    double computeCornerRadius() const { return m_tile.cornerRadius; }

    // Stores the module and shows its title (the empty string for an empty title).
    void setModule(const std::shared_ptr<TessaryData> &module);
    // Lays the title out again for the current frame (after a turn); a non-null text replaces it.
    void updateLabel(const QString *text);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void placeTitle(const QRectF &labelFrame);
    void placeIndexLabel();

    TileLayout m_tile;
    QPointer<TessaryView> m_view;
    DragDropImageView *m_imageView = nullptr;
    QLabel *m_titleLabel = nullptr;
    QLabel *m_indexLabel = nullptr;
};

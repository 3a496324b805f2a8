#include "app/collage/TessaryDataView.h"

#include "model/CoordinateTransform.h"
#include "model/TileLabelGeometry.h"
#include "model/TilePainter.h"
#include "app/collage/DragDropImageView.h"
#include "app/collage/TessaryView.h"

#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

TessaryDataView::TessaryDataView(const TileLayout &tile, TessaryView *view, double collageBorderWidth, QWidget *parent)
    : QWidget(parent)
    , m_tile(tile)
    , m_view(view)
{
    setGeometry(tile.frame.toRect());

    // The photo fills the tile, or leaves a margin for the outline of the selected photo.
    m_imageView = new DragDropImageView(this);
    const int inset = tile.selected ? kSelectionInset : 0;
    m_imageView->setGeometry(rect().adjusted(inset, inset, -inset, -inset));
    m_imageView->setImageFrameStyle(view ? view->imageFrameStyle() : 0);

    m_titleLabel = new QLabel(this);
    m_titleLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_titleLabel->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    QPalette white = m_titleLabel->palette();
    white.setColor(QPalette::WindowText, Qt::white);
    m_titleLabel->setPalette(white);
    const QString title = tile.module ? tile.module->title() : QString();
    m_titleLabel->setText(title.isEmpty() ? QStringLiteral(" ") : title);

    // A turned tile of the window has its title laid out for the turned frame: the frame's own
    // size with the fixed margin. Otherwise the frame's size with the collage's border width.
    const bool turned = view && CoordinateTransform::isRotation(view->coordinateTransform());
    const QSizeF size = tile.frame.size();
    placeTitle(turned ? TileLabelGeometry::updatedLabelFrame(size, computeBorderWidth())
                      : TileLabelGeometry::titleLabelFrame(size, computeBorderWidth(), collageBorderWidth));

    if (tile.alpha < 1.0) {
        auto *effect = new QGraphicsOpacityEffect(this);
        effect->setOpacity(std::clamp(tile.alpha, 0.0, 1.0));
        setGraphicsEffect(effect);
    }
}

TessaryDataView::~TessaryDataView() = default;

TessaryView *TessaryDataView::tessaryView() const
{
    return m_view.data();
}

void TessaryDataView::setModule(const std::shared_ptr<TessaryData> &module)
{
    m_tile.module = module;
    m_titleLabel->setText(module ? module->title() : QString());
}

void TessaryDataView::updateLabel(const QString *text)
{
    placeTitle(TileLabelGeometry::updatedLabelFrame(QSizeF(size()), computeBorderWidth()));
    placeIndexLabel();
    if (text)
        m_titleLabel->setText(*text);
}

void TessaryDataView::setIndexLabel(QLabel *label)
{
    if (m_indexLabel && m_indexLabel != label)
        m_indexLabel->deleteLater();
    m_indexLabel = label;
    placeIndexLabel();
}

void TessaryDataView::placeTitle(const QRectF &labelFrame)
{
    // The label's frame is measured from the tile's bottom-left corner.
    const QRectF box = TileLabelGeometry::toTopDown(labelFrame, height());
    QFont font(QStringLiteral("Helvetica"));
    font.setBold(true);
    font.setPixelSize(std::max(1, int(TileLabelGeometry::fontSize(labelFrame))));
    m_titleLabel->setFont(font);
    m_titleLabel->setGeometry(box.toRect());
}

void TessaryDataView::placeIndexLabel()
{
    // At the tile's origin, which is its bottom-left corner.
    if (m_indexLabel)
        m_indexLabel->move(0, height() - m_indexLabel->height());
}

void TessaryDataView::resizeEvent(QResizeEvent *)
{
    const int inset = m_tile.selected ? kSelectionInset : 0;
    m_imageView->setGeometry(rect().adjusted(inset, inset, -inset, -inset));
    placeIndexLabel();
}

void TessaryDataView::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds = rect();
    // The border shows in the outline's margin too (the photo draws it over itself).
    if (computeBorderWidth() > 0) {
        const double b = computeBorderWidth();
        const double r = computeCornerRadius();
        QPainterPath outer;
        outer.addRoundedRect(bounds, r, r);
        QPainterPath inner;
        const double ri = std::max(0.0, r - b);
        inner.addRoundedRect(bounds.adjusted(b, b, -b, -b), ri, ri);
        p.fillPath(outer.subtracted(inner), m_tile.borderColor);
    }
    if (m_tile.selected) {
        // Drawn opaque, so the outline has its exact colour whatever lies beneath.
        p.setPen(QPen(TilePainter::selectionColor(), 3));
        p.setBrush(Qt::NoBrush);
        p.drawRoundedRect(bounds, 3, 3);
    }
}

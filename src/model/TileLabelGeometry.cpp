#include "model/TileLabelGeometry.h"

#include <algorithm>

QRectF TileLabelGeometry::titleLabelFrame(const QSizeF &tileSize, double borderWidth, double collageBorderWidth)
{
    const double w = tileSize.width();
    const double h = tileSize.height();
    const double innerWidth = w - 2 * borderWidth;
    const double innerHeight = h - 2 * borderWidth;
    const double labelHeight = std::min(innerHeight, innerWidth) * 0.25;
    const double origin = borderWidth + 2;
    // The right end the label may reach, in single precision as the layout has always used it.
    const double limit = double(float(origin + innerWidth + 2 + collageBorderWidth));
    const double labelWidth = w < limit ? innerWidth - (limit - w) : innerWidth;
    return QRectF(origin, origin, labelWidth, labelHeight);
}

double TileLabelGeometry::fontSize(const QRectF &labelFrame)
{
    return std::max(labelFrame.height(), kMinimumFontSize);
}

double TileLabelGeometry::dimensionLabelY(const QRectF &indexLabel, double dimensionLabelHeight, double tileHeight)
{
    const double top = indexLabel.y() + indexLabel.height();
    return top + std::min(0.0, tileHeight - (dimensionLabelHeight + top));
}

QRectF TileLabelGeometry::toTopDown(const QRectF &label, double tileHeight)
{
    return QRectF(label.x(), tileHeight - label.y() - label.height(), label.width(), label.height());
}

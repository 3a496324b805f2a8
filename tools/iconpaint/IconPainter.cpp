#include "IconPainter.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace {

// The shapes in the icon's own 256-unit square.
struct Tile {
    QRectF rect;
    QColor color;
};

const Tile kTiles[] = {
    {QRectF(40, 40, 112, 112), QColor(0xf2, 0xa5, 0x41)},
    {QRectF(160, 40, 56, 52), QColor(0xe5, 0x60, 0x4d)},
    {QRectF(160, 100, 56, 52), QColor(0x4f, 0xb0, 0xc6)},
    {QRectF(40, 160, 52, 56), QColor(0x7b, 0xc4, 0x7f)},
    {QRectF(100, 160, 116, 56), QColor(0xf4, 0xef, 0xe6)},
};

QPainterPath polygon(std::initializer_list<QPointF> points)
{
    QPainterPath path;
    path.addPolygon(QPolygonF(QList<QPointF>(points)));
    path.closeSubpath();
    return path;
}

} // namespace

QImage IconPainter::paint(int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / 256.0, size / 256.0);
    p.setPen(Qt::NoPen);

    QLinearGradient plate(0, 16, 0, 240);
    plate.setColorAt(0, QColor(0x3b, 0x4d, 0x69));
    plate.setColorAt(1, QColor(0x26, 0x32, 0x4a));
    p.setBrush(plate);
    p.drawRoundedRect(QRectF(16, 16, 224, 224), 44, 44);

    for (const Tile &tile : kTiles) {
        p.setBrush(tile.color);
        p.drawRoundedRect(tile.rect, 10, 10);
    }
    // Small sizes keep only the tiles: the pictures inside them would be a blur.
    if (size >= 48) {
        p.setBrush(QColor(0xf2, 0xa5, 0x41));
        p.drawEllipse(QPointF(190, 178), 9, 9);
        p.setBrush(QColor(0x4f, 0xb0, 0xc6));
        p.drawPath(polygon({{108, 208}, {136, 176}, {152, 192}, {166, 182}, {208, 208}}));
        p.setBrush(QColor(0xfb, 0xe3, 0xb8));
        p.drawPath(polygon({{56, 128}, {84, 92}, {104, 114}, {116, 102}, {140, 128}}));
    }
    p.end();
    return image;
}

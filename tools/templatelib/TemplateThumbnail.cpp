#include "TemplateThumbnail.h"

#include <QBuffer>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

const QColor kGround(0xF4, 0xF1, 0xEB);
const QColor kFrame(0xE2, 0xDD, 0xD3);

// Rectangles that share a stretch of edge (touching corners do not count).
bool adjacent(const QRect &a, const QRect &b)
{
    const int ax2 = a.x() + a.width(), ay2 = a.y() + a.height();
    const int bx2 = b.x() + b.width(), by2 = b.y() + b.height();
    const bool overlapX = a.x() < bx2 && b.x() < ax2;
    const bool overlapY = a.y() < by2 && b.y() < ay2;
    return (overlapY && (ax2 == b.x() || bx2 == a.x())) || (overlapX && (ay2 == b.y() || by2 == a.y()));
}

} // namespace

const std::vector<QColor> &TemplateThumbnail::palette()
{
    // Muted, friendly tones that stay distinct at a glance.
    static const std::vector<QColor> colours = {
        QColor(0x7F, 0xA7, 0xC9), // soft blue
        QColor(0xE6, 0xA5, 0x6E), // apricot
        QColor(0x8F, 0xBF, 0x9B), // sage
        QColor(0xD9, 0x8E, 0x92), // rose
        QColor(0xB3, 0xA0, 0xD0), // lavender
        QColor(0xE3, 0xC4, 0x6F), // honey
        QColor(0x6F, 0xB3, 0xB0), // teal
        QColor(0xC9, 0xA8, 0x8A), // sand
    };
    return colours;
}

std::vector<int> TemplateThumbnail::colourIndices(const std::vector<QRect> &tiles, int colourSeed)
{
    const int count = int(palette().size());
    std::vector<int> out(tiles.size(), -1);
    // Large tiles first: a big tile can border more tiles than there are colours, but each
    // small tile around it then has only a few coloured neighbours to avoid.
    std::vector<size_t> order(tiles.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        return tiles[a].width() * tiles[a].height() > tiles[b].width() * tiles[b].height();
    });
    for (size_t i : order) {
        // Walk the palette with a stride that scatters the colours, skipping any a neighbour
        // already has; the stride start is kept when every colour is taken.
        const int start = int((i * 3 + size_t(std::max(0, colourSeed))) % size_t(count));
        out[i] = start;
        for (int step = 0; step < count; ++step) {
            const int c = (start + step) % count;
            bool clash = false;
            for (size_t j = 0; j < tiles.size() && !clash; ++j)
                clash = j != i && out[j] == c && adjacent(tiles[i], tiles[j]);
            if (!clash) {
                out[i] = c;
                break;
            }
        }
    }
    return out;
}

QSize TemplateThumbnail::sizeFor(double contentWidth, double contentHeight)
{
    if (contentWidth <= 0 || contentHeight <= 0)
        return QSize(kLongSide, kLongSide);
    if (contentWidth >= contentHeight)
        return QSize(kLongSide, std::max(1, int(std::lround(kLongSide * contentHeight / contentWidth))));
    return QSize(std::max(1, int(std::lround(kLongSide * contentWidth / contentHeight))), kLongSide);
}

QImage TemplateThumbnail::render(int columns, int rows, const std::vector<QRect> &tiles, double cornerRadius,
                                 int colourSeed)
{
    const QSize size = sizeFor(columns, rows);
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);

    // The collage ground: a light card with a hairline edge.
    const QRectF card = QRectF(QPointF(0, 0), QSizeF(size)).adjusted(0.5, 0.5, -0.5, -0.5);
    p.setPen(QPen(kFrame, 1.0));
    p.setBrush(kGround);
    p.drawRoundedRect(card, 4, 4);

    const double margin = 4.0;
    const double gap = 2.5;
    const double cellW = (size.width() - 2 * margin + gap) / std::max(1, columns);
    const double cellH = (size.height() - 2 * margin + gap) / std::max(1, rows);
    const std::vector<int> colours = colourIndices(tiles, colourSeed);
    p.setPen(Qt::NoPen);
    for (size_t i = 0; i < tiles.size(); ++i) {
        const QRect &t = tiles[i];
        const QRectF r(margin + t.x() * cellW, margin + t.y() * cellH, t.width() * cellW - gap,
                       t.height() * cellH - gap);
        if (r.width() <= 0 || r.height() <= 0)
            continue;
        const double half = std::min(r.width(), r.height()) / 2;
        const double radius = std::min(half, std::max(std::min(3.0, half * 0.35), cornerRadius * half));
        const QColor base = palette()[size_t(colours[i])];
        // A gentle top-to-bottom shade keeps flat tiles from looking like paint chips.
        QLinearGradient shade(r.topLeft(), r.bottomLeft());
        shade.setColorAt(0, base.lighter(112));
        shade.setColorAt(1, base);
        p.setBrush(shade);
        p.drawRoundedRect(r, radius, radius);
    }
    p.end();
    return image;
}

QByteArray TemplateThumbnail::png(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

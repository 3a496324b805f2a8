#include "SetPreview.h"

#include "TemplateThumbnail.h"

#include "model/LayoutEngine.h"
#include "model/TessaryData.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

const QColor kCard(0xF7, 0xF5, 0xF0);
const QColor kCollageGround(0xFF, 0xFF, 0xFF);
const QColor kShadow(0, 0, 0, 28);

double ratioOf(const QVariantMap &t)
{
    const double w = t.value(QStringLiteral("contentSizeWidth")).toDouble();
    const double h = t.value(QStringLiteral("contentSizeHeight")).toDouble();
    return (w > 0 && h > 0) ? w / h : 1.0;
}

struct RowPlan
{
    std::vector<std::vector<int>> rows;
    std::vector<double> heights;
    double area = 0;
};

// Splits the templates into rowCount rows in order and gives every row the height that fills
// the width, shrunk to share the height evenly.
RowPlan plan(const std::vector<double> &ratios, int rowCount, QSizeF inner, double gap)
{
    RowPlan p;
    const int n = int(ratios.size());
    for (int r = 0; r < rowCount; ++r) {
        const int from = n * r / rowCount, to = n * (r + 1) / rowCount;
        std::vector<int> row;
        for (int i = from; i < to; ++i)
            row.push_back(i);
        if (row.empty())
            continue;
        double sum = 0;
        for (int i : row)
            sum += ratios[size_t(i)];
        const double byWidth = (inner.width() - gap * double(row.size() - 1)) / sum;
        const double byHeight = (inner.height() - gap * (rowCount - 1)) / rowCount;
        const double h = std::min(byWidth, byHeight);
        p.rows.push_back(row);
        p.heights.push_back(h);
        for (int i : row)
            p.area += h * h * ratios[size_t(i)];
    }
    return p;
}

} // namespace

QImage SetPreview::renderTemplate(const QVariantMap &templateData, QSizeF box, int colourSeed)
{
    QImage image(box.toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    LayoutEngine engine;
    engine.setIncrements(0, 0);
    // Laid out at the collage's own size, then scaled into the box.
    const QSizeF own(templateData.value(QStringLiteral("contentSizeWidth")).toDouble(),
                     templateData.value(QStringLiteral("contentSizeHeight")).toDouble());
    const CollageLayout layout = engine.layoutTemplate(templateData, own);
    if (layout.extent.isEmpty() || layout.moduleSizeInPoints == 0)
        return image;

    std::vector<QRect> cells;
    for (const TileLayout &t : layout.tiles) {
        cells.emplace_back(int(std::lround(t.cellFrame.x() / double(layout.moduleSizeInPoints))),
                           int(std::lround(t.cellFrame.y() / double(layout.moduleSizeInPoints))),
                           int(std::lround(t.cellFrame.width() / double(layout.moduleSizeInPoints))),
                           int(std::lround(t.cellFrame.height() / double(layout.moduleSizeInPoints))));
    }
    const std::vector<int> colours = TemplateThumbnail::colourIndices(cells, colourSeed);
    const QVariantList modules = templateData.value(QStringLiteral("savedTessaryDataModules")).toList();

    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    // The collage itself scaled into the box, centred.
    const double scale = std::min(box.width() / layout.extent.width(), box.height() / layout.extent.height());
    const QSizeF drawn = layout.extent * scale;
    p.translate((box.width() - drawn.width()) / 2, (box.height() - drawn.height()) / 2);
    const QRectF ground(QPointF(0, 0), drawn);
    p.setPen(Qt::NoPen);
    p.setBrush(kShadow);
    p.drawRoundedRect(ground.translated(0, 2), 3, 3);
    // Dark tile frames sit on a ground of the same colour, like film; light ones on white.
    const TessaryData first = TessaryData::initWithDictionary(modules.value(0).toMap());
    const bool darkFrames = first.tileBorderWidth() > 0 && first.borderColorOrWhite().lightness() < 80;
    p.setBrush(darkFrames ? first.borderColorOrWhite() : kCollageGround);
    p.drawRoundedRect(ground, 3, 3);

    const double gap = std::max(2.0, std::min(drawn.width(), drawn.height()) * 0.012);
    for (size_t i = 0; i < layout.tiles.size(); ++i) {
        const TileLayout &t = layout.tiles[i];
        const QRectF r(t.cellFrame.x() * scale + gap, t.cellFrame.y() * scale + gap, t.cellFrame.width() * scale - 2 * gap,
                       t.cellFrame.height() * scale - 2 * gap);
        if (r.width() <= 0 || r.height() <= 0)
            continue;
        const TessaryData module = TessaryData::initWithDictionary(modules.value(qsizetype(t.tag)).toMap());
        const double half = std::min(r.width(), r.height()) / 2;
        const double radius = module.tileCornerRadius() * half;
        const double border = module.tileBorderWidth() * half;
        if (border > 0) {
            p.setBrush(module.borderColorOrWhite());
            p.setPen(QPen(QColor(0, 0, 0, 30), 1));
            p.drawRoundedRect(r, radius, radius);
        }
        const QRectF photo = r.adjusted(border, border, -border, -border);
        const QColor base = TemplateThumbnail::palette()[size_t(colours[i])];
        QLinearGradient shade(photo.topLeft(), photo.bottomRight());
        shade.setColorAt(0, base.lighter(118));
        shade.setColorAt(1, base);
        p.setPen(Qt::NoPen);
        p.setBrush(shade);
        const double inner = std::max(0.0, radius - border);
        p.drawRoundedRect(photo, inner, inner);
    }
    return image;
}

QImage SetPreview::render(const QVariantList &templates, int colourSeed, QSize size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(kCard);
    if (templates.isEmpty())
        return image;
    std::vector<double> ratios;
    for (const QVariant &t : templates)
        ratios.push_back(ratioOf(t.toMap()));

    const double margin = size.height() * 0.08, gap = size.height() * 0.05;
    const QSizeF inner(size.width() - 2 * margin, size.height() - 2 * margin);
    RowPlan best;
    for (int rows = 1; rows <= std::min<int>(3, int(ratios.size())); ++rows) {
        RowPlan p = plan(ratios, rows, inner, gap);
        if (p.area > best.area)
            best = p;
    }

    QPainter painter(&image);
    double total = gap * double(best.rows.size() - 1);
    for (double h : best.heights)
        total += h;
    double y = margin + (inner.height() - total) / 2;
    for (size_t r = 0; r < best.rows.size(); ++r) {
        const double h = best.heights[r];
        double width = gap * double(best.rows[r].size() - 1);
        for (int i : best.rows[r])
            width += h * ratios[size_t(i)];
        double x = margin + (inner.width() - width) / 2;
        for (int i : best.rows[r]) {
            const QSizeF box(h * ratios[size_t(i)], h);
            painter.drawImage(QPointF(x, y), renderTemplate(templates[i].toMap(), box, colourSeed + i * 3));
            x += box.width() + gap;
        }
        y += h + gap;
    }
    return image;
}

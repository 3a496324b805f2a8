#include "output/PagePreset.h"

#include "output/PrintSize.h"

#include <QPageSize>

#include <algorithm>
#include <cmath>

namespace {

struct Paper {
    const char *name;
    double width; // millimetres, upright
    double height;
    bool photo;
};

// Inch sizes are given exactly in millimetres (8.5 × 11 in is 215.9 × 279.4 mm).
constexpr Paper kPapers[] = {
    {"A5", 148, 210, false},        {"A4", 210, 297, false},        {"A3", 297, 420, false},
    {"A2", 420, 594, false},        {"A1", 594, 841, false},        {"Letter", 215.9, 279.4, false},
    {"Legal", 215.9, 355.6, false}, {"Tabloid", 279.4, 431.8, false}, {"10x15cm", 100, 150, true},
    {"13x18cm", 130, 180, true},    {"20x30cm", 200, 300, true},
};

int pixels(double millimetres, double dpi)
{
    return int(std::lround(millimetres / PagePreset::kMillimetresPerInch * dpi));
}

} // namespace

PagePreset::PagePreset(const QString &name, const QSizeF &upright, bool photoSize)
    : m_name(name)
    , m_upright(upright)
    , m_photoSize(photoSize)
    , m_margin(photoSize ? 0.0 : kPaperMargin)
{
}

QStringList PagePreset::names()
{
    QStringList list;
    for (const Paper &p : kPapers)
        list << QString::fromLatin1(p.name);
    return list;
}

std::optional<PagePreset> PagePreset::named(const QString &name)
{
    for (const Paper &p : kPapers) {
        if (name.compare(QLatin1String(p.name), Qt::CaseInsensitive) == 0)
            return PagePreset(QString::fromLatin1(p.name), QSizeF(p.width, p.height), p.photo);
    }
    return std::nullopt;
}

std::optional<PagePreset> PagePreset::parse(const QString &text, QString *error)
{
    const QStringList parts = text.trimmed().split(QLatin1Char(','));
    std::optional<PagePreset> page = named(parts.first().trimmed());
    if (!page) {
        if (error)
            *error = QStringLiteral("'%1' is not a page; the pages are %2")
                         .arg(parts.first().trimmed(), names().join(QLatin1Char(' ')));
        return std::nullopt;
    }
    if (parts.size() > 2) {
        if (error)
            *error = QStringLiteral("'%1' is not NAME or NAME,landscape").arg(text);
        return std::nullopt;
    }
    if (parts.size() == 2) {
        const QString turn = parts[1].trimmed().toLower();
        if (turn != QLatin1String("landscape") && turn != QLatin1String("portrait")) {
            if (error)
                *error = QStringLiteral("'%1' is neither landscape nor portrait").arg(parts[1].trimmed());
            return std::nullopt;
        }
        page->setLandscape(turn == QLatin1String("landscape"));
    }
    return page;
}

PagePreset PagePreset::ofPageLayout(const QPageLayout &layout, double dotsPerInch)
{
    const QSizeF size = layout.pageSize().size(QPageSize::Millimeter);
    PagePreset page(layout.pageSize().name(), QSizeF(std::min(size.width(), size.height()),
                                                     std::max(size.width(), size.height())),
                    false);
    const QMarginsF m = layout.margins(QPageLayout::Millimeter);
    page.setLandscape(layout.orientation() == QPageLayout::Landscape);
    page.setMargin(std::max({m.left(), m.top(), m.right(), m.bottom(), 0.0}));
    page.setDotsPerInch(dotsPerInch);
    return page;
}

PagePreset &PagePreset::setLandscape(bool landscape)
{
    m_landscape = landscape;
    return *this;
}

PagePreset &PagePreset::setMargin(double millimetres)
{
    m_margin = millimetres;
    return *this;
}

PagePreset &PagePreset::setFit(Fit fit)
{
    m_fit = fit;
    return *this;
}

PagePreset &PagePreset::setDotsPerInch(double dotsPerInch)
{
    m_dotsPerInch = dotsPerInch;
    return *this;
}

QSizeF PagePreset::size() const
{
    return m_landscape ? m_upright.transposed() : m_upright;
}

QSizeF PagePreset::sizeInPoints() const
{
    return size() / kMillimetresPerInch * kPointsPerInch;
}

QSize PagePreset::pixelSize() const
{
    if (!(m_dotsPerInch > 0) || !std::isfinite(m_dotsPerInch))
        return QSize();
    return QSize(pixels(size().width(), m_dotsPerInch), pixels(size().height(), m_dotsPerInch));
}

QRect PagePreset::area() const
{
    const QSize page = pixelSize();
    if (page.isEmpty() || !(m_margin >= 0) || !std::isfinite(m_margin))
        return QRect();
    const int m = pixels(m_margin, m_dotsPerInch);
    return QRect(m, m, page.width() - 2 * m, page.height() - 2 * m);
}

bool PagePreset::isValid() const
{
    const QSize page = pixelSize();
    return !area().isEmpty() && page.width() <= PrintSize::kMaxPixelSide && page.height() <= PrintSize::kMaxPixelSide;
}

QPageLayout PagePreset::pageLayout() const
{
    const QPageSize paper(m_upright, QPageSize::Millimeter, m_name, QPageSize::FuzzyOrientationMatch);
    return QPageLayout(paper, m_landscape ? QPageLayout::Landscape : QPageLayout::Portrait,
                       QMarginsF(m_margin, m_margin, m_margin, m_margin), QPageLayout::Millimeter);
}

double PagePreset::scaleFor(const QSizeF &collage) const
{
    const QRect a = area();
    if (a.isEmpty() || !(collage.width() > 0 && collage.height() > 0))
        return 0.0;
    const double kx = a.width() / collage.width();
    const double ky = a.height() / collage.height();
    return m_fit == Fit::Fill ? std::max(kx, ky) : std::min(kx, ky);
}

QString PagePreset::noRoomReason(const QSizeF &collage) const
{
    if (isValid() && scaleFor(collage) > 0)
        return QString();
    return QStringLiteral("the margins leave no room on a %1 page").arg(name());
}

QSize PagePreset::renderSize(const QSizeF &collage) const
{
    const double k = scaleFor(collage);
    if (!(k > 0) || !std::isfinite(k))
        return QSize();
    return QSize(std::max(1, int(std::lround(collage.width() * k))), std::max(1, int(std::lround(collage.height() * k))));
}

PagePreset::Placement PagePreset::place(const QSize &picture) const
{
    const QRect a = area();
    if (a.isEmpty() || picture.isEmpty())
        return {};
    const QSize shown(std::min(picture.width(), a.width()), std::min(picture.height(), a.height()));
    Placement p;
    p.source = QRect(QPoint((picture.width() - shown.width()) / 2, (picture.height() - shown.height()) / 2), shown);
    p.target = QRect(QPoint(a.left() + (a.width() - shown.width()) / 2, a.top() + (a.height() - shown.height()) / 2),
                     shown);
    return p;
}

double PagePreset::enlargement(const QSize &picture) const
{
    return PrintSize::ofPixels(renderSize(QSizeF(picture)), PrintSize::Unit::Inches, m_dotsPerInch).enlargement(picture);
}

bool PagePreset::enlargesBeyond(const QSize &picture, double sharpest) const
{
    const QSize render = renderSize(QSizeF(picture));
    return !render.isEmpty() &&
           PrintSize::ofPixels(render, PrintSize::Unit::Inches, m_dotsPerInch).enlargesBeyond(picture, sharpest);
}

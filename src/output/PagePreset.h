#pragma once

#include <QPageLayout>
#include <QRect>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <optional>

// A sheet of paper the collage is printed on: one of the usual paper and photo sizes (or a
// printer's page), upright or turned, with a margin, the rule by which the collage meets the
// page (fitted inside the margins, or filling them with the overflow cut evenly from both
// ends), and the resolution it is rendered at. From these it works out how many pixels the
// collage is rendered at, where that picture lands on the page, and whether the photos hold
// enough detail for it.
class PagePreset
{
public:
    enum class Fit { Inside, Fill };

    static constexpr double kDefaultDotsPerInch = 300.0;
    static constexpr double kMillimetresPerInch = 25.4;
    static constexpr double kPointsPerInch = 72.0;
    // The margin a paper size starts with; photo sizes start with none.
    static constexpr double kPaperMargin = 10.0;

    // The names of the presets, in the order they are offered: "A5" … "A1", "Letter", "Legal",
    // "Tabloid", "10x15cm", "13x18cm", "20x30cm".
    static QStringList names();
    // The preset of that name in any case, upright, with its own margin, fitted inside, at
    // 300 dpi; nothing for a name that is not one.
    static std::optional<PagePreset> named(const QString &name);
    // "NAME" or "NAME,landscape" (also ",portrait"), in any case; nothing with `error` set
    // when the text is neither.
    static std::optional<PagePreset> parse(const QString &text, QString *error = nullptr);
    // A printer's page: its paper, orientation and its widest margin all round.
    static PagePreset ofPageLayout(const QPageLayout &layout, double dotsPerInch = kDefaultDotsPerInch);

    QString name() const { return m_name; }
    bool isPhotoSize() const { return m_photoSize; }
    bool isLandscape() const { return m_landscape; }
    double margin() const { return m_margin; } // millimetres, on every side
    Fit fit() const { return m_fit; }
    double dotsPerInch() const { return m_dotsPerInch; }

    PagePreset &setLandscape(bool landscape);
    PagePreset &setMargin(double millimetres);
    PagePreset &setFit(Fit fit);
    PagePreset &setDotsPerInch(double dotsPerInch);

    // The page as it lies (turned when landscape), in millimetres and in PDF points (1/72 inch).
    QSizeF size() const;
    QSizeF sizeInPoints() const;
    // The whole page in pixels at the resolution, each side rounded.
    QSize pixelSize() const;
    // The part of the page inside the margins, in page pixels.
    QRect area() const;
    // A positive resolution, and margins that leave a printable area within the largest
    // picture side.
    bool isValid() const;
    // The page for QPdfWriter and QPrinter: the paper, orientation and margins.
    QPageLayout pageLayout() const;

    // Pixels per unit of a collage of `collage` units: inside the area, or covering it.
    double scaleFor(const QSizeF &collage) const;
    // Why a collage of `collage` units cannot be put on this page ("the margins leave no room
    // on a A4 page"), or empty when it can: the page is valid and the scale positive.
    QString noRoomReason(const QSizeF &collage) const;
    // The pixels the collage is rendered at: its size times scaleFor, rounded. Empty when the
    // collage or the page is.
    QSize renderSize(const QSizeF &collage) const;

    struct Placement {
        QRect source; // the part of the picture that goes on the page
        QRect target; // where it lands, in page pixels
    };
    // Where a rendered picture of `picture` pixels goes: centred in the area, the part that
    // overflows it cut evenly from both ends (the fill rule's overflow, or a rounding pixel).
    Placement place(const QSize &picture) const;

    // How many times the page enlarges a picture of `picture` pixels, and whether that goes
    // beyond the detail of its sharpest photo (`sharpest`: photo pixels per picture pixel),
    // the same rule as the save dialog's print size.
    double enlargement(const QSize &picture) const;
    bool enlargesBeyond(const QSize &picture, double sharpest) const;

private:
    PagePreset(const QString &name, const QSizeF &upright, bool photoSize);

    QString m_name;
    QSizeF m_upright; // millimetres, portrait
    bool m_photoSize = false;
    bool m_landscape = false;
    double m_margin = 0.0;
    Fit m_fit = Fit::Inside;
    double m_dotsPerInch = kDefaultDotsPerInch;
};

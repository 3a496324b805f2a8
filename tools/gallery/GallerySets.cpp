#include "GallerySets.h"

#include "CollageShape.h"
#include "SlotPattern.h"

namespace {

// A design straight from its tiles in cells (x, y, width, height) on a columns x rows grid.
TemplateDesign design(const QString &family, const QString &name, int columns, int rows,
                      std::vector<QRect> tiles, const TileStyle &style)
{
    const SlotPattern pattern(family, name, columns, rows, std::move(tiles));
    TemplateDesign d(pattern, CollageShape{QStringLiteral("%1:%2").arg(columns).arg(rows), double(columns) / rows},
                     QSize(1, 1));
    d.setStyle(style);
    return d;
}

std::vector<QRect> grid(int columns, int rows, int w = 1, int h = 1)
{
    std::vector<QRect> tiles;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            tiles.emplace_back(x * w, y * h, w, h);
    return tiles;
}

TileStyle panoramaStyle()
{
    TileStyle s;
    s.cornerRadius = 0.08;
    s.collageBorderWidth = 3;
    return s;
}

TileStyle polaroidStyle()
{
    TileStyle s;
    s.borderWidth = 0.10;
    s.borderColor = QColor(0xFB, 0xFA, 0xF6);
    s.collageBorderWidth = 6;
    return s;
}

TileStyle heroStyle()
{
    TileStyle s;
    s.cornerRadius = 0.05;
    s.borderWidth = 0.03;
    s.borderColor = Qt::white;
    s.collageBorderWidth = 4;
    return s;
}

TileStyle filmStyle()
{
    TileStyle s;
    s.cornerRadius = 0.04;
    s.borderWidth = 0.08;
    s.borderColor = QColor(0x1E, 0x1E, 0x1E);
    s.collageBorderWidth = 2;
    return s;
}

} // namespace

std::vector<GallerySets::Set> GallerySets::all()
{
    const QString pano = QStringLiteral("Panorama"), wall = QStringLiteral("Polaroid"),
                  hero = QStringLiteral("Hero"), film = QStringLiteral("Film");
    std::vector<Set> sets;

    sets.push_back({QStringLiteral("Panorama-Strips"), QStringLiteral("Panorama Strips"),
                    QStringLiteral("Wide collages for skylines, beaches and long tables: strips of photos with "
                                   "softly rounded corners."),
                    {
                        design(pano, QStringLiteral("Skyline"), 8, 2,
                               {{0, 0, 2, 2}, {2, 0, 1, 1}, {2, 1, 1, 1}, {3, 0, 2, 2}, {5, 0, 1, 1}, {5, 1, 1, 1}, {6, 0, 2, 2}},
                               panoramaStyle()),
                        design(pano, QStringLiteral("Centre Stage"), 9, 3,
                               {{0, 0, 2, 1}, {0, 1, 2, 2}, {2, 0, 5, 3}, {7, 0, 2, 2}, {7, 2, 2, 1}}, panoramaStyle()),
                        design(pano, QStringLiteral("Ribbon"), 6, 1, grid(6, 1), panoramaStyle()),
                        design(pano, QStringLiteral("Double Deck"), 8, 2,
                               {{0, 0, 2, 1}, {2, 0, 2, 1}, {4, 0, 2, 1}, {6, 0, 2, 1}, {0, 1, 1, 1}, {1, 1, 1, 1},
                                {2, 1, 1, 1}, {3, 1, 1, 1}, {4, 1, 1, 1}, {5, 1, 1, 1}, {6, 1, 1, 1}, {7, 1, 1, 1}},
                               panoramaStyle()),
                    }});

    sets.push_back({QStringLiteral("Polaroid-Wall"), QStringLiteral("Polaroid Wall"),
                    QStringLiteral("Every photo in a broad white frame, pinned up like prints on a wall."),
                    {
                        design(wall, QStringLiteral("Nine Prints"), 3, 3, grid(3, 3), polaroidStyle()),
                        design(wall, QStringLiteral("Scatter"), 4, 4,
                               {{0, 0, 2, 2}, {2, 0, 1, 1}, {3, 0, 1, 1}, {2, 1, 2, 2}, {0, 2, 2, 2}, {2, 3, 1, 1}, {3, 3, 1, 1}},
                               polaroidStyle()),
                        design(wall, QStringLiteral("Postcards"), 6, 4, grid(2, 2, 3, 2), polaroidStyle()),
                        design(wall, QStringLiteral("Twelve Prints"), 4, 3, grid(4, 3), polaroidStyle()),
                    }});

    sets.push_back({QStringLiteral("Big-Hero"), QStringLiteral("Big Hero"),
                    QStringLiteral("One photo leads, the others gather round it: for the best shot of the day."),
                    {
                        design(hero, QStringLiteral("Hero Left"), 4, 3,
                               {{0, 0, 3, 3}, {3, 0, 1, 1}, {3, 1, 1, 1}, {3, 2, 1, 1}}, heroStyle()),
                        design(hero, QStringLiteral("Hero Top"), 4, 4,
                               {{0, 0, 4, 3}, {0, 3, 1, 1}, {1, 3, 1, 1}, {2, 3, 1, 1}, {3, 3, 1, 1}}, heroStyle()),
                        design(hero, QStringLiteral("Hero Framed"), 4, 4,
                               {{0, 0, 1, 1}, {1, 0, 1, 1}, {2, 0, 1, 1}, {3, 0, 1, 1}, {0, 1, 1, 1}, {1, 1, 2, 2}, {3, 1, 1, 1},
                                {0, 2, 1, 1}, {3, 2, 1, 1}, {0, 3, 1, 1}, {1, 3, 1, 1}, {2, 3, 1, 1}, {3, 3, 1, 1}},
                               heroStyle()),
                        design(hero, QStringLiteral("Hero Portrait"), 3, 4,
                               {{0, 0, 3, 3}, {0, 3, 1, 1}, {1, 3, 1, 1}, {2, 3, 1, 1}}, heroStyle()),
                    }});

    sets.push_back({QStringLiteral("Film-Strip"), QStringLiteral("Film Strip"),
                    QStringLiteral("Frames on a dark strip of film, in one row or two, for a story told in order."),
                    {
                        design(film, QStringLiteral("Five Frames"), 5, 1, grid(5, 1), filmStyle()),
                        design(film, QStringLiteral("Wide Frames"), 12, 2, grid(4, 1, 3, 2), filmStyle()),
                        design(film, QStringLiteral("Contact Sheet"), 6, 2, grid(6, 2), filmStyle()),
                    }});
    return sets;
}

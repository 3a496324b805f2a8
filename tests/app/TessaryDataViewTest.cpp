#include "model/TessaryData.h"
#include "model/TileLabelGeometry.h"
#include "app/collage/DragDropImageView.h"
#include "app/collage/TessaryDataView.h"

#include <QGraphicsOpacityEffect>
#include <QLabel>

#include <gtest/gtest.h>

namespace {

TileLayout tileWithTitle(const QString &title, const QRectF &frame, double borderWidth)
{
    TileLayout t;
    auto module = std::make_shared<TessaryData>();
    module->setTitle(title);
    t.module = module;
    t.frame = frame;
    t.imageSize = frame.size();
    t.borderWidth = borderWidth;
    return t;
}

// The title sits where the core's label rule puts it (whose borders and smallest type are the
// label geometry's own tests), in bold; an empty title shows one blank until setModule.
TEST(TessaryDataView, TitleLabel)
{
    const struct {
        const char *name;
        QString title;
        QRectF frame;
        double border;
        double collageBorder;
    } cases[] = {
        {"plain", QStringLiteral("Sea"), QRectF(10, 20, 200, 100), 0, 4},
        {"empty title", QString(), QRectF(0, 0, 80, 80), 0, 0},
    };
    for (const auto &c : cases) {
        TessaryDataView tile(tileWithTitle(c.title, c.frame, c.border), nullptr, c.collageBorder);
        EXPECT_EQ(tile.geometry(), c.frame.toRect()) << c.name;
        const QRectF label = TileLabelGeometry::titleLabelFrame(c.frame.size(), c.border, c.collageBorder);
        EXPECT_EQ(tile.titleLabel()->geometry(), TileLabelGeometry::toTopDown(label, c.frame.height()).toRect()) << c.name;
        EXPECT_EQ(tile.titleLabel()->font().pixelSize(), int(std::max(label.height(), 6.0))) << c.name;
        EXPECT_TRUE(tile.titleLabel()->font().bold()) << c.name;
        EXPECT_EQ(tile.titleLabel()->text(), c.title.isEmpty() ? QStringLiteral(" ") : c.title) << c.name;
        tile.setModule(tile.module());
        EXPECT_EQ(tile.titleLabel()->text(), c.title) << c.name;
    }
}

// The module's border lies inside the tile in its colour, and rounded corners leave the
// corner pixels unpainted.
TEST(TessaryDataView, BorderAndCorners)
{
    TileLayout t = tileWithTitle(QString(), QRectF(0, 0, 200, 100), 5);
    t.borderColor = QColor(200, 0, 0);
    t.cornerRadius = 10;
    TessaryDataView tile(t, nullptr, 0);
    tile.imageView()->setImage([] {
        QImage photo(200, 100, QImage::Format_RGB32);
        photo.fill(QColor(0, 0, 200));
        return photo;
    }());
    QImage picture(200, 100, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    tile.render(&picture, QPoint(), QRegion(), QWidget::DrawChildren);
    EXPECT_EQ(picture.pixelColor(2, 50).rgb(), QColor(200, 0, 0).rgb());
    EXPECT_EQ(picture.pixelColor(100, 97).rgb(), QColor(200, 0, 0).rgb());
    EXPECT_EQ(picture.pixelColor(10, 50).rgb(), QColor(0, 0, 200).rgb());
    EXPECT_EQ(picture.pixelColor(0, 0).alpha(), 0);

    // The module's opacity applies to the whole tile; an opaque tile needs no effect.
    EXPECT_EQ(tile.graphicsEffect(), nullptr);
    t.alpha = 0.5;
    TessaryDataView faded(t, nullptr, 0);
    auto *effect = qobject_cast<QGraphicsOpacityEffect *>(faded.graphicsEffect());
    ASSERT_NE(effect, nullptr);
    EXPECT_DOUBLE_EQ(effect->opacity(), 0.5);
}

} // namespace

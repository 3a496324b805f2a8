#include "support/TestImages.h"

#include "blend/PhotoTiler.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

TEST(PhotoTiler, GridKeepsTilesAtLeastAFiftiethOfThePicture)
{
    struct Case {
        const char *name;
        QSizeF size;
        int rows, columns;
        PhotoTiler::Grid expected;
    } cases[] = {
        {"3 x 4 of 1000 x 800", {1000, 800}, 3, 4, {3, 4, 250, 266}},
        {"60 columns are one full-width column", {1000, 800}, 3, 60, {3, 1, 1000, 266}},
        {"50 columns are exactly a fiftieth each", {1000, 800}, 1, 50, {1, 50, 20, 800}},
        {"60 rows are one full-height row", {1000, 800}, 60, 2, {1, 2, 500, 800}},
        {"fractional size: the truncated width is the tile", {100.5, 80}, 1, 60, {1, 1, 100, 80}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const PhotoTiler::Grid g = PhotoTiler::gridFor(c.size, c.rows, c.columns);
        EXPECT_EQ(g.rows, c.expected.rows);
        EXPECT_EQ(g.columns, c.expected.columns);
        EXPECT_EQ(g.tileWidth, c.expected.tileWidth);
        EXPECT_EQ(g.tileHeight, c.expected.tileHeight);
    }
}

TEST(PhotoTiler, CutsFromTheBottomRowUpAndEachRowFromRightToLeft)
{
    const QList<PhotoTiler::Tile> tiles = PhotoTiler::cuttingOrder({2, 3, 10, 20});
    const QList<std::pair<int, int>> expected = {{0, 2}, {0, 1}, {0, 0}, {1, 2}, {1, 1}, {1, 0}};
    ASSERT_EQ(tiles.size(), expected.size());
    for (qsizetype i = 0; i < tiles.size(); ++i) {
        EXPECT_EQ(std::make_pair(tiles[i].row, tiles[i].column), expected[i]) << i;
        EXPECT_EQ(tiles[i].rect, QRect(10 * tiles[i].column, 20 * tiles[i].row, 10, 20)) << i;
    }
    EXPECT_EQ(PhotoTiler::tilePath(QStringLiteral("/f"), QStringLiteral("U"), 3, 7), QStringLiteral("/f/U_3_7.tiff"));
}

class PhotoTilerCut : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        // Four quadrants of four colours: the bottom row of the QImage is the photo's row 0.
        QImage photo(40, 30, QImage::Format_RGB32);
        QPainter p(&photo);
        p.fillRect(0, 0, 20, 15, topLeft);
        p.fillRect(20, 0, 20, 15, topRight);
        p.fillRect(0, 15, 20, 15, bottomLeft);
        p.fillRect(20, 15, 20, 15, bottomRight);
        p.end();
        photoPath = dir.filePath(QStringLiteral("photo.png"));
        ASSERT_TRUE(photo.save(photoPath));
        tiles = dir.filePath(QStringLiteral("tiles"));
        QDir().mkpath(tiles);
    }
    QTemporaryDir dir;
    QString photoPath, tiles;
    const QColor topLeft = Qt::red, topRight = Qt::green, bottomLeft = Qt::blue, bottomRight = Qt::yellow;
};

TEST_F(PhotoTilerCut, WritesEveryTileNamedByRowAndColumnInCuttingOrder)
{
    QStringList paths;
    QList<std::pair<int, int>> progress;
    ASSERT_TRUE(PhotoTiler::cutPhoto(photoPath, tiles, 2, 2, std::chrono::milliseconds(0),
                                     [&](const QString &path, int done, int total) {
                                         paths.append(path);
                                         progress.append({done, total});
                                     }));
    EXPECT_EQ(progress, (QList<std::pair<int, int>>{{1, 4}, {2, 4}, {3, 4}, {4, 4}}));
    const QRegularExpression name(QStringLiteral("^([0-9A-F-]{36})_(\\d+)_(\\d+)\\.tiff$"));
    const struct {
        const char *rowColumn;
        QColor colour;
    } expected[] = {{"0_1", bottomRight}, {"0_0", bottomLeft}, {"1_1", topRight}, {"1_0", topLeft}};
    ASSERT_EQ(paths.size(), 4);
    for (int i = 0; i < 4; ++i) {
        const QFileInfo info(paths[i]);
        EXPECT_EQ(info.absolutePath(), QDir(tiles).absolutePath());
        const QRegularExpressionMatch m = name.match(info.fileName());
        ASSERT_TRUE(m.hasMatch()) << info.fileName().toStdString();
        EXPECT_EQ(m.captured(2) + QLatin1Char('_') + m.captured(3), QLatin1String(expected[i].rowColumn));
        QImage tile(paths[i]);
        ASSERT_EQ(tile.size(), QSize(20, 15));
        EXPECT_EQ(tile.pixelColor(10, 7), expected[i].colour) << expected[i].rowColumn;
    }
    EXPECT_EQ(QDir(tiles).entryList(QDir::Files).size(), 4);
}

TEST_F(PhotoTilerCut, InProgressUntilACutWithAPhotoEnds)
{
    struct Case {
        const char *name;
        bool imagesFolder, photo, readable;
        bool stillInProgress;
        int tiles;
    } cases[] = {
        {"photo cut", true, true, true, false, 6},
        {"unreadable photo ends the cut", true, true, false, false, 0},
        {"no selection leaves it set", true, false, true, true, 0},
        {"no images folder leaves it set", false, true, true, true, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        PhotoTiler tiler;
        tiler.setPauseBeforeEachTile(std::chrono::milliseconds(0));
        QSignalSpy written(&tiler, &PhotoTiler::tileWritten);
        QSignalSpy finished(&tiler, &PhotoTiler::tilingFinished);
        const QString photo = !c.photo ? QString() : c.readable ? photoPath : dir.filePath(QStringLiteral("missing.png"));
        tiler.tilePhotoFiles(c.imagesFolder ? tiles : QString(), photo, 2, 3);
        EXPECT_TRUE(tiler.tilingInProgress());
        tiler.waitForFinished();
        QCoreApplication::processEvents();
        EXPECT_EQ(tiler.tilingInProgress(), c.stillInProgress);
        EXPECT_EQ(finished.size(), c.stillInProgress ? 0 : 1);
        EXPECT_EQ(written.size(), c.tiles);
        if (!written.isEmpty()) {
            EXPECT_EQ(written.last().at(1).toInt(), written.last().at(2).toInt());
        }
    }
}

} // namespace

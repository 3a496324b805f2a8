#include "images/PrintSize.h"
#include "images/ResultFormat.h"

#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using Unit = PrintSize::Unit;

struct PixelCase {
    const char *name;
    PrintSize print;
    QSize pixels;
    int dotsPerMeter;
};

void PrintTo(const PixelCase &c, std::ostream *os) { *os << c.name; }

class PrintSizePixels : public ::testing::TestWithParam<PixelCase> {};

TEST_P(PrintSizePixels, CoversWholePixelsAtTheResolution)
{
    const PixelCase &c = GetParam();
    EXPECT_EQ(c.print.pixelSize(), c.pixels);
    EXPECT_EQ(c.print.isValid(), !c.pixels.isEmpty());
    if (!c.pixels.isEmpty()) {
        EXPECT_EQ(c.print.dotsPerMeter(), c.dotsPerMeter);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, PrintSizePixels,
    ::testing::Values(PixelCase{"A4At300Dpi", PrintSize(21.0, 29.7, Unit::Centimetres), QSize(2480, 3508), 11811},
                      PixelCase{"TenByEightInchesAt300", PrintSize(10, 8, Unit::Inches), QSize(3000, 2400), 11811},
                      PixelCase{"FourInchesAt72", PrintSize(4, 4, Unit::Inches, 72), QSize(288, 288), 2835},
                      PixelCase{"TinyRoundsUpToOnePixel", PrintSize(0.001, 0.001, Unit::Centimetres), QSize(1, 1), 11811},
                      PixelCase{"ZeroWidthIsInvalid", PrintSize(0, 10, Unit::Centimetres), QSize(), 0},
                      PixelCase{"NegativeDpiIsInvalid", PrintSize(10, 10, Unit::Inches, -5), QSize(), 0},
                      PixelCase{"BeyondTheLargestSideIsInvalid", PrintSize(1000, 10, Unit::Inches, 300), QSize(), 0},
                      PixelCase{"NotANumberIsInvalid", PrintSize(std::nan(""), 10, Unit::Inches), QSize(), 0}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(PrintSize, OfPixelsAndUnitsRoundTrip)
{
    const PrintSize cm = PrintSize::ofPixels(QSize(3000, 2000), Unit::Centimetres, 300);
    EXPECT_NEAR(cm.width(), 25.4, 1e-9);
    EXPECT_NEAR(cm.height(), 16.9333333, 1e-6);
    EXPECT_EQ(cm.pixelSize(), QSize(3000, 2000));
    const PrintSize inches = cm.inUnit(Unit::Inches);
    EXPECT_NEAR(inches.width(), 10.0, 1e-9);
    EXPECT_EQ(inches.pixelSize(), QSize(3000, 2000));
    EXPECT_NEAR(PrintSize::heightKeepingProportions(30.0, QSize(3000, 2000)), 20.0, 1e-9);
    EXPECT_NEAR(PrintSize::widthKeepingProportions(20.0, QSize(3000, 2000)), 30.0, 1e-9);
    EXPECT_EQ(PrintSize::heightKeepingProportions(30.0, QSize()), 0.0);
}

struct EnlargeCase {
    const char *name;
    PrintSize print;
    QSize source;
    double sharpest;
    double enlargement;
    bool warns;
};

void PrintTo(const EnlargeCase &c, std::ostream *os) { *os << c.name; }

class PrintSizeEnlargement : public ::testing::TestWithParam<EnlargeCase> {};

TEST_P(PrintSizeEnlargement, WarnsOnlyBeyondTheSharpestPhoto)
{
    const EnlargeCase &c = GetParam();
    EXPECT_NEAR(c.print.enlargement(c.source), c.enlargement, 1e-9);
    EXPECT_EQ(c.print.enlargesBeyond(c.source, c.sharpest), c.warns);
}

INSTANTIATE_TEST_SUITE_P(
    Table, PrintSizeEnlargement,
    ::testing::Values(
        // 10 x 10 inches at 300 dpi is 3000 pixels a side.
        EnlargeCase{"SameSizeNeverWarns", PrintSize(10, 10, Unit::Inches), QSize(3000, 3000), 0.5, 1.0, false},
        EnlargeCase{"ShrinkingNeverWarns", PrintSize(10, 10, Unit::Inches), QSize(6000, 6000), 0.0, 0.5, false},
        EnlargeCase{"DoubleWithinSharpPhotos", PrintSize(10, 10, Unit::Inches), QSize(1500, 1500), 2.5, 2.0, false},
        EnlargeCase{"DoubleBeyondTheSharpest", PrintSize(10, 10, Unit::Inches), QSize(1500, 1500), 1.5, 2.0, true},
        EnlargeCase{"ExactlyTheSharpest", PrintSize(10, 10, Unit::Inches), QSize(1500, 1500), 2.0, 2.0, false},
        // Proportions kept: the larger ratio decides.
        EnlargeCase{"WiderPrintUsesTheLargerRatio", PrintSize(20, 10, Unit::Inches), QSize(3000, 3000), 1.0, 2.0, true},
        EnlargeCase{"UnknownSharpnessMeansTheOwnPixels", PrintSize(10, 10, Unit::Inches), QSize(2999, 2999), 0.0,
                    3000.0 / 2999.0, true}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(ResultFormat, NamesAndSuffixes)
{
    const QList<QByteArray> formats = ResultFormat::writableFormats();
    ASSERT_FALSE(formats.isEmpty());
    EXPECT_EQ(formats.first(), "png");
    for (const char *expected : {"png", "jpeg", "tiff", "bmp"})
        EXPECT_TRUE(formats.contains(expected)) << expected;

    struct Case {
        QString path;
        QByteArray format;
        QString expected;
    };
    for (const Case &c : {Case{"/a/b/Untitled", "jpeg", "/a/b/Untitled.jpg"},
                          Case{"/a/b/pic.png", "jpeg", "/a/b/pic.jpg"},
                          Case{"/a/b/pic.JPEG", "jpeg", "/a/b/pic.JPEG"},
                          Case{"/a/b/pic.tiff", "tiff", "/a/b/pic.tiff"},
                          Case{"/a/b/my.holiday", "png", "/a/b/my.holiday.png"},
                          Case{"/a/b/pic.webp", "bmp", "/a/b/pic.bmp"}})
        EXPECT_EQ(ResultFormat::withSuffix(c.path, c.format), c.expected) << qPrintable(c.path);
    EXPECT_EQ(ResultFormat::nameFilter("jpeg"), QStringLiteral("JPEG (*.jpg *.jpeg)"));
    EXPECT_EQ(ResultFormat::defaultFileName("tiff"), QStringLiteral("Untitled.tif"));

    const QString a = ResultFormat::uuidPngName();
    EXPECT_TRUE(a.endsWith(QStringLiteral(".png")));
    EXPECT_EQ(a.size(), 36 + 4);
    EXPECT_NE(a, ResultFormat::uuidPngName());
    EXPECT_TRUE(ResultFormat::temporaryPngPath(QStringLiteral("/tmp")).startsWith(QStringLiteral("/tmp/")));
}

// The choice starts at the reference photo's own format when it can be written, at PNG for a
// readable picture that cannot, and nowhere for a file that is not a picture.
TEST(ResultFormat, StartingFormatFollowsTheFirstPhoto)
{
    QTemporaryDir dir;
    QImage image(8, 6, QImage::Format_RGB32);
    image.fill(Qt::red);
    struct Case {
        const char *file;
        const char *writeAs;
        QByteArray expected;
    };
    for (const Case &c : {Case{"a.jpg", "jpeg", "jpeg"}, Case{"b.tif", "tiff", "tiff"}, Case{"c.png", "png", "png"},
                          Case{"d.bmp", "bmp", "bmp"}, Case{"jpeg-named.png", "jpeg", "jpeg"},
                          Case{"e.ppm", "ppm", "png"}, Case{"f.txt", nullptr, ""}, Case{"missing.jpg", "", ""}}) {
        const QString path = dir.filePath(QString::fromLatin1(c.file));
        if (c.writeAs == nullptr) {
            QFile f(path);
            ASSERT_TRUE(f.open(QIODevice::WriteOnly));
            f.write("not a picture");
        } else if (*c.writeAs) {
            ASSERT_TRUE(image.save(path, c.writeAs));
        }
        EXPECT_EQ(ResultFormat::startingFormat(path), c.expected) << c.file;
    }
    EXPECT_EQ(ResultFormat::startingFormat(QString()), QByteArray());
}

} // namespace

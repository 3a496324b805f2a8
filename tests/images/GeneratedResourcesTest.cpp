// Checks the pictures and the sound that the build generates into the resources folder: every
// file the application looks up is there, decodes, and has sensible dimensions.
#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace {

QString resourcesFolder()
{
    return qEnvironmentVariable("TESSARY_RESOURCES", QStringLiteral(TESSARY_BINARY_DIR "/resources"));
}

QString resource(const QString &name)
{
    return QDir(resourcesFolder()).filePath(name);
}

struct PictureCase
{
    const char *name;
    const char *format;
    QSize minSize;
    QSize maxSize;
    bool needsAlpha;
};

void PrintTo(const PictureCase &c, std::ostream *os)
{
    *os << c.name;
}

class PictureResources : public ::testing::TestWithParam<PictureCase> {};

TEST_P(PictureResources, ExistsDecodesAndHasItsSize)
{
    const PictureCase c = GetParam();
    const QString path = resource(QString::fromLatin1(c.name));
    ASSERT_TRUE(QFile::exists(path)) << qPrintable(path);
    QImageReader reader(path);
    EXPECT_EQ(reader.format(), QByteArray(c.format)) << c.name;
    const QImage image = reader.read();
    ASSERT_FALSE(image.isNull()) << c.name << ": " << qPrintable(reader.errorString());
    EXPECT_GE(image.width(), c.minSize.width()) << c.name;
    EXPECT_GE(image.height(), c.minSize.height()) << c.name;
    EXPECT_LE(image.width(), c.maxSize.width()) << c.name;
    EXPECT_LE(image.height(), c.maxSize.height()) << c.name;
    if (c.needsAlpha) {
        // Icons sit on window backgrounds: their corners must be see-through.
        EXPECT_TRUE(image.hasAlphaChannel()) << c.name;
        EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0) << c.name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Resources, PictureResources,
    ::testing::Values(PictureCase{"blank.png", "png", {256, 256}, {4000, 4000}, false},
                      PictureCase{"defaultImage.png", "png", {256, 256}, {1024, 1024}, false},
                      PictureCase{"ximage.png", "png", {64, 64}, {1024, 1024}, true},
                      PictureCase{"MatchingMarginWidth.tif", "tiff", {64, 64}, {256, 256}, true},
                      PictureCase{"BlendingMarginWidth.tif", "tiff", {64, 64}, {256, 256}, true},
                      PictureCase{"InputImageScaling.tif", "tiff", {64, 64}, {256, 256}, true},
                      PictureCase{"HomographyScaling.tif", "tiff", {64, 64}, {256, 256}, true},
                      PictureCase{"CropResult.tif", "tiff", {64, 64}, {256, 256}, true},
                      PictureCase{"UniformlyCrop.png", "png", {64, 64}, {256, 256}, true},
                      PictureCase{"xcircle.tiff", "tiff", {64, 64}, {256, 256}, true}),
    [](const auto &info) {
        return QString::fromLatin1(info.param.name).replace(QLatin1Char('.'), QLatin1Char('_')).toStdString();
    });

enum class Shape { Landscape43, Landscape32, Portrait, Square, Panorama, Other };

Shape shapeOf(QSize s)
{
    const double r = double(s.width()) / s.height();
    if (std::abs(r - 4.0 / 3) < 0.02) return Shape::Landscape43;
    if (std::abs(r - 3.0 / 2) < 0.02) return Shape::Landscape32;
    if (r < 0.95) return Shape::Portrait;
    if (std::abs(r - 1.0) < 0.02) return Shape::Square;
    if (r > 2.5) return Shape::Panorama;
    return Shape::Other;
}

TEST(PhotoResources, FactoryPhotosMixEveryShape)
{
    std::map<Shape, int> counts;
    for (int i = 0; i < 49; ++i)
        ++counts[shapeOf(QImageReader(resource(QStringLiteral("images-%1.jpg").arg(i))).size())];
    for (Shape s : {Shape::Landscape43, Shape::Landscape32, Shape::Portrait, Shape::Square, Shape::Panorama})
        EXPECT_GE(counts[s], 4) << "shape " << int(s);
}

TEST(SoundResource, HarpIsAShortAiff)
{
    // The layout of the writer's files (FORM, an 18-byte COMM, then SSND with its 8 bytes of
    // offset and block size) is pinned by the writer's own tests; here the header's numbers.
    QFile file(resource(QStringLiteral("harp.aif")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray data = file.readAll();
    ASSERT_GE(data.size(), 54);
    const auto *d = reinterpret_cast<const uchar *>(data.constData());
    ASSERT_EQ(data.left(4), "FORM");
    ASSERT_EQ(qFromBigEndian<quint32>(d + 4), quint32(data.size() - 8));
    ASSERT_EQ(data.mid(12, 4), "COMM");
    ASSERT_EQ(data.mid(38, 4), "SSND");
    const int channels = qFromBigEndian<quint16>(d + 20);
    const quint32 frames = qFromBigEndian<quint32>(d + 22);
    EXPECT_TRUE(channels == 1 || channels == 2);
    EXPECT_EQ(qFromBigEndian<quint16>(d + 26), 16);
    EXPECT_EQ(data.mid(28, 10).toHex(), "400eac44000000000000"); // 44100 Hz
    ASSERT_EQ(qsizetype(54 + 2 * frames * quint32(channels)), data.size());
    const double seconds = frames / 44100.0;
    EXPECT_GE(seconds, 1.5);
    EXPECT_LE(seconds, 2.5);
}

TEST(GeneratedResources, AreTheSameBytesOnEveryRun)
{
    // Regenerate a few resources of each kind into a fresh folder and compare with the build's.
    const QString tool = QStringLiteral(TESSARY_BINARY_DIR "/bin/tessary-resgen");
    if (!QFile::exists(tool))
        GTEST_SKIP() << "generator not built";
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QStringList names = {QStringLiteral("images-41.jpg"), QStringLiteral("flower-0.jpg"),
                               QStringLiteral("CropResult.tif"), QStringLiteral("ximage.png"),
                               QStringLiteral("harp.aif")};
    QProcess process;
    process.start(tool, {QStringLiteral("--out"), dir.path(), QStringLiteral("--only"), names.join(QLatin1Char(','))});
    ASSERT_TRUE(process.waitForFinished(120000));
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    for (const QString &name : names) {
        QFile a(resource(name)), b(QDir(dir.path()).filePath(name));
        ASSERT_TRUE(a.open(QIODevice::ReadOnly)) << qPrintable(name);
        ASSERT_TRUE(b.open(QIODevice::ReadOnly)) << qPrintable(name);
        EXPECT_TRUE(a.readAll() == b.readAll()) << qPrintable(name) << " differs between runs";
    }
}

} // namespace

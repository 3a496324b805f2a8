// Checks the pictures and the sound that the build generates into the resources folder: every
// file the application looks up is there, decodes, and has sensible dimensions and content.
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

// Decodes at a fraction of the size where the format allows it (JPEG scales while decoding),
// which keeps these checks fast on multi-megapixel files.
QImage decodeSmall(const QString &path, QSize *fullSize = nullptr, QByteArray *format = nullptr)
{
    QImageReader reader(path);
    if (fullSize)
        *fullSize = reader.size();
    if (format)
        *format = reader.format();
    const QSize size = reader.size();
    if (size.width() > 400)
        reader.setScaledSize(size / (size.width() / 200));
    return reader.read();
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

TEST(PictureResources, PlaceholderIsSquareAndNeutral)
{
    const QImage image(resource(QStringLiteral("defaultImage.png")));
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.width(), image.height());
    // A light grey tile: every pixel nearly colourless and light.
    for (int y = 0; y < image.height(); y += 7) {
        for (int x = 0; x < image.width(); x += 7) {
            const QColor c = image.pixelColor(x, y);
            ASSERT_LT(std::max({c.red(), c.green(), c.blue()}) - std::min({c.red(), c.green(), c.blue()}), 16) << x << "," << y;
            ASSERT_GT(c.lightness(), 140) << x << "," << y;
        }
    }
}

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

// Mean luminance spread, and how much neighbouring pixels differ relative to that spread:
// a photo has a large spread but smooth neighbourhoods; for pure noise the second is
// about 1.13 (the mean difference of two independent normal samples over their deviation).
struct Texture { double spread; double roughness; };

Texture textureOf(const QImage &image)
{
    const QImage g = image.convertToFormat(QImage::Format_Grayscale8);
    double sum = 0, sumSq = 0, diff = 0;
    const int w = g.width(), h = g.height();
    for (int y = 0; y < h; ++y) {
        const uchar *line = g.constScanLine(y);
        for (int x = 0; x < w; ++x) {
            sum += line[x];
            sumSq += double(line[x]) * line[x];
            if (x > 0)
                diff += std::abs(int(line[x]) - int(line[x - 1]));
        }
    }
    const double n = double(w) * h;
    const double spread = std::sqrt(std::max(0.0, sumSq / n - (sum / n) * (sum / n)));
    return {spread, diff / (double(w - 1) * h) / std::max(1.0, spread)};
}

struct PhotoSet
{
    QString prefix;
    int count;
    double minMegapixels;
    double maxMegapixels;
};

void PrintTo(const PhotoSet &s, std::ostream *os)
{
    *os << qPrintable(s.prefix);
}

class PhotoResources : public ::testing::TestWithParam<PhotoSet> {};

TEST_P(PhotoResources, AreJpegPhotosOfTheRightSizeThatLookLikePhotos)
{
    const PhotoSet set = GetParam();
    std::vector<QImage> thumbnails;
    for (int i = 0; i < set.count; ++i) {
        const QString name = QStringLiteral("%1-%2.jpg").arg(set.prefix).arg(i);
        QSize size;
        QByteArray format;
        const QImage small = decodeSmall(resource(name), &size, &format);
        ASSERT_FALSE(small.isNull()) << qPrintable(name);
        EXPECT_EQ(format, "jpeg") << qPrintable(name);
        const double mp = double(size.width()) * size.height() / 1e6;
        EXPECT_GE(mp, set.minMegapixels) << qPrintable(name);
        EXPECT_LE(mp, set.maxMegapixels) << qPrintable(name);
        EXPECT_NE(shapeOf(size), Shape::Other) << qPrintable(name) << " " << size.width() << "x" << size.height();
        const Texture t = textureOf(small);
        EXPECT_GT(t.spread, 12.0) << qPrintable(name) << " is nearly flat";
        EXPECT_LT(t.roughness, 0.9) << qPrintable(name) << " looks like noise";
        thumbnails.push_back(small.scaled(12, 12, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                                 .convertToFormat(QImage::Format_RGB32));
    }
    // No two pictures of a set are the same picture.
    for (size_t a = 0; a < thumbnails.size(); ++a) {
        for (size_t b = a + 1; b < thumbnails.size(); ++b) {
            if (thumbnails[a].size() != thumbnails[b].size())
                continue;
            long distance = 0;
            for (int y = 0; y < 12; ++y)
                for (int x = 0; x < 12; ++x) {
                    const QRgb p = thumbnails[a].pixel(x, y), q = thumbnails[b].pixel(x, y);
                    distance += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
                }
            EXPECT_GT(distance, 12 * 12 * 3 * 4) << qPrintable(set.prefix) << " " << a << " and " << b << " look alike";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Resources, PhotoResources,
                         ::testing::Values(PhotoSet{QStringLiteral("images"), 49, 1.4, 6.1},
                                           PhotoSet{QStringLiteral("flower"), 9, 1.0, 6.1}),
                         [](const auto &info) { return info.param.prefix.toStdString(); });

TEST(PhotoResources, FactoryPhotosMixEveryShape)
{
    std::map<Shape, int> counts;
    for (int i = 0; i < 49; ++i)
        ++counts[shapeOf(QImageReader(resource(QStringLiteral("images-%1.jpg").arg(i))).size())];
    for (Shape s : {Shape::Landscape43, Shape::Landscape32, Shape::Portrait, Shape::Square, Shape::Panorama})
        EXPECT_GE(counts[s], 4) << "shape " << int(s);
}

TEST(SoundResource, HarpIsAShortPluckedChordInAiff)
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
    std::vector<qint16> s;
    for (qsizetype i = 54; i < data.size(); i += 2)
        s.push_back(qFromBigEndian<qint16>(d + i));

    // Loud but not clipped; it starts softly (no click), is loudest early (a pluck, not a
    // swell) and has died away by the end.
    auto peakOf = [&](size_t from, size_t to) {
        int peak = 0;
        for (size_t i = from; i < to && i < s.size(); ++i)
            peak = std::max(peak, std::abs(int(s[i])));
        return peak;
    };
    const size_t n = s.size();
    const int peak = peakOf(0, n);
    EXPECT_GT(peak, 8000);
    EXPECT_LT(peak, 32767);
    EXPECT_LT(std::abs(int(s[0])), 500);
    EXPECT_GT(peakOf(0, n / 3), peakOf(2 * n / 3, n));
    EXPECT_LT(peakOf(n - size_t(channels) * 100, n), 300);
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

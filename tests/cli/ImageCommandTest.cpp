#include "CliRunner.h"
#include "support/ExifJpeg.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class ImageCommandTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path(const QString &name) const { return dir.filePath(name); }

    // 300 x 100: red left third, green middle, blue right third.
    QString threeBands(const QString &name = QStringLiteral("bands.png"))
    {
        QImage img(300, 100, QImage::Format_RGB32);
        QPainter p(&img);
        p.fillRect(0, 0, 100, 100, Qt::red);
        p.fillRect(100, 0, 100, 100, Qt::green);
        p.fillRect(200, 0, 100, 100, Qt::blue);
        p.end();
        img.save(path(name));
        return path(name);
    }
    // 300 x 100 plain grey with a saturated red disc near the right end: the subject.
    QString subjectAtRight(const QString &name = QStringLiteral("subject.png"))
    {
        QImage img(300, 100, QImage::Format_RGB32);
        img.fill(QColor(128, 128, 128));
        QPainter p(&img);
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(Qt::NoPen);
        p.setBrush(Qt::red);
        p.drawEllipse(QPointF(255, 50), 25, 25);
        p.end();
        img.save(path(name));
        return path(name);
    }
};

} // namespace

TEST_F(ImageCommandTest, FitWritesEachFormatWithTheMethodsCrop)
{
    const QString bands = threeBands();
    const QString subject = subjectAtRight();
    const struct {
        const char *out;
        const char *method;
        const char *format;
        QColor centre;
        const QString &in;
    } cases[] = {
        {"start.png", "1", "png", Qt::red, bands},
        {"middle.tiff", "0", "tiff", Qt::green, bands},
        {"end.webp", "2", "webp", Qt::blue, bands},
        {"fit.jpg", "3", "jpeg", Qt::green, bands},
        // Smart finds the disc; the centred crop would show plain grey.
        {"smart.png", "4", "png", Qt::red, subject},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.out);
        const QString out = path(QString::fromLatin1(c.out));
        const CliRun r = CliRun::of({"image", "fit", c.in, "50", "50", c.method, out});
        ASSERT_EQ(r.code, 0) << r.err.toStdString();
        QImageReader reader(out);
        reader.setDecideFormatFromContent(true);
        EXPECT_EQ(reader.format(), QByteArray(c.format));
        const QImage written = reader.read();
        ASSERT_EQ(written.size(), QSize(50, 50));
        const QColor centre = written.pixelColor(25, 25);
        EXPECT_NEAR(centre.red(), c.centre.red(), 40);
        EXPECT_NEAR(centre.green(), c.centre.green(), 40);
        EXPECT_NEAR(centre.blue(), c.centre.blue(), 40);
    }
}

TEST_F(ImageCommandTest, BadInputFailsWithAMessage)
{
    const QString in = threeBands();
    QFile text(path(QStringLiteral("words.jpg")));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("not a picture");
    text.close();
    const struct {
        QStringList args;
        const char *message;
    } cases[] = {
        {{"image"}, "Usage"},
        {{"image", "rotate"}, "unknown action"},
        {{"image", "info"}, "expected one FILE"},
        {{"image", "info", path(QStringLiteral("missing.png"))}, "no such file"},
        {{"image", "info", text.fileName()}, "not a picture"},
        {{"image", "fit", in, "50", "50", "0"}, "expected IN"},
        {{"image", "fit", in, "0", "50", "0", path(QStringLiteral("o.png"))}, "above 0"},
        {{"image", "fit", in, "abc", "50", "0", path(QStringLiteral("o.png"))}, "above 0"},
        {{"image", "fit", in, "50", "50", "5", path(QStringLiteral("o.png"))}, "METHOD"},
        {{"image", "fit", in, "50000", "50000", "0", path(QStringLiteral("o.png"))}, "megapixel limit"},
        {{"image", "fit", in, "50", "50", "0", path(QStringLiteral("o.xyz"))}, "extension"},
        {{"image", "fit", text.fileName(), "50", "50", "0", path(QStringLiteral("o.png"))}, "not a picture"},
        {{"image", "fit", in, "50", "50", "0", path(QStringLiteral("no/such/folder/o.png"))}, "cannot write"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.args.join(QLatin1Char(' ')).toStdString());
        const CliRun r = CliRun::of(c.args);
        EXPECT_NE(r.code, 0);
        EXPECT_TRUE(r.err.contains(QLatin1String(c.message))) << r.err.toStdString();
    }
    EXPECT_FALSE(QFile::exists(path(QStringLiteral("o.png"))));
}

// A photo stored on its side with an EXIF orientation tag is measured and fitted upright; a
// picture cut short is refused with its name.
TEST_F(ImageCommandTest, PhotosAreUprightAndTruncatedOnesRefused)
{
    const QString photo = path(QStringLiteral("phone.jpg"));
    const QByteArray jpeg = testimages::orientedJpeg(testimages::quarters(300, 100), 6);
    ASSERT_TRUE(testimages::writeFile(photo, jpeg));
    const CliRun info = CliRun::of({"image", "info", photo});
    ASSERT_EQ(info.code, 0) << info.err.toStdString();
    EXPECT_EQ(info.out, QStringLiteral("size: 300 x 100\nframes: 1\n"));
    const QString out = path(QStringLiteral("fitted.png"));
    const CliRun fit = CliRun::of({"image", "fit", photo, "60", "60", "0", out});
    ASSERT_EQ(fit.code, 0) << fit.err.toStdString();
    EXPECT_EQ(testimages::quarterColours(QImage(out)), QStringLiteral("RGBW"));

    const QString cut = path(QStringLiteral("cut.jpg"));
    ASSERT_TRUE(testimages::writeFile(cut, jpeg.left(jpeg.size() - 10)));
    const CliRun refused = CliRun::of({"image", "info", cut});
    EXPECT_NE(refused.code, 0);
    EXPECT_TRUE(refused.err.contains(cut) && refused.err.contains(QStringLiteral("truncated"))) << refused.err.toStdString();
}

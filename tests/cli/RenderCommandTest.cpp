#include "cli/CliArguments.h"
#include "CliRunner.h"

#include "foundation/Log.h"
#include "foundation/Preferences.h"
#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"
#include "model/CollageDocument.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QVariantMap gridTemplate(int columns, int rows, int unit)
{
    QVariantList modules;
    for (int i = 0; i < columns * rows; ++i)
        modules << QVariantMap{{QStringLiteral("widthFactor"), qint64(1)}, {QStringLiteral("heightFactor"), qint64(1)}};
    return QVariantMap{{QStringLiteral("nbrModules"), qint64(columns * rows)},
                       {QStringLiteral("savedTessaryDataModules"), modules},
                       {QStringLiteral("contentSizeWidth"), double(columns * unit)},
                       {QStringLiteral("contentSizeHeight"), double(rows * unit)},
                       {QStringLiteral("moduleSizeInPoints"), qint64(unit)},
                       {QStringLiteral("borderWidth"), qint64(0)}};
}

class RenderCommandTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString templates;
    QStringList photos;

    void SetUp() override
    {
        qputenv("TESSARY_DEFAULTS", path("defaults.sqlite").toLocal8Bit());
        qputenv("TESSARY_RESOURCES", path("resources").toLocal8Bit());
        templates = path("grid.plist");
        PropertyList::writeFile(templates, QVariantMap{{QStringLiteral("templates"),
                                                        QVariantList{gridTemplate(2, 1, 100), gridTemplate(3, 2, 50)}}},
                                PropertyList::Format::Xml);
        const QColor colours[] = {Qt::red, Qt::green, Qt::blue};
        for (int i = 0; i < 3; ++i) {
            QImage image(400 + 100 * i, 300, QImage::Format_RGB32);
            image.fill(colours[i]);
            photos << path(QStringLiteral("p%1.jpg").arg(i));
            image.save(photos.last());
        }
    }
    void TearDown() override
    {
        qunsetenv("TESSARY_DEFAULTS");
        qunsetenv("TESSARY_RESOURCES");
    }
    QString path(const QString &name) const { return dir.filePath(name); }
    static CliRun run(QStringList args) { return CliRun::of(QStringList{QStringLiteral("render")} + args); }
};

struct BadArgs {
    const char *name;
    QStringList args;
    int code;
    const char *message; // part of the error text
};

void PrintTo(const BadArgs &c, std::ostream *os) { *os << c.name; }

class RenderBadArguments : public RenderCommandTest, public ::testing::WithParamInterface<BadArgs> {};

TEST_P(RenderBadArguments, FailWithAMessage)
{
    const BadArgs &c = GetParam();
    QStringList args;
    for (QString a : c.args)
        args << a.replace(QStringLiteral("TEMPLATES"), templates).replace(QStringLiteral("DIR"), dir.path());
    const CliRun r = run(args);
    EXPECT_EQ(r.code, c.code) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains(QString::fromUtf8(c.message))) << r.err.toStdString();
    EXPECT_TRUE(r.out.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RenderBadArguments,
    ::testing::Values(
        BadArgs{"noOutput", {"--template", "TEMPLATES"}, 2, "-o OUT"},
        BadArgs{"badExtension", {"--template", "TEMPLATES", "-o", "DIR/x.gif"}, 2, "extension"},
        BadArgs{"badAlign", {"--align", "middle", "-o", "DIR/x.png"}, 2, "--align: 'middle'"},
        BadArgs{"badTransform", {"--transform", "5", "-o", "DIR/x.png"}, 2, "--transform: '5'"},
        BadArgs{"badSpacing", {"--spacing", "wide", "-o", "DIR/x.png"}, 2, "--spacing: 'wide'"},
        BadArgs{"oneIncrement", {"--increments", "5"}, 2, "--increments needs"},
        BadArgs{"badBackground", {"--background", "notacolour", "-o", "DIR/x.png"}, 2, "--background"},
        BadArgs{"zeroScale", {"--scale", "0", "-o", "DIR/x.png"}, 2, "--scale: '0'"},
        BadArgs{"scaleAndUnscaled", {"--scale", "2", "--unscaled", "-o", "DIR/x.png"}, 2, "exclude"},
        BadArgs{"badQuality", {"--quality", "101", "-o", "DIR/x.png"}, 2, "--quality"},
        BadArgs{"unknownOption", {"--frobnicate", "-o", "DIR/x.png"}, 2, "unknown option '--frobnicate'"},
        BadArgs{"missingValue", {"-o"}, 2, "-o needs a value"},
        BadArgs{"bothSources", {"--template", "TEMPLATES", "--builtin", "1", "-o", "DIR/x.png"}, 2, "not both"},
        BadArgs{"missingPhoto", {"--template", "TEMPLATES", "DIR/nope.jpg", "-o", "DIR/x.png"}, 2, "nope.jpg"},
        BadArgs{"folderAsPhoto", {"--template", "TEMPLATES", "DIR", "-o", "DIR/x.png"}, 2, "is not a file"},
        BadArgs{"missingTemplateFile", {"--template", "DIR/none.plist", "-o", "DIR/x.png"}, 1, "none.plist"},
        BadArgs{"templateNumberOutOfRange", {"--template", "TEMPLATES:3", "-o", "DIR/x.png"}, 1, "no template 3"},
        BadArgs{"templateNumberZero", {"--template", "TEMPLATES:0", "-o", "DIR/x.png"}, 2, "not a template number"},
        BadArgs{"builtinNumberZero", {"--builtin", "0", "-o", "DIR/x.png"}, 2, "not a template number"},
        BadArgs{"badTemplateIndex", {"--template", "TEMPLATES:two", "-o", "DIR/x.png"}, 2, "'two'"},
        BadArgs{"noBuiltInLibrary", {"--builtin", "298", "-o", "DIR/x.png"}, 1, "no built-in templates"},
        BadArgs{"noCurrentCollage", {"-o", "DIR/x.png"}, 1, "holds no collage"},
        BadArgs{"tooLarge", {"--template", "TEMPLATES", "--scale", "1000", "-o", "DIR/x.png"}, 1, "too large"},
        BadArgs{"collageAndTemplate", {"--collage", "DIR/c.tessary", "--template", "TEMPLATES", "-o", "DIR/x.png"}, 2, "--collage brings"},
        BadArgs{"collageMissing", {"--collage", "DIR/none.tessary", "-o", "DIR/x.png"}, 1, "none.tessary"},
        BadArgs{"collageNotADocument", {"--collage", "TEMPLATES", "-o", "DIR/x.png"}, 1, "not a collage document"},
        BadArgs{"pdfWithoutPage", {"--template", "TEMPLATES", "-o", "DIR/x.pdf"}, 2, "a PDF is a page"},
        BadArgs{"unknownPage", {"--page", "B5", "-o", "DIR/x.pdf"}, 2, "--page: 'B5' is not a page"},
        BadArgs{"sidewaysPage", {"--page", "a4,sideways", "-o", "DIR/x.pdf"}, 2, "neither landscape nor portrait"},
        BadArgs{"pageAndScale", {"--page", "A4", "--scale", "2", "-o", "DIR/x.pdf"}, 2, "give no --scale"},
        BadArgs{"dpiWithoutPage", {"--dpi", "300", "-o", "DIR/x.png"}, 2, "need --page"},
        BadArgs{"badDpi", {"--page", "A4", "--dpi", "0", "-o", "DIR/x.png"}, 2, "--dpi: '0'"},
        BadArgs{"marginLeavesNoRoom", {"--page", "10x15cm", "--margin", "50", "-o", "DIR/x.pdf"}, 2, "leaves no room"},
        BadArgs{"unwritablePdf", {"--template", "TEMPLATES", "--page", "A5", "-o", "DIR/no/such/x.pdf"}, 1, "cannot write"},
        BadArgs{"unwritableOutput", {"--template", "TEMPLATES", "-o", "DIR/no/such/folder/x.png"}, 1, "cannot write"}));

TEST_F(RenderCommandTest, WritesEveryFormatAtTheRequestedScale)
{
    for (const char *ext : {"png", "tif", "jpg", "webp"}) {
        const QString out = path(QStringLiteral("out.%1").arg(QLatin1String(ext)));
        const CliRun r = run({"--template", templates, photos[0], photos[1], "--scale", "3", "--background", "white",
                              "-o", out});
        ASSERT_EQ(r.code, 0) << ext << ": " << r.err.toStdString();
        QImageReader reader(out);
        reader.setDecideFormatFromContent(true);
        const QImage image = reader.read();
        ASSERT_FALSE(image.isNull()) << ext;
        EXPECT_EQ(image.size(), QSize(600, 300)) << ext;
        // Left tile red, right tile green, the gap between them white.
        EXPECT_GT(image.pixelColor(150, 150).red(), 200) << ext;
        EXPECT_GT(image.pixelColor(450, 150).green(), 200) << ext;
        EXPECT_GT(image.pixelColor(300, 150).blue(), 200) << ext;
        EXPECT_TRUE(r.out.contains(QStringLiteral("600 x 300 pixels, scale 3"))) << r.out.toStdString();
    }
}

// A 200 × 100 point collage on an A4 landscape page at 150 dpi (1754 × 1240 pixels with a
// 59-pixel margin): the collage is rendered 1636 × 818 for the PDF, and the picture is the page.
TEST_F(RenderCommandTest, PageAsPdfOrAsAPictureOfThePage)
{
    const QString pdf = path(QStringLiteral("page.pdf"));
    CliRun r = run({"--template", templates, photos[0], photos[1], "--background", "white", "--page", "A4,LANDSCAPE",
                    "--dpi", "150", "-o", pdf});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains(QStringLiteral("A4 landscape page, 841.9 x 595.3 points, 1754 x 1240 pixels at 150 dpi; "
                                              "the collage 1636 x 818 pixels")))
        << r.out.toStdString();

    const QString png = path(QStringLiteral("page.png"));
    r = run({"--template", templates, photos[0], photos[1], "--page", "a4,landscape", "--dpi", "150", "--margin", "0",
             "--fill", "-o", png});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QImage page(png);
    EXPECT_EQ(page.size(), QSize(1754, 1240));
    EXPECT_EQ(page.dotsPerMeterX(), 5906);
    EXPECT_GT(page.pixelColor(5, 620).red(), 200); // filled to the edge: red from the first tile
    EXPECT_GT(page.pixelColor(1748, 620).green(), 200);
    // (What the PDF holds is the page renderer's own test.)
    EXPECT_TRUE(QFileInfo(pdf).size() > 0);
}

TEST_F(RenderCommandTest, LayoutOnlyPrintsTheTileFramesForScripts)
{
    const CliRun r = run({"--template", templates + ":2", photos[0], "--align", "fit", "--transform", "3",
                          "--layout-only"});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QStringList lines = r.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 7);
    EXPECT_EQ(lines[0], QStringLiteral("collage\t100\t150\tRotated 90\u00BA Left"));
    const QStringList first = lines[1].split(QLatin1Char('\t'));
    ASSERT_EQ(first.size(), 8);
    EXPECT_EQ(first[0], QStringLiteral("tile"));
    EXPECT_EQ(first[6], QStringLiteral("3"));
    EXPECT_EQ(first[7], photos[0]);
    EXPECT_TRUE(lines[2].endsWith(QLatin1Char('\t'))); // a module without a photo names none
}

TEST_F(RenderCommandTest, SeededJumbleRepeatsAndKeepsTilesInside)
{
    const QStringList args{"--template", templates + ":2", "--layout-only"};
    const CliRun plain = run(args);
    const CliRun a = run(args + QStringList{"--jumble", "--seed", "42"});
    const CliRun b = run(args + QStringList{"--jumble", "--seed", "42"});
    ASSERT_EQ(a.code, 0) << a.err.toStdString();
    EXPECT_EQ(a.out, b.out);
    EXPECT_NE(a.out, plain.out);
    for (const QString &line : a.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList f = line.split(QLatin1Char('\t'));
        if (f[0] != QLatin1String("tile"))
            continue;
        // The 150 x 100 collage, up to the rounding of each centre.
        EXPECT_GE(f[2].toDouble(), -1.0) << line.toStdString();
        EXPECT_GE(f[3].toDouble(), -1.0) << line.toStdString();
        EXPECT_LE(f[2].toDouble() + f[4].toDouble(), 151.0) << line.toStdString();
        EXPECT_LE(f[3].toDouble() + f[5].toDouble(), 101.0) << line.toStdString();
    }
    EXPECT_EQ(run(args + QStringList{"--jumble", "--seed", "-1"}).code, 2);
}

// The tessary category's lines, as a terminal would show them.
QStringList g_tessaryLines;
void keepTessaryLine(QtMsgType, const QMessageLogContext &context, const QString &message)
{
    if (qstrcmp(context.category, "tessary") == 0)
        g_tessaryLines << message;
}

// The layout and render debugging lines (free memory, the scale chosen) only with --verbose:
// the program's start sets the logging rules from its arguments.
TEST_F(RenderCommandTest, DebuggingLinesOnlyWhenVerbose)
{
    for (const bool verbose : {false, true}) {
        std::vector<QByteArray> raw{"tessary-cli", "render", "--template", QFile::encodeName(templates),
                                    QFile::encodeName(photos[0]), "-o", QFile::encodeName(path("out.png"))};
        if (verbose)
            raw.push_back("--verbose");
        std::vector<const char *> argv;
        for (const QByteArray &a : raw)
            argv.push_back(a.constData());
        const CliArguments arguments(int(argv.size()), argv.data());
        QLoggingCategory::setFilterRules(arguments.loggingRules());
        EXPECT_TRUE(lcTessary().isWarningEnabled());
        g_tessaryLines.clear();
        const QtMessageHandler previous = qInstallMessageHandler(keepTessaryLine);
        QString out, err;
        CliContext context(&out, &err);
        const int code = arguments.dispatch(context);
        qInstallMessageHandler(previous);
        QLoggingCategory::setFilterRules(QString());
        EXPECT_EQ(code, 0) << err.toStdString();
        EXPECT_EQ(!g_tessaryLines.isEmpty(), verbose) << g_tessaryLines.join('\n').toStdString();
    }
}

TEST_F(RenderCommandTest, UnreadablePhotoIsNamedAndItsTileLeftEmpty)
{
    QFile bad(path("bad.jpg"));
    ASSERT_TRUE(bad.open(QIODevice::WriteOnly));
    bad.write("not a picture at all");
    bad.close();
    const QString out = path("out.png");
    const CliRun r = run({"--template", templates, bad.fileName(), photos[1], "--scale", "1", "-o", out});
    EXPECT_EQ(r.code, 3);
    EXPECT_TRUE(r.err.contains(QStringLiteral("bad.jpg"))) << r.err.toStdString();
    const QImage image(out);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.pixelColor(50, 50).alpha(), 0); // clear background where the photo would be
    EXPECT_GT(image.pixelColor(150, 50).green(), 200);
}

TEST_F(RenderCommandTest, RendersTheCurrentCollageOfTheStore)
{
    {
        UserDefaults defaults(path("defaults.sqlite"));
        const QVariantMap t = gridTemplate(3, 1, 40);
        for (const QString &key : {Preferences::ModuleSizeInPoints, Preferences::BorderWidth,
                                   Preferences::ContentSizeWidth, Preferences::ContentSizeHeight,
                                   Preferences::SavedTessaryDataModules})
            defaults.setObject(t.value(key), key);
        defaults.setObject(QVariantList(), Preferences::Bookmarks);
    }
    ASSERT_EQ(CliRun::of({"photos", "add", photos[2], photos[0]}).code, 0);
    const QString out = path("current.png");
    const CliRun r = run({"--scale", "2", "--background", "#000000", "-o", out});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QImage image(out);
    ASSERT_EQ(image.size(), QSize(240, 80));
    EXPECT_GT(image.pixelColor(40, 40).blue(), 200);  // the first stored photo
    EXPECT_GT(image.pixelColor(120, 40).red(), 200);  // the second
    EXPECT_EQ(image.pixelColor(200, 40), QColor(Qt::black)); // no third photo: background
}

// A saved collage document: its template, photos with alignments, transform and background;
// a photo that is gone is named and its tile left empty.
TEST_F(RenderCommandTest, RendersACollageDocument)
{
    CollageDocument doc;
    doc.templateData = gridTemplate(3, 1, 40);
    doc.setPhotos({photos[0], path("gone.jpg"), photos[2]}, {0, 0, 3});
    doc.coordinateTransform = 1; // flipped horizontally: the first photo ends up on the right
    doc.backgroundColor = Qt::black;
    const QString file = path("c.tessary");
    ASSERT_TRUE(doc.write(file));
    const QString out = path("collage.png");
    const CliRun r = run({"--collage", file, "--scale", "2", "-o", out});
    EXPECT_EQ(r.code, 3) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains(QStringLiteral("gone.jpg"))) << r.err.toStdString();
    const QImage image(out);
    ASSERT_EQ(image.size(), QSize(240, 80));
    EXPECT_GT(image.pixelColor(200, 40).red(), 200);  // photo 0, flipped to the right
    EXPECT_GT(image.pixelColor(40, 40).blue(), 200);  // photo 2, on the left
    EXPECT_EQ(image.pixelColor(120, 40).rgb(), QColor(Qt::black).rgb()); // the gone photo's tile
    EXPECT_EQ(image.pixelColor(1, 1).rgb(), QColor(Qt::black).rgb());     // the document's background
}

} // namespace

#include "foundation/KeyedArchiveColor.h"
#include "model/TessaryData.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

TEST(TessaryData, NumbersAreReadByTheirValueWhateverTheirType)
{
    struct Case {
        const char *name;
        QVariantMap dict;
        qint64 width, height;
        double alpha, border, corner;
        bool empty;
    };
    const std::vector<Case> cases{
        {"nothing stored", {}, 0, 0, 1.0, 0, 0, false},
        {"integers and reals", {{"widthFactor", qint64(3)}, {"heightFactor", 2.0}, {"alpha", 0.35}, {"borderWidth", 0.1}, {"cornerRadius", qint64(1)}, {"empty", true}},
         3, 2, double(0.35f), double(0.1f), 1.0, true},
        {"reals truncate to whole cells", {{"widthFactor", 2.9}, {"heightFactor", -1.5}}, 2, -1, 1.0, 0, 0, false},
        {"booleans as numbers", {{"widthFactor", true}, {"empty", qint64(0)}}, 1, 0, 1.0, 0, 0, false},
        {"numbers as text", {{"widthFactor", QStringLiteral("4")}, {"alpha", QStringLiteral("0.5")}}, 4, 0, 0.5, 0, 0, false},
        {"wrong types read as zero", {{"widthFactor", QVariantList{}}, {"alpha", QByteArray("x")}}, 0, 0, 0.0, 0, 0, false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const TessaryData m = TessaryData::initWithDictionary(c.dict);
        EXPECT_EQ(m.widthFactor(), c.width);
        EXPECT_EQ(m.heightFactor(), c.height);
        EXPECT_EQ(m.tileAlpha(), c.alpha); // exactly the single-precision value widened
        EXPECT_EQ(m.tileBorderWidth(), c.border);
        EXPECT_EQ(m.tileCornerRadius(), c.corner);
        EXPECT_EQ(m.empty(), c.empty);
    }
}

TEST(TessaryData, BorderColourComesFromTheArchiveOrStaysWhite)
{
    const QColor red = QColor::fromRgbF(1, 0, 0);
    EXPECT_EQ(TessaryData::initWithDictionary({{"borderColor", KeyedArchiveColor::encode(red)}}).borderColorOrWhite(), red);
    EXPECT_EQ(TessaryData::initWithDictionary({{"borderColor", QByteArray("junk")}}).borderColorOrWhite(), QColor(Qt::white));
    EXPECT_EQ(TessaryData::initWithDictionary({{"borderColor", QStringLiteral("red")}}).borderColorOrWhite(), QColor(Qt::white));
}

TEST(TessaryData, ResetKeepsTitleFileNameAndEmptyFlag)
{
    TessaryData m = TessaryData::initWithDictionary({{"title", QStringLiteral("Sea")}, {"imageFilename", QStringLiteral("a.png")},
                                                     {"empty", true}, {"widthFactor", qint64(5)}, {"alpha", 0.2},
                                                     {"borderColor", KeyedArchiveColor::encode(Qt::blue)}});
    m.resetModule();
    EXPECT_EQ(m.title(), QStringLiteral("Sea"));
    EXPECT_EQ(m.imageFilename(), QStringLiteral("a.png"));
    EXPECT_TRUE(m.empty());
    EXPECT_EQ(m.widthFactor(), 2);
    EXPECT_EQ(m.heightFactor(), 2);
    EXPECT_EQ(m.tileAlpha(), 1.0);
    EXPECT_EQ(m.borderColorOrWhite(), QColor(Qt::white));
}

TEST(TessaryData, DefaultModulesGetFreshPngNames)
{
    const TessaryData a = TessaryData::initDefault();
    const TessaryData b = TessaryData::initDefault();
    EXPECT_NE(a.imageFilename(), b.imageFilename());
    const QRegularExpression form(QStringLiteral("^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\.png$"));
    EXPECT_TRUE(form.match(a.imageFilename()).hasMatch()) << a.imageFilename().toStdString();
    EXPECT_EQ(a.widthFactor(), 2);
    EXPECT_EQ(a.heightFactor(), 2);
    EXPECT_EQ(a.title(), QString(QLatin1String("")));
    EXPECT_FALSE(a.title().isNull());
    EXPECT_EQ(a.borderColorOrWhite(), QColor(Qt::white));
}

TEST(TessaryData, CopiesShareTheColourAndDictionariesRoundTrip)
{
    const TessaryData source = TessaryData::initWithDictionary({{"borderColor", KeyedArchiveColor::encode(Qt::green)}, {"title", QStringLiteral("t")}});
    const TessaryData copy = TessaryData::initWithModule(source);
    EXPECT_EQ(copy.tileBorderColor().get(), source.tileBorderColor().get());

    TessaryData m = TessaryData::initDefault();
    m.setTitle(QStringLiteral("Harbour"));
    m.setWidthFactor(3);
    m.setTileAlpha(double(0.8f));
    m.setTileCornerRadius(double(0.25f));
    m.setTileBorderColor(QColor::fromRgbF(0.5f, 0.25f, 0, 1));
    const TessaryData back = TessaryData::initWithDictionary(m.dictionaryRepresentation());
    EXPECT_EQ(back.title(), m.title());
    EXPECT_EQ(back.imageFilename(), m.imageFilename());
    EXPECT_EQ(back.widthFactor(), 3);
    EXPECT_EQ(back.tileAlpha(), m.tileAlpha());
    EXPECT_EQ(back.tileCornerRadius(), m.tileCornerRadius());
    EXPECT_NEAR(back.borderColorOrWhite().redF(), 0.5, 1e-3);
}

} // namespace

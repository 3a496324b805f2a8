#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QPointF>

#include <gtest/gtest.h>

#include <functional>

namespace {

class UserDefaultsTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path() const { return dir.filePath(QStringLiteral("defaults.sqlite")); }
};

TEST_F(UserDefaultsTest, AbsentKeysAndRemovalAndTypedReaders)
{
    UserDefaults d(path());
    EXPECT_FALSE(d.objectForKey(QStringLiteral("missing")).isValid());
    EXPECT_EQ(d.integerForKey(QStringLiteral("missing")), 0);
    EXPECT_FALSE(d.boolForKey(QStringLiteral("missing")));
    d.setObject(QStringLiteral("42"), QStringLiteral("text"));
    d.setObject(2.9, QStringLiteral("real"));
    EXPECT_EQ(d.integerForKey(QStringLiteral("text")), 42); // numbers stored as text read as numbers
    EXPECT_EQ(d.integerForKey(QStringLiteral("real")), 2);  // integer readings truncate
    EXPECT_TRUE(d.arrayForKey(QStringLiteral("text")).isEmpty()); // wrong type reads empty
    ASSERT_TRUE(d.removeObject(QStringLiteral("text")));
    EXPECT_FALSE(d.hasObject(QStringLiteral("text")));
    ASSERT_TRUE(d.setObject(QVariant(), QStringLiteral("real"))); // invalid removes
    EXPECT_FALSE(d.hasObject(QStringLiteral("real")));
}

// A dictionary kept one row per entry is written entry by entry, all or nothing, and every
// other reader sees one dictionary under its key; a whole value written under the key replaces
// the rows, and splitting turns it into rows again.
TEST_F(UserDefaultsTest, DictionariesKeptAsRowsReadAsOneDictionary)
{
    UserDefaults d(path());
    const QString key = QStringLiteral("image cache");
    const auto entry = [](qint64 n) { return QVariantMap{{QStringLiteral("n"), n}}; };
    ASSERT_TRUE(d.setEntriesForKey(key, {{QStringLiteral("a"), entry(1)}, {QStringLiteral("b"), entry(2)}}, {}));
    ASSERT_TRUE(d.setEntriesForKey(key, {{QStringLiteral("c"), entry(3)}}, {QStringLiteral("a")}));
    EXPECT_FALSE(d.setEntriesForKey(key, {{QStringLiteral("d"), entry(4)}, {QStringLiteral("e"), QVariant::fromValue(QPointF(1, 1))}},
                                    {QStringLiteral("b")}));
    const QVariantMap rows{{QStringLiteral("b"), entry(2)}, {QStringLiteral("c"), entry(3)}};
    EXPECT_EQ(d.objectForKey(key), rows) << "the failed write changed nothing";
    EXPECT_EQ(d.dictionaryRepresentation(), (QVariantMap{{key, rows}}));
    EXPECT_EQ(d.entriesForKey(key, {QStringLiteral("c"), QStringLiteral("x")}), (QVariantMap{{QStringLiteral("c"), entry(3)}}));
    EXPECT_EQ(UserDefaults::entriesInFile(path(), key, {QStringLiteral("b")}), (QVariantMap{{QStringLiteral("b"), entry(2)}}));

    const QVariantMap whole{{QStringLiteral("w"), entry(5)}};
    ASSERT_TRUE(d.setObject(whole, key));
    EXPECT_EQ(d.objectForKey(key), whole);
    EXPECT_TRUE(d.entrySizesForKey(key).isEmpty());
    ASSERT_TRUE(d.splitIntoEntries(key));
    EXPECT_EQ(d.entrySizesForKey(key).keys(), QList<QString>{QStringLiteral("w")});
    EXPECT_EQ(d.objectForKey(key), whole);
    ASSERT_TRUE(d.removeObject(key));
    EXPECT_FALSE(d.hasObject(key));
    EXPECT_TRUE(d.allKeys().isEmpty());
}

TEST_F(UserDefaultsTest, DamagedStoresAreMovedAsideAndReplaced)
{
    const std::vector<std::pair<const char *, std::function<void(const QString &)>>> damages{
        {"not a database", [](const QString &p) {
             QFile f(p);
             f.open(QIODevice::WriteOnly);
             f.write("this is not an SQLite database, just some text that happens to be here\n");
         }},
        {"header intact, pages overwritten", [this](const QString &p) {
             {
                 UserDefaults d(p);
                 for (int i = 0; i < 200; ++i)
                     d.setObject(QByteArray(500, 'x'), QStringLiteral("k%1").arg(i));
             }
             QFile f(p);
             f.open(QIODevice::ReadWrite);
             f.seek(4096);
             f.write(QByteArray(8192, '\x5a'));
         }},
    };
    for (const auto &[name, damage] : damages) {
        SCOPED_TRACE(name);
        QTemporaryDir local;
        const QString p = local.filePath(QStringLiteral("defaults.sqlite"));
        damage(p);
        UserDefaults d(p);
        ASSERT_TRUE(d.isOpen()) << d.errorString().toStdString();
        ASSERT_FALSE(d.movedAsidePath().isEmpty());
        EXPECT_TRUE(QFile::exists(d.movedAsidePath()));
        EXPECT_TRUE(d.movedAsidePath().contains(QStringLiteral(".damaged-")));
        EXPECT_TRUE(d.allKeys().isEmpty());
        EXPECT_TRUE(d.setInteger(5, QStringLiteral("fresh")));
        UserDefaults again(p);
        EXPECT_TRUE(again.movedAsidePath().isEmpty());
        EXPECT_EQ(again.integerForKey(QStringLiteral("fresh")), 5);
    }
}

TEST_F(UserDefaultsTest, UnwritableLocationIsAClearError)
{
    QFile blocker(dir.filePath(QStringLiteral("file")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    UserDefaults d(dir.filePath(QStringLiteral("file/sub/defaults.sqlite")));
    EXPECT_FALSE(d.isOpen());
    EXPECT_TRUE(d.errorString().contains(QStringLiteral("file/sub"))) << d.errorString().toStdString();
    EXPECT_FALSE(d.setInteger(1, QStringLiteral("x")));
    EXPECT_FALSE(d.errorString().isEmpty());
}

TEST_F(UserDefaultsTest, EnvironmentNamesTheStore)
{
    qputenv("TESSARY_DEFAULTS", path().toLocal8Bit());
    EXPECT_EQ(UserDefaults::defaultFilePath(), path());
    qunsetenv("TESSARY_DEFAULTS");
    EXPECT_TRUE(UserDefaults::defaultFilePath().endsWith(QStringLiteral("/tessary/defaults.sqlite")));
}

TEST_F(UserDefaultsTest, PreferenceFallbacksAndStoredValues)
{
    UserDefaults d(path());
    Preferences p(d);
    struct Case {
        const char *key;
        std::function<double()> read;
        double absent;
        QVariant stored;
        double whenStored;
    };
    const std::vector<Case> cases{
        {"CollageWidthIncrement", [&] { return p.collageWidthIncrement(); }, 5, qint64(0), 0},
        {"CollageHeightIncrement", [&] { return p.collageHeightIncrement(); }, 5, qint64(12), 12},
        {"MegapixelLimit", [&] { return p.megapixelLimit(); }, 1, false, 0},
        {"InsetByCropping", [&] { return p.insetByCropping(); }, 1, false, 0},
        {"AlwaysZoomToFit", [&] { return p.alwaysZoomToFit(); }, 1, false, 0},
        {"UniformlyCrop", [&] { return p.uniformlyCrop(); }, 1, false, 0},
        {"UniformlyCropFit", [&] { return p.uniformlyCropFit(); }, 1, false, 0},
        {"DoNotShowWelcomeWindowAgain", [&] { return p.doNotShowWelcomeWindowAgain(); }, 0, true, 1},
        {"DontShowAgain", [&] { return p.dontShowAgain(); }, 0, true, 1},
        {"AutoOpenStitchedImageFile", [&] { return p.autoOpenStitchedImageFile(); }, 0, true, 1},
        {"RenderEmptyTiles", [&] { return p.renderEmptyTiles(); }, 0, true, 1},
        {"MatchingMarginWidth", [&] { return p.matchingMarginWidth(); }, 0, 0.35, double(0.35f)},
        {"IconSize", [&] { return p.iconSize(); }, 0, 0.5, 0.5},
        {"SelectedTemplateTableRow", [&] { return double(p.selectedTemplateTableRow()); }, 297, qint64(-1), -1},
        {"SelectedUserTemplateTableRow", [&] { return double(p.selectedUserTemplateTableRow()); }, 0, qint64(4), 4},
        {"moduleSizeInPoints", [&] { return double(p.moduleSizeInPoints()); }, 0, 104.0, 104},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.key);
        const QString key = QString::fromLatin1(c.key);
        d.removeObject(key);
        EXPECT_DOUBLE_EQ(c.read(), c.absent);
        d.setObject(c.stored, key);
        EXPECT_DOUBLE_EQ(c.read(), c.whenStored);
    }
}

TEST_F(UserDefaultsTest, ResetWritesTheEightValuesAndLeavesTheRest)
{
    UserDefaults d(path());
    Preferences p(d);
    d.setBool(false, Preferences::AlwaysZoomToFit);
    d.setDouble(7.5, Preferences::MatchingMarginWidth);
    d.setBool(true, Preferences::CropResult);
    ASSERT_TRUE(p.resetPreferences());
    EXPECT_EQ(p.matchingMarginWidth(), 0.0f);
    EXPECT_EQ(d.objectForKey(Preferences::MatchingMarginWidth).typeId(), QMetaType::LongLong);
    EXPECT_EQ(p.blendingMarginWidth(), 50);
    EXPECT_EQ(p.inputImageScaling(), 100);
    EXPECT_FALSE(p.cropResult());
    EXPECT_TRUE(p.megapixelLimit());
    EXPECT_FALSE(p.alwaysZoomToFit());
}

TEST_F(UserDefaultsTest, PresenceKeysAndBackgroundColour)
{
    UserDefaults d(path());
    Preferences p(d);
    EXPECT_TRUE(p.markPresent(Preferences::FirstRun));
    EXPECT_FALSE(p.markPresent(Preferences::FirstRun));
    EXPECT_EQ(d.objectForKey(Preferences::FirstRun), QVariant(false));

    EXPECT_EQ(p.tessaryBackgroundColor().alpha(), 0); // clear until one is stored
    const QColor chosen = QColor::fromRgbF(0.2f, 0.4f, 0.6f, 0.8f);
    ASSERT_TRUE(p.setTessaryBackgroundColor(chosen));
    UserDefaults reopened(path());
    const QColor back = Preferences(reopened).tessaryBackgroundColor();
    EXPECT_NEAR(back.redF(), 0.2, 1e-3);
    EXPECT_NEAR(back.alphaF(), 0.8, 1e-3);
    d.setObject(QByteArray("garbage"), Preferences::TessaryBackgroundColor);
    EXPECT_EQ(p.tessaryBackgroundColor().alpha(), 0);
}

// The image cache stores about 100 MB under one key; the store must give such a value back,
// though property lists from outside are capped far lower.
TEST(UserDefaultsLargeValues, ValuesBeyondTheOutsideCapReadBack)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("defaults.sqlite"));
    QVariantMap record;
    for (int i = 0; i < 40; ++i)
        record.insert(QStringLiteral("/photos/%1.jpg").arg(i), QByteArray(2 * 1024 * 1024, char('a' + i % 26)));
    {
        UserDefaults d(path);
        ASSERT_TRUE(d.setObject(record, QStringLiteral("image cache"))) << d.errorString().toStdString();
    }
    UserDefaults d(path);
    const QVariantMap back = d.dictionaryForKey(QStringLiteral("image cache"));
    ASSERT_EQ(back.size(), 40);
    EXPECT_EQ(back, record);
}

} // namespace

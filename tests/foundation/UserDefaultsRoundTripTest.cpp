#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"

#include <QDateTime>
#include <QTemporaryDir>
#include <QTimeZone>

#include <gtest/gtest.h>

#include <limits>

namespace {

struct Value {
    const char *name;
    QVariant value;
    // What an XML export gives back, when not the value itself.
    QVariant exported = {};
};

QString text(const char16_t *utf16)
{
    return QString::fromUtf16(utf16);
}

// Every kind of value the store keeps, with the edges of each kind.
const std::vector<Value> &everyValue()
{
    static const std::vector<Value> values{
        {"empty string", QString()},
        {"plain string", QStringLiteral("Image Browser Seletion")},
        {"tab, newline and carriage return", QStringLiteral("a\tb\nc\rd\r\ne")},
        {"markup characters", QStringLiteral("<key>&amp;</key> \"quoted\" 'single' ]]>")},
        {"non-ASCII and outside the basic plane", text(u"caf\u00e9 \u65e5\u672c \U0001F600 \uE000 \uFFFD")},
        {"spaces at both ends", QStringLiteral("  padded  ")},
        {"zero", qint64(0)},
        {"negative integer", qint64(-12)},
        {"largest integer", std::numeric_limits<qint64>::max()},
        {"smallest integer", std::numeric_limits<qint64>::min()},
        {"real", 3.25},
        {"negative real with a fraction", -0.1},
        {"huge real", 1.0e300},
        {"tiny real", 4.9e-324},
        {"true", true},
        {"false", false},
        {"empty data", QByteArray()},
        {"data with every byte", [] {
             QByteArray all;
             for (int i = 0; i < 256; ++i)
                 all.append(char(i));
             return QVariant(all);
         }()},
        {"date", QDateTime(QDate(2025, 6, 1), QTime(8, 30, 15), QTimeZone::utc())},
        // XML property lists write dates to the second (README, "Where Tessary keeps its data").
        {"date with milliseconds", QDateTime(QDate(2025, 6, 1), QTime(8, 30, 15, 250), QTimeZone::utc()),
         QDateTime(QDate(2025, 6, 1), QTime(8, 30, 15), QTimeZone::utc())},
        {"date before 2001", QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59), QTimeZone::utc())},
        {"empty array", QVariantList{}},
        {"empty dictionary", QVariantMap{}},
        {"nested containers", QVariantMap{{QStringLiteral("list"), QVariantList{qint64(1), QVariantMap{{QStringLiteral("x"), QVariantList{}}}}},
                                          {QStringLiteral(""), QStringLiteral("empty key")},
                                          {text(u"cl\u00e9 \U0001F600"), QByteArray("\0\1", 2)}}},
        {"repeated values", QVariantList{qint64(7), qint64(7), qint64(7), QStringLiteral("same"), QStringLiteral("same")}},
    };
    return values;
}

class UserDefaultsRoundTrip : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path(const char *name) const { return dir.filePath(QString::fromLatin1(name)); }
};

// Each value goes into the store, comes back after reopening, is exported as XML and imported
// into a fresh store, and comes back unchanged again: a backup always restores.
TEST_F(UserDefaultsRoundTrip, EveryValueSurvivesTheStoreAndExportAndImport)
{
    {
        UserDefaults d(path("first.sqlite"));
        for (const Value &v : everyValue())
            ASSERT_TRUE(d.setObject(v.value, QString::fromLatin1(v.name))) << v.name << ": " << d.errorString().toStdString();
    }
    UserDefaults first(path("first.sqlite"));
    for (const Value &v : everyValue())
        EXPECT_EQ(first.objectForKey(QString::fromLatin1(v.name)), v.value) << "store: " << v.name;

    QString error;
    const QByteArray xml = PropertyList::toXml(first.dictionaryRepresentation(), &error);
    ASSERT_FALSE(xml.isEmpty()) << error.toStdString();
    const PropertyList::ReadResult back = PropertyList::fromBytes(xml, QStringLiteral("export"));
    ASSERT_TRUE(back.ok()) << back.error.toStdString();
    UserDefaults second(path("second.sqlite"));
    ASSERT_TRUE(second.setValuesForKeys(back.value.toMap())) << second.errorString().toStdString();
    for (const Value &v : everyValue()) {
        const QVariant restored = second.objectForKey(QString::fromLatin1(v.name));
        const QVariant expected = v.exported.isValid() ? v.exported : v.value;
        EXPECT_EQ(restored, expected) << "export and import: " << v.name;
        EXPECT_EQ(restored.typeId(), expected.typeId()) << "export and import: " << v.name;
    }
}

// Characters that XML 1.0 cannot carry are refused on the way in, wherever they hide, with a
// message that names the key and says what is wrong; nothing of a refused import is stored.
TEST_F(UserDefaultsRoundTrip, CharactersXmlCannotCarryAreRefused)
{
    const QString nul(QChar(0));
    const struct {
        const char *name;
        QString key;
        QVariant value;
    } cases[] = {
        {"NUL in the key", QStringLiteral("bad") + nul + QStringLiteral("key"), qint64(1)},
        {"U+0001 in a string", QStringLiteral("string"), QStringLiteral("a\u0001b")},
        {"escape in a nested string", QStringLiteral("nested"), QVariantMap{{QStringLiteral("l"), QVariantList{QStringLiteral("x\u001by")}}}},
        {"control character in a nested key", QStringLiteral("nested key"), QVariantMap{{QStringLiteral("k\u0008"), qint64(1)}}},
        {"U+FFFE", QStringLiteral("noncharacter"), QString(QChar(0xFFFE))},
        {"lone surrogate", QStringLiteral("surrogate"), QString(QChar(0xD800))},
    };
    UserDefaults d(path("refuse.sqlite"));
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_FALSE(d.setObject(c.value, c.key));
        EXPECT_TRUE(d.errorString().contains(QStringLiteral("XML"))) << d.errorString().toStdString();
        EXPECT_FALSE(d.setValuesForKeys({{QStringLiteral("fine"), qint64(1)}, {c.key, c.value}}));
        EXPECT_TRUE(d.allKeys().isEmpty());
    }
}

} // namespace

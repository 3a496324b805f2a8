#include "foundation/PlistUid.h"
#include "foundation/PropertyList.h"
#include "support/PlistDiff.h"

#include <QDateTime>
#include <QFile>
#include <QPointF>
#include <QTemporaryDir>
#include <QTimeZone>

#include <gtest/gtest.h>

#include <limits>

namespace {

QVariantMap everyType()
{
    return QVariantMap{
        {QStringLiteral("string"), QStringLiteral("Grüße, \"quoted\" <tag> & more")},
        {QStringLiteral("empty string"), QString(QLatin1String(""))},
        {QStringLiteral("integer"), qint64(42)},
        {QStringLiteral("negative"), qint64(-7)},
        {QStringLiteral("large"), qint64(1) << 40},
        {QStringLiteral("smallest"), std::numeric_limits<qint64>::min()},
        {QStringLiteral("unsigned"), std::numeric_limits<quint64>::max()},
        {QStringLiteral("real"), 0.35},
        {QStringLiteral("whole real"), 2.0},
        {QStringLiteral("true"), true},
        {QStringLiteral("false"), false},
        {QStringLiteral("data"), QByteArray("\x00\x01\xff binary", 11)},
        {QStringLiteral("date"), QDateTime(QDate(2024, 2, 29), QTime(13, 14, 15), QTimeZone::utc())},
        {QStringLiteral("array"), QVariantList{qint64(1), 1.5, QStringLiteral("x"), QVariantList{}, QVariantMap{}}},
        {QStringLiteral("dict"), QVariantMap{{QStringLiteral("nested"), QVariantMap{{QStringLiteral("k"), qint64(3)}}}}},
    };
}

// Random trees of every type read back from bytes in the differential tests; here through files.
TEST(PropertyList, EveryTypeRoundTripsThroughFilesInBothFormats)
{
    QTemporaryDir dir;
    for (auto format : {PropertyList::Format::Xml, PropertyList::Format::Binary}) {
        SCOPED_TRACE(format == PropertyList::Format::Xml ? "xml" : "binary");
        const QString path = dir.filePath(QStringLiteral("f.plist"));
        QString error;
        ASSERT_TRUE(PropertyList::writeFile(path, everyType(), format, &error)) << error.toStdString();
        const auto fromFile = PropertyList::fromFile(path);
        ASSERT_TRUE(fromFile.ok()) << fromFile.error.toStdString();
        const QString fileDiff = PlistDiff::between(everyType(), fromFile.value);
        EXPECT_TRUE(fileDiff.isEmpty()) << fileDiff.toStdString();
    }
}

TEST(PropertyList, HandWrittenXmlKeepsIntegerAndRealApart)
{
    const QByteArray xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\"><dict><key>i</key><integer>2</integer><key>r</key><real>2</real>"
        "<key>uid</key><dict><key>CF$UID</key><integer>3</integer></dict></dict></plist>";
    const auto r = PropertyList::fromBytes(xml, QStringLiteral("hand"));
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    const QVariantMap m = r.value.toMap();
    EXPECT_EQ(m.value(QStringLiteral("i")).typeId(), QMetaType::LongLong);
    EXPECT_EQ(m.value(QStringLiteral("r")).typeId(), QMetaType::Double);
}

TEST(PropertyList, XmlDatesReadAsUtcAndMalformedOnesAreRefused)
{
    const QDateTime noon(QDate(2024, 2, 29), QTime(13, 14, 15), QTimeZone::utc());
    const std::vector<std::pair<const char *, QDateTime>> cases{
        {"2024-02-29T13:14:15Z", noon},
        {" 2024-02-29T13:14:15.250Z ", noon.addMSecs(250)},
        {"2024-02-29T15:14:15+02:00", noon},
        {"2024-02-29T13:14:15", noon}, // no zone: UTC
        {"2024-02-29", noon.addSecs(-(13 * 3600 + 14 * 60 + 15))},
        {"1970-01,01T00:00:01Z", {}},
        {"2024-2-29T13:14:15Z", {}},
        {"garbage", {}},
        {"", {}},
    };
    for (const auto &[text, expected] : cases) {
        SCOPED_TRACE(text);
        const auto r = PropertyList::fromBytes(QByteArray("<plist><date>") + text + "</date></plist>", QStringLiteral("date"));
        ASSERT_EQ(r.ok(), expected.isValid()) << r.error.toStdString();
        if (expected.isValid()) {
            EXPECT_EQ(r.value.toDateTime().toMSecsSinceEpoch(), expected.toMSecsSinceEpoch());
        }
    }
}

struct BadInput {
    const char *name;
    QByteArray bytes;
};

TEST(PropertyList, MalformedInputsGiveErrorsNamingTheSource)
{
    const QByteArray good = PropertyList::toBinary(everyType());
    const QByteArray goodXml = PropertyList::toXml(everyType());
    QByteArray deepXml = "<plist version=\"1.0\">";
    for (int i = 0; i < 100000; ++i)
        deepXml += "<array>";
    const std::vector<BadInput> cases{
        {"empty", QByteArray()},
        {"text", QByteArray("hello, world")},
        {"binary magic only", QByteArray("bplist00")},
        {"truncated binary", good.left(good.size() / 2)},
        {"binary with broken trailer", good.left(good.size() - 8) + QByteArray(8, '\xff')},
        {"truncated xml", goodXml.left(goodXml.size() / 2)},
        {"unclosed xml tags", deepXml},
        {"wrong closing tag", QByteArray("<plist><dict><key>a</key><string>x</dict></plist>")},
        // With a DOCTYPE an undeclared entity is no XML error; it must not vanish from the text.
        {"unknown entity", QByteArray("<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">"
                                      "<plist><string>a&unknown;b</string></plist>")},
        {"element inside text", QByteArray("<plist><string>a<b/>c</string></plist>")},
    };
    for (const BadInput &c : cases) {
        SCOPED_TRACE(c.name);
        const auto r = PropertyList::fromBytes(c.bytes, QStringLiteral("input.plist"));
        ASSERT_FALSE(r.ok());
        EXPECT_TRUE(r.error.startsWith(QStringLiteral("input.plist: "))) << r.error.toStdString();
    }
}

QVariant nested(int levels)
{
    QVariant v = qint64(1);
    for (int i = 0; i < levels; ++i)
        v = QVariantList{v};
    return v;
}

TEST(PropertyList, NestingUpToTheLimitReadsInBothFormatsAndDeeperIsRefused)
{
    // The limit is on the tree, the same in both formats: <plist> is no level of nesting.
    for (auto format : {PropertyList::Format::Xml, PropertyList::Format::Binary}) {
        SCOPED_TRACE(format == PropertyList::Format::Xml ? "xml" : "binary");
        const QByteArray atLimit = PropertyList::toBytes(nested(PropertyList::kMaxDepth), format);
        const auto r = PropertyList::fromBytes(atLimit, QStringLiteral("deep"));
        ASSERT_TRUE(r.ok()) << r.error.toStdString();
        EXPECT_EQ(r.value, nested(PropertyList::kMaxDepth));
        QString error;
        EXPECT_TRUE(PropertyList::toBytes(nested(PropertyList::kMaxDepth + 1), format, &error).isEmpty());
        EXPECT_TRUE(error.contains(QStringLiteral("nested"))) << error.toStdString();
    }
    QByteArray xml = "<plist version=\"1.0\">";
    for (int i = 0; i < 2000; ++i)
        xml += "<array>";
    for (int i = 0; i < 2000; ++i)
        xml += "</array>";
    xml += "</plist>";
    const auto r = PropertyList::fromBytes(xml, QStringLiteral("deep.plist"));
    EXPECT_FALSE(r.ok());
    EXPECT_TRUE(r.error.contains(QStringLiteral("nested"))) << r.error.toStdString();
}

TEST(PropertyList, OversizedInputIsRefusedBeforeParsing)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("huge.plist"));
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    ASSERT_TRUE(f.resize(PropertyList::kMaxInputBytes + 1)); // sparse: costs no disk
    f.close();
    const auto r = PropertyList::fromFile(path);
    ASSERT_FALSE(r.ok());
    EXPECT_TRUE(r.error.contains(QStringLiteral("too large"))) << r.error.toStdString();
    EXPECT_TRUE(r.error.startsWith(path));
}

TEST(PropertyList, MissingFilesAndFoldersAreErrors)
{
    QTemporaryDir dir;
    EXPECT_FALSE(PropertyList::fromFile(dir.filePath(QStringLiteral("none.plist"))).ok());
    EXPECT_FALSE(PropertyList::fromFile(dir.path()).ok());
    QString error;
    EXPECT_FALSE(PropertyList::writeFile(dir.filePath(QStringLiteral("no/such/folder/x.plist")), QVariantMap{}, PropertyList::Format::Xml, &error));
    EXPECT_FALSE(error.isEmpty());
}

TEST(PropertyList, ValuesAPropertyListCannotHoldAreRefused)
{
    QString error;
    EXPECT_TRUE(PropertyList::toXml(QVariant(), &error).isEmpty());
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(PropertyList::toXml(QVariantMap{{QStringLiteral("p"), QPointF(1, 2)}}, &error).isEmpty());
    // libplist would cut a keyed-archive reference above 32 bits short.
    error.clear();
    EXPECT_TRUE(PropertyList::toBinary(QVariant::fromValue(PlistUid{quint64(1) << 32}), &error).isEmpty());
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(PropertyList::toBinary(QVariant::fromValue(PlistUid{0xFFFFFFFFu})).isEmpty());
}

} // namespace

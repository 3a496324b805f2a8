#include "foundation/KeyedArchiveNumber.h"
#include "foundation/PlistUid.h"
#include "foundation/PropertyList.h"

#include <gtest/gtest.h>

namespace {

// Numbers written as an archive read back unchanged, and the archive is a real keyed archive.
TEST(KeyedArchiveNumber, RoundTrips)
{
    for (const qint64 n : {qint64(0), qint64(4), qint64(-1), qint64(1) << 40}) {
        const QByteArray data = KeyedArchiveNumber::encode(n);
        ASSERT_TRUE(data.startsWith("bplist00")) << n;
        EXPECT_EQ(KeyedArchiveNumber::decode(data), n) << n;
        const QVariantMap map = PropertyList::fromBytes(data, QStringLiteral("test")).value.toMap();
        EXPECT_EQ(map.value(QStringLiteral("$archiver")).toString(), QStringLiteral("NSKeyedArchiver"));
    }
}

QByteArray archiveWith(const QVariant &root, const QVariantList &objects)
{
    const QVariantMap map{{QStringLiteral("$top"), QVariantMap{{QStringLiteral("root"), root}}},
                          {QStringLiteral("$objects"), objects}};
    return PropertyList::toBinary(map);
}

// Whatever else lands on the pasteboard under the type reads as no number.
TEST(KeyedArchiveNumber, RefusesOtherData)
{
    const QVariant uid1 = QVariant::fromValue(PlistUid{1});
    const struct {
        const char *name;
        QByteArray data;
    } cases[] = {
        {"empty", QByteArray()},
        {"garbage", QByteArray("not a plist")},
        {"root is a plain integer", archiveWith(qint64(1), {QStringLiteral("$null"), qint64(3)})},
        {"reference past the objects", archiveWith(QVariant::fromValue(PlistUid{5}), {QStringLiteral("$null")})},
        {"root is text", archiveWith(uid1, {QStringLiteral("$null"), QStringLiteral("3")})},
        {"root is a real", archiveWith(uid1, {QStringLiteral("$null"), 2.5})},
        {"not a dictionary", PropertyList::toBinary(QVariantList{qint64(1)})},
    };
    for (const auto &c : cases)
        EXPECT_FALSE(KeyedArchiveNumber::decode(c.data).has_value()) << c.name;
}

} // namespace

#include "foundation/KeyedArchiveColor.h"
#include "foundation/PlistUid.h"
#include "foundation/PropertyList.h"

#include <gtest/gtest.h>

namespace {

QVariant uid(quint64 n)
{
    return QVariant::fromValue(PlistUid{n});
}

QVariantMap classObject(const QString &name)
{
    return {{QStringLiteral("$classname"), name}, {QStringLiteral("$classes"), QVariantList{name, QStringLiteral("NSObject")}}};
}

// A keyed archive whose root is objects[1]; the class record is appended at the end.
QByteArray archive(QVariantList colours, const QString &className = QStringLiteral("NSColor"),
                   PropertyList::Format format = PropertyList::Format::Binary)
{
    QVariantList objects{QStringLiteral("$null")};
    const quint64 classIndex = quint64(colours.size()) + 1;
    for (QVariant &c : colours) {
        QVariantMap m = c.toMap();
        m.insert(QStringLiteral("$class"), uid(classIndex));
        objects.append(m);
    }
    objects.append(classObject(className));
    const QVariantMap root{{QStringLiteral("$archiver"), QStringLiteral("NSKeyedArchiver")},
                           {QStringLiteral("$version"), qint64(100000)},
                           {QStringLiteral("$top"), QVariantMap{{QStringLiteral("root"), uid(1)}}},
                           {QStringLiteral("$objects"), objects}};
    return PropertyList::toBytes(root, format);
}

QVariantMap desktop(int space, const char *key, const char *text)
{
    return {{QStringLiteral("NSColorSpace"), qint64(space)}, {QString::fromLatin1(key), QByteArray(text, int(qstrlen(text)) + 1)}};
}

struct Decodes {
    const char *name;
    QByteArray archive;
    QColor expected;
};

void expectColor(const QColor &actual, const QColor &expected)
{
    EXPECT_NEAR(actual.redF(), expected.redF(), 0.002);
    EXPECT_NEAR(actual.greenF(), expected.greenF(), 0.002);
    EXPECT_NEAR(actual.blueF(), expected.blueF(), 0.002);
    EXPECT_NEAR(actual.alphaF(), expected.alphaF(), 0.002);
}

TEST(KeyedArchiveColor, DecodesEveryArchiveForm)
{
    const QVariantMap uiRgb{{QStringLiteral("UIColorComponentCount"), qint64(4)}, {QStringLiteral("UIRed"), 1.0},
                            {QStringLiteral("UIGreen"), 0.5}, {QStringLiteral("UIBlue"), 0.25}, {QStringLiteral("UIAlpha"), 0.75}};
    const QVariantMap uiWhite{{QStringLiteral("UIWhite"), 0.2}, {QStringLiteral("UIAlpha"), 1.0}};
    QVariantMap catalogue{{QStringLiteral("NSColorSpace"), qint64(6)}, {QStringLiteral("NSCatalogName"), QStringLiteral("System")},
                          {QStringLiteral("NSColorName"), QStringLiteral("controlColor")}, {QStringLiteral("NSColor"), uid(2)}};
    const QVariantMap custom{{QStringLiteral("NSColorSpace"), qint64(7)}, {QStringLiteral("NSComponents"), QByteArray("0.1 0.2 0.3 1")},
                             {QStringLiteral("NSCustomColorSpace"), uid(0)}};
    const std::vector<Decodes> cases{
        {"calibrated RGB without alpha", archive({desktop(1, "NSRGB", "1 0 0")}), QColor::fromRgbF(1, 0, 0, 1)},
        {"device RGB with alpha", archive({desktop(2, "NSRGB", "0 0.5 1 0.5")}), QColor::fromRgbF(0, 0.5f, 1, 0.5f)},
        {"calibrated white", archive({desktop(3, "NSWhite", "0.25")}), QColor::fromRgbF(0.25f, 0.25f, 0.25f, 1)},
        {"device white with alpha", archive({desktop(4, "NSWhite", "0 0.5")}), QColor::fromRgbF(0, 0, 0, 0.5f)},
        {"device CMYK", archive({desktop(5, "NSCMYK", "0 1 1 0 1")}), QColor::fromCmykF(0, 1, 1, 0, 1)},
        {"catalogue colour falls back to its colour", archive({catalogue, desktop(3, "NSWhite", "0.5")}), QColor::fromRgbF(0.5f, 0.5f, 0.5f, 1)},
        {"custom colour space components", archive({custom}), QColor::fromRgbF(0.1f, 0.2f, 0.3f, 1)},
        {"phone RGB", archive({uiRgb}, QStringLiteral("UIColor")), QColor::fromRgbF(1, 0.5f, 0.25f, 0.75f)},
        {"phone white", archive({uiWhite}, QStringLiteral("UIColor")), QColor::fromRgbF(0.2f, 0.2f, 0.2f, 1)},
        {"XML archive", archive({desktop(1, "NSRGB", "0 1 0")}, QStringLiteral("NSColor"), PropertyList::Format::Xml), QColor::fromRgbF(0, 1, 0, 1)},
    };
    for (const Decodes &c : cases) {
        SCOPED_TRACE(c.name);
        const auto decoded = KeyedArchiveColor::decode(c.archive);
        ASSERT_TRUE(decoded.has_value());
        expectColor(*decoded, c.expected);
    }
}

TEST(KeyedArchiveColor, BadArchivesFallBackToWhite)
{
    QVariantMap loop{{QStringLiteral("NSColorSpace"), qint64(6)}, {QStringLiteral("NSColor"), uid(1)}};
    QVariantMap outOfRange{{QStringLiteral("NSColorSpace"), qint64(6)}, {QStringLiteral("NSColor"), uid(99)}};
    const QVariantMap noTop{{QStringLiteral("$objects"), QVariantList{QStringLiteral("$null"), desktop(1, "NSRGB", "0 0 0")}}};
    const QVariantMap rootOutside{{QStringLiteral("$top"), QVariantMap{{QStringLiteral("root"), uid(7)}}},
                                  {QStringLiteral("$objects"), QVariantList{QStringLiteral("$null")}}};
    const QVariantMap rootIsText{{QStringLiteral("$top"), QVariantMap{{QStringLiteral("root"), uid(0)}}},
                                 {QStringLiteral("$objects"), QVariantList{QStringLiteral("$null")}}};
    const std::vector<std::pair<const char *, QByteArray>> cases{
        {"empty data", QByteArray()},
        {"not a property list", QByteArray("definitely not an archive")},
        {"no $top", PropertyList::toBinary(noTop)},
        {"root reference outside $objects", PropertyList::toBinary(rootOutside)},
        {"root is not a dictionary", PropertyList::toBinary(rootIsText)},
        {"catalogue colour referring to itself", archive({loop})},
        {"catalogue colour referring outside", archive({outOfRange})},
        {"component text that is not numbers", archive({desktop(1, "NSRGB", "nan x")})},
        {"too few RGB components", archive({desktop(2, "NSRGB", "0.5")})},
        {"phone colour with text components", archive({QVariantMap{{QStringLiteral("UIRed"), QStringLiteral("1")},
                                                                   {QStringLiteral("UIGreen"), 0.0}, {QStringLiteral("UIBlue"), 0.0}}})},
        {"a colour with no components", archive({QVariantMap{{QStringLiteral("NSColorSpace"), qint64(1)}}})},
    };
    for (const auto &[name, data] : cases) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(KeyedArchiveColor::decode(data).has_value());
        EXPECT_EQ(KeyedArchiveColor::decodeOrWhite(data), QColor(Qt::white));
    }
}

TEST(KeyedArchiveColor, EncodedColoursReadBackAsDesktopAndAsPhoneArchives)
{
    for (const QColor &c : {QColor(Qt::white), QColor(Qt::black), QColor::fromRgbF(0.1f, 0.6f, 0.9f, 0.4f), QColor(12, 200, 7)}) {
        const QByteArray data = KeyedArchiveColor::encode(c);
        const auto back = KeyedArchiveColor::decode(data);
        ASSERT_TRUE(back.has_value());
        expectColor(*back, c);
        // The desktop reading alone (NSRGB text) must give the same colour as the phone keys.
        const auto read = PropertyList::fromBytes(data, QStringLiteral("encoded"));
        ASSERT_TRUE(read.ok());
        QVariantList objects = read.value.toMap().value(QStringLiteral("$objects")).toList();
        QVariantMap colour = objects[1].toMap();
        for (const char *key : {"UIRed", "UIGreen", "UIBlue", "UIAlpha", "UIColorComponentCount"})
            colour.remove(QString::fromLatin1(key));
        const auto desktopOnly = KeyedArchiveColor::decode(archive({colour}));
        ASSERT_TRUE(desktopOnly.has_value());
        expectColor(*desktopOnly, c);
    }
}

} // namespace

#include "foundation/BinaryPropertyListReader.h"
#include "foundation/PropertyList.h"

#include <QtEndian>

#include <gtest/gtest.h>

namespace {

// Assembles a binary property list from encoded objects whose references are refSize bytes.
QByteArray bplist(const QList<QByteArray> &objects, int top = 0, int refSize = 1)
{
    QByteArray out("bplist00");
    QByteArray table;
    for (const QByteArray &o : objects) {
        char offset[4];
        qToBigEndian<quint32>(quint32(out.size()), offset);
        table.append(offset, 4);
        out.append(o);
    }
    const int tableOffset = out.size();
    out.append(table);
    QByteArray trailer(32, '\0');
    trailer[6] = 4;
    trailer[7] = char(refSize);
    qToBigEndian<quint64>(quint64(objects.size()), trailer.data() + 8);
    qToBigEndian<quint64>(quint64(top), trailer.data() + 16);
    qToBigEndian<quint64>(quint64(tableOffset), trailer.data() + 24);
    return out + trailer;
}

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray b;
    for (int v : values)
        b.append(char(v));
    return b;
}

QByteArray ref2(int n)
{
    return bytes({n >> 8, n & 0xFF});
}

// A reference ten bytes wide, its high byte given.
QByteArray ref10(int n, int high = 0)
{
    return bytes({high}) + QByteArray(7, '\0') + ref2(n);
}

// A subtree `height` levels deep (objects 1..height around the integer 2 * height + 1), and the
// same subtree again under `height` more levels (objects height + 1..2 * height), both in one
// array: the tree as expanded nests 2 * height + 1 levels deep. References are 2 bytes.
QByteArray sharedAtTwoDepths(int height)
{
    const int leaf = 2 * height + 1;
    QList<QByteArray> objects{bytes({0xA2}) + ref2(1) + ref2(height + 1)};
    for (int i = 1; i <= 2 * height; ++i)
        objects.append(bytes({0xA1}) + ref2(i == height ? leaf : i == 2 * height ? 1 : i + 1));
    objects.append(bytes({0x10, 1}));
    return bplist(objects, 0, 2);
}

TEST(BinaryPropertyListReader, SharedObjectsReadInEveryPlaceTheyAreReferenced)
{
    struct Case {
        const char *name;
        QByteArray input;
        QVariant expected;
    };
    const QVariant seven = qint64(7);
    const QString ab = QStringLiteral("ab");
    QVariant deep = qint64(1);
    for (int i = 0; i < 200; ++i)
        deep = QVariantList{deep};
    QVariant deeper = deep;
    for (int i = 0; i < 200; ++i)
        deeper = QVariantList{deeper};

    const std::vector<Case> cases{
        // Five references to one integer, as libplist writes [7, 7, 7, 7, 7].
        {"array of five equal integers", bplist({bytes({0xA5, 1, 1, 1, 1, 1}), bytes({0x10, 7})}),
         QVariantList{seven, seven, seven, seven, seven}},
        {"string shared by an array and a dictionary key and value",
         bplist({bytes({0xA4, 1, 2, 3, 4}), bytes({0x52, 'a', 'b'}), bytes({0x10, 7}), bytes({0x09}), bytes({0xD1, 1, 1})}),
         QVariantList{ab, seven, true, QVariantMap{{ab, ab}}}},
        {"dictionary whose keys share one value",
         bplist({bytes({0xD3, 1, 2, 3, 4, 4, 4}), bytes({0x51, 'a'}), bytes({0x51, 'b'}), bytes({0x51, 'c'}), bytes({0x08})}),
         QVariantMap{{QStringLiteral("a"), false}, {QStringLiteral("b"), false}, {QStringLiteral("c"), false}}},
        {"container shared by two containers",
         bplist({bytes({0xA2, 1, 1}), bytes({0xA2, 2, 2}), bytes({0x10, 7})}),
         QVariantList{QVariantList{seven, seven}, QVariantList{seven, seven}}},
        {"set, read as an array", bplist({bytes({0xC2, 1, 1}), bytes({0x10, 7})}), QVariantList{seven, seven}},
        {"references wider than 8 bytes", bplist({bytes({0xA2}) + ref10(1) + ref10(1), bytes({0x10, 7})}, 0, 10),
         QVariantList{seven, seven}},
        {"subtree shared at two depths within the nesting limit", sharedAtTwoDepths(200), QVariantList{deep, deeper}},
        {"16-byte integer above 2^63 is unsigned",
         bplist({bytes({0x14, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0, 0, 0, 0, 0, 5})}), QVariant(quint64(0x8000000000000005ULL))},
        {"16-byte integer below 2^63", bplist({bytes({0x14, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5})}), QVariant(qint64(5))},
        {"16-byte negative integer",
         bplist({bytes({0x14, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFB})}),
         QVariant(qint64(-5))},
        {"8-byte integer is signed", bplist({bytes({0x13, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFB})}), QVariant(qint64(-5))},
        {"ASCII-marked text holding UTF-8", bplist({bytes({0x52, 0xC3, 0xA9})}), QVariant(QStringLiteral("\u00e9"))},
        {"ASCII-marked text holding Latin-1", bplist({bytes({0x51, 0xE9})}), QVariant(QStringLiteral("\u00e9"))},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        QString error;
        const QVariant v = BinaryPropertyListReader::read(c.input, &error);
        ASSERT_TRUE(v.isValid()) << error.toStdString();
        EXPECT_EQ(v.typeId(), c.expected.typeId());
        EXPECT_EQ(v, c.expected);
    }
}

TEST(BinaryPropertyListReader, HostileStructuresAreRefused)
{
    struct Case {
        const char *name;
        QByteArray input;
    };
    QList<QByteArray> laughs;
    // Each array holds the next one twice: 40 levels expand to 2^40 values.
    for (int i = 0; i < 40; ++i)
        laughs.append(bytes({0xA2, i + 1, i + 1}));
    laughs.append(bytes({0x10, 1}));
    QByteArray badTop = bplist({bytes({0x10, 1})});
    badTop[badTop.size() - 16 + 7] = 5; // top object 5 of 1

    const std::vector<Case> cases{
        {"array containing itself", bplist({bytes({0xA1, 0})})},
        {"two arrays containing each other", bplist({bytes({0xA1, 1}), bytes({0xA1, 0})})},
        {"reference past the object table", bplist({bytes({0xA1, 9})})},
        {"string longer than the file", bplist({bytes({0x5F, 0x10, 0x7F, 'a'})})},
        {"data length that is not an integer", bplist({bytes({0x4F, 0x51, 'x'})})},
        {"dictionary key that is a number", bplist({bytes({0xD1, 1, 1}), bytes({0x10, 3})})},
        {"null marker", bplist({bytes({0x00})})},
        {"unknown marker", bplist({bytes({0x70})})},
        {"integer wider than 16 bytes", bplist({bytes({0x15, 1, 2})})},
        {"expansion bomb", bplist(laughs)},
        {"shared subtree nested too deep where it is reused", sharedAtTwoDepths(300)},
        {"wide reference beyond 64 bits", bplist({bytes({0xA1}) + ref10(1, 1), bytes({0x10, 7})}, 0, 10)},
        {"16-byte integer beyond 64 bits", bplist({bytes({0x14, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 5})})},
        {"top object outside the table", badTop},
        {"only the magic", QByteArray("bplist00")},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        QString error;
        EXPECT_FALSE(BinaryPropertyListReader::read(c.input, &error).isValid());
        EXPECT_FALSE(error.isEmpty());
    }
}

TEST(BinaryPropertyListReader, TextWithEmbeddedNulReadsButIsNotWrittenBack)
{
    const QByteArray input = bplist({bytes({0x53, 'a', 0, 'b'})});
    const auto r = PropertyList::fromBytes(input, QStringLiteral("nul"));
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_EQ(r.value.toString().size(), 3);
    QString error;
    EXPECT_TRUE(PropertyList::toBinary(r.value, &error).isEmpty());
    EXPECT_FALSE(error.isEmpty());
}

TEST(BinaryPropertyListReader, EveryTruncationOfAValidFileFailsCleanly)
{
    const QVariantMap value{{QStringLiteral("list"), QVariantList{qint64(1), 2.5, QStringLiteral("ünïcode"), QByteArray(300, 'x')}},
                            {QStringLiteral("flag"), true}};
    const QByteArray full = PropertyList::toBinary(value);
    ASSERT_FALSE(full.isEmpty());
    for (int n = 0; n < full.size(); ++n) {
        QString error;
        (void)BinaryPropertyListReader::read(full.left(n), &error); // must not crash or hang
    }
    QString error;
    EXPECT_EQ(BinaryPropertyListReader::read(full, &error), QVariant(value));
}

} // namespace

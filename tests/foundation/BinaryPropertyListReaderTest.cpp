#include "foundation/BinaryPropertyListReader.h"
#include "foundation/PropertyList.h"

#include <QtEndian>

#include <gtest/gtest.h>

namespace {

// Assembles a binary property list from encoded objects (1-byte references and offsets).
QByteArray bplist(const QList<QByteArray> &objects, int top = 0)
{
    QByteArray out("bplist00");
    QByteArray table;
    for (const QByteArray &o : objects) {
        table.append(char(out.size()));
        out.append(o);
    }
    const int tableOffset = out.size();
    out.append(table);
    QByteArray trailer(32, '\0');
    trailer[6] = 1;
    trailer[7] = 1;
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

TEST(BinaryPropertyListReader, ReadsHandAssembledObjects)
{
    // ["ab", 5, true, {"k": "ab"}] with the string shared by the array and the dictionary.
    const QByteArray input = bplist({
        bytes({0xA4, 1, 2, 3, 4}),
        bytes({0x52, 'a', 'b'}),
        bytes({0x10, 5}),
        bytes({0x09}),
        bytes({0xD1, 5, 1}),
        bytes({0x51, 'k'}),
    });
    QString error;
    const QVariant v = BinaryPropertyListReader::read(input, &error);
    ASSERT_TRUE(v.isValid()) << error.toStdString();
    const QVariantList list = v.toList();
    ASSERT_EQ(list.size(), 4);
    EXPECT_EQ(list[0].toString(), QStringLiteral("ab"));
    EXPECT_EQ(list[1].typeId(), QMetaType::LongLong);
    EXPECT_EQ(list[1].toLongLong(), 5);
    EXPECT_EQ(list[2].typeId(), QMetaType::Bool);
    EXPECT_EQ(list[3].toMap().value(QStringLiteral("k")).toString(), QStringLiteral("ab"));
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

// Tessary's property-list readers against libplist's writers and reader: random value trees
// written by libplist read back equal, and both readers agree on a corpus of files written by
// other programs.
#include "support/LibplistTree.h"
#include "support/PlistDiff.h"

#include "foundation/PlistUid.h"
#include "foundation/PropertyList.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QRandomGenerator>
#include <QTimeZone>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

// Seeded random value trees of every property-list type, with repeated values (which binary
// writers store once), empty containers, extreme numbers and awkward text.
class RandomTree
{
public:
    // XML 1.0 cannot carry most control characters, and readers turn a carriage return into a
    // line feed; libplist's XML writer keeps dates to the second.
    enum class Target { Binary, Xml };

    RandomTree(quint32 seed, Target target) : m_rng(seed), m_xml(target == Target::Xml) {}

    QVariant value(int depth = 0)
    {
        if (!m_pool.isEmpty() && chance(20))
            return m_pool[pick(m_pool.size())];
        QVariant v;
        const int kind = depth >= 6 ? 2 + pick(8) : pick(10);
        switch (kind) {
        case 0:
        case 1: {
            const int n = chance(15) ? 0 : pick(9);
            if (kind == 0) {
                QVariantMap map;
                for (int i = 0; i < n; ++i)
                    map.insert(text(), value(depth + 1));
                v = map;
            } else {
                QVariantList list;
                const bool same = chance(20); // e.g. one setting for every photo
                for (int i = 0; i < n; ++i)
                    list.append(same && i > 0 ? list.front() : value(depth + 1));
                v = list;
            }
            break;
        }
        case 2: v = text(); break;
        case 3: v = integer(); break;
        case 4: v = real(); break;
        case 5: v = chance(50); break;
        case 6: {
            QByteArray data(chance(20) ? 0 : pick(40), Qt::Uninitialized);
            for (char &c : data)
                c = char(pick(256));
            v = data;
            break;
        }
        case 7: {
            // Within libplist's 32-bit seconds around 2001-01-01.
            const qint64 seconds = qint64(m_rng.bounded(2'000'000'000)) - 1'000'000'000;
            const qint64 ms = m_xml ? 0 : pick(1000);
            v = QDateTime::fromMSecsSinceEpoch((978307200 + seconds) * 1000 + ms, QTimeZone::utc());
            break;
        }
        case 8: v = QVariant::fromValue(PlistUid{chance(50) ? quint64(pick(100)) : quint64(m_rng.bounded(1u << 31))}); break;
        default: v = integer(); break;
        }
        m_pool.append(v);
        return v;
    }

private:
    int pick(int n) { return int(m_rng.bounded(n)); }
    bool chance(int percent) { return pick(100) < percent; }

    QString text()
    {
        static const QList<char32_t> alphabet{
            U'a', U'Z', U'0', U' ', U'<', U'>', U'&', U'"', U'\'', U']', U'\t', U'\n', U'\u00e9', U'\u00fc', U'\u00ff',
            U'\u0100', U'\u4e2d', U'\u20ac', U'\U0001F600', U'\U00010348', U'\u00a0', U'\u200b'};
        QString s;
        const int n = chance(10) ? 0 : pick(12);
        for (int i = 0; i < n; ++i) {
            char32_t c = alphabet[pick(alphabet.size())];
            if (!m_xml && chance(10))
                c = char32_t(1 + pick(31)); // control characters, U+0001..U+001F
            s += QString::fromUcs4(&c, 1);
        }
        return s;
    }

    QVariant integer()
    {
        switch (pick(8)) {
        case 0: return qint64(std::numeric_limits<qint64>::min());
        case 1: return qint64(std::numeric_limits<qint64>::max());
        case 2: return -qint64(m_rng.generate64() >> pick(64));
        case 3: return quint64(m_rng.generate64() | (quint64(1) << 63)); // unsigned above 2^63
        case 4: return qint64(m_rng.generate64() >> (1 + pick(63)));
        default: return qint64(pick(300)) - 100;
        }
    }

    double real()
    {
        switch (pick(8)) {
        case 0: return 0.0;
        case 1: return -0.5;
        case 2: return 1e300 * (chance(50) ? 1 : -1);
        case 3: return std::numeric_limits<double>::denorm_min();
        case 4: return std::numeric_limits<double>::infinity() * (chance(50) ? 1 : -1);
        default: return (m_rng.generateDouble() - 0.5) * std::pow(10.0, pick(30) - 15);
        }
    }

    QRandomGenerator m_rng;
    bool m_xml;
    QVariantList m_pool;
};

// Values in a tree as a reader expands it, dictionary keys included.
qint64 countValues(const QVariant &v)
{
    qint64 n = 1;
    if (v.typeId() == QMetaType::QVariantList) {
        for (const QVariant &item : v.toList())
            n += countValues(item);
    } else if (v.typeId() == QMetaType::QVariantMap) {
        const QVariantMap map = v.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            n += 1 + countValues(it.value());
    }
    return n;
}

struct Writer {
    const char *name;
    RandomTree::Target target;
    QByteArray (*write)(const QVariant &);
};

TEST(PropertyListDifferential, RandomTreesWrittenByLibplistReadBackEqual)
{
    const std::vector<Writer> writers{
        {"libplist binary", RandomTree::Target::Binary, [](const QVariant &v) { return LibplistTree::write(v, PropertyList::Format::Binary); }},
        {"libplist XML", RandomTree::Target::Xml, [](const QVariant &v) { return LibplistTree::write(v, PropertyList::Format::Xml); }},
        {"Tessary binary", RandomTree::Target::Binary, [](const QVariant &v) { return PropertyList::toBinary(v); }},
        {"Tessary XML", RandomTree::Target::Xml, [](const QVariant &v) { return PropertyList::toXml(v); }},
    };
    int sharedFiles = 0;
    for (const Writer &w : writers) {
        for (quint32 seed = 1; seed <= 400; ++seed) {
            SCOPED_TRACE(QStringLiteral("%1, seed %2").arg(QLatin1String(w.name)).arg(seed).toStdString());
            RandomTree random(seed, w.target);
            const QVariant tree = seed % 2 ? QVariant(QVariantMap{{QStringLiteral("a"), random.value()}, {QStringLiteral("b"), random.value()}, {QStringLiteral("c"), random.value()}})
                                           : QVariant(QVariantList{random.value(), random.value(), random.value(), random.value()});
            const QByteArray bytes = w.write(tree);
            ASSERT_FALSE(bytes.isEmpty());
            const auto read = PropertyList::fromBytes(bytes, QStringLiteral("random"));
            ASSERT_TRUE(read.ok()) << read.error.toStdString();
            const QString diff = PlistDiff::between(tree, read.value);
            ASSERT_TRUE(diff.isEmpty()) << diff.toStdString();
            // libplist's own reader sees the same tree (XML spells references as dictionaries).
            PlistDiff::Leniency asLibplist;
            asLibplist.uidAsDictionary = w.target == RandomTree::Target::Xml;
            const QString libplistDiff = PlistDiff::between(LibplistTree::read(bytes), read.value, asLibplist);
            ASSERT_TRUE(libplistDiff.isEmpty()) << libplistDiff.toStdString();
            if (bytes.startsWith("bplist00")) {
                // Count the files that store a value once for several places.
                const qint64 objects = qFromBigEndian<quint64>(bytes.constData() + bytes.size() - 24);
                sharedFiles += objects < countValues(tree);
            }
        }
    }
    EXPECT_GT(sharedFiles, 300); // of the 800 binary files
}

// Valid files written by other programs (tests/fuzz/make_property_list_corpus.py names them by
// writer: plistlib-*, libplist-*; the rest were written by Tessary): both readers read each, and
// read the same.
TEST(PropertyListDifferential, ReadersAgreeOnTheCorpusOfOtherWriters)
{
    const QDir corpus(QStringLiteral(TESSARY_SOURCE_DIR "/tests/fuzz/corpus/property_list"));
    const QStringList files = corpus.entryList(QDir::Files, QDir::Name);
    ASSERT_GE(files.filter(QRegularExpression(QStringLiteral("^plistlib-"))).size(), 2);
    ASSERT_GE(files.filter(QRegularExpression(QStringLiteral("^libplist-"))).size(), 2);
    for (const QString &name : files) {
        SCOPED_TRACE(name.toStdString());
        const auto read = PropertyList::fromFile(corpus.filePath(name));
        ASSERT_TRUE(read.ok()) << read.error.toStdString();
        QFile file(corpus.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QVariant reference = LibplistTree::read(file.readAll());
        ASSERT_TRUE(reference.isValid());
        PlistDiff::Leniency leniency;
        leniency.uidAsDictionary = name.endsWith(QLatin1String(".xml"));
        const QString diff = PlistDiff::between(reference, read.value, leniency);
        EXPECT_TRUE(diff.isEmpty()) << diff.toStdString();
    }
}

} // namespace

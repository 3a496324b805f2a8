// Property-list readers under fuzzing, in two modes at once:
//  - whatever Tessary's reader accepts must write back in both formats and read back the same;
//  - differential: where libplist's reader accepts a binary input whose value is within
//    Tessary's limits, Tessary's reader must accept it with the same value; XML inputs that both
//    read must read the same. libplist 2.2 aborts or runs away on some malformed inputs, so it
//    reads in a child process (LibplistWorker); a child that dies is libplist's fault and is
//    counted, not reported.
#include "support/LibplistWorker.h"
#include "support/PlistDiff.h"

#include "foundation/BinaryPropertyListReader.h"
#include "foundation/PropertyList.h"

#include <QRegularExpression>
#include <QtEndian>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void fail(const char *what, const QString &detail)
{
    std::fprintf(stderr, "fuzz_property_list: %s: %s\n", what, qPrintable(detail));
    std::abort();
}

struct Shape {
    qint64 values = 0;
    int depth = 0;
    bool nulText = false;
    bool loneSurrogate = false; // not kept by any UTF-8 writer
    bool xmlUnsafe = false;     // characters XML 1.0 cannot carry or readers normalise (CR)
};

void measureText(const QString &text, Shape &shape)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() && QChar::isLowSurrogate(text[i + 1].unicode())) {
            ++i;
            continue;
        }
        shape.nulText = shape.nulText || c == 0;
        shape.loneSurrogate = shape.loneSurrogate || QChar::isSurrogate(c);
        shape.xmlUnsafe = shape.xmlUnsafe || (c < 0x20 && c != u'\t' && c != u'\n') || c == 0xFFFE || c == 0xFFFF;
    }
}

void measure(const QVariant &v, int depth, Shape &shape)
{
    ++shape.values;
    shape.depth = std::max(shape.depth, depth);
    if (v.typeId() == QMetaType::QString) {
        measureText(v.toString(), shape);
    } else if (v.typeId() == QMetaType::QVariantList) {
        for (const QVariant &item : v.toList())
            measure(item, depth + 1, shape);
    } else if (v.typeId() == QMetaType::QVariantMap) {
        const QVariantMap map = v.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            measureText(it.key(), shape);
            ++shape.values;
            measure(it.value(), depth + 1, shape);
        }
    }
}

Shape shapeOf(const QVariant &v)
{
    Shape shape;
    measure(v, 0, shape);
    return shape;
}

// Tessary refuses these on purpose: limits on what it expands, and values the model cannot hold.
bool refusedByALimit(const QString &error)
{
    static const char *const limits[] = {"expands into more than", "nested deeper than", "wider than 64 bits",
                                         "date out of range", "too large"};
    for (const char *limit : limits) {
        if (error.contains(QLatin1String(limit)))
            return true;
    }
    return false;
}

// Malformed binary files libplist 2.2 reads by guessing, which Tessary refuses: an object whose
// offset lies inside the 8-byte "bplist00" header (no writer puts one there), offsets or
// references wider than 8 bytes, of which libplist reads only the low 8 bytes, and keyed-archive
// references wider than 8 bytes.
bool libplistGuesses(const QByteArray &bytes, const QString &error)
{
    if (error.contains(QLatin1String("keyed-archive reference wider than 8 bytes")))
        return true;
    if (bytes.size() < 40)
        return false;
    const auto *data = reinterpret_cast<const uchar *>(bytes.constData());
    const qsizetype trailer = bytes.size() - 32;
    const int offsetSize = data[trailer + 6];
    if (offsetSize > 8 || data[trailer + 7] > 8)
        return true;
    const quint64 count = qFromBigEndian<quint64>(data + trailer + 8);
    const quint64 table = qFromBigEndian<quint64>(data + trailer + 24);
    if (offsetSize < 1 || table > quint64(trailer) || count > (quint64(trailer) - table) / quint64(offsetSize))
        return false;
    for (quint64 i = 0; i < count; ++i) {
        quint64 offset = 0;
        for (int b = 0; b < offsetSize; ++b)
            offset = (offset << 8) | data[table + i * quint64(offsetSize) + quint64(b)];
        if (offset < 8)
            return true;
    }
    return false;
}

// libplist 2.2's XML reader reads an integer with a leading zero as octal ("010" is 8); Tessary
// reads decimal, as other readers do.
bool libplistReadsOctal(const QByteArray &bytes)
{
    static const QRegularExpression octal(QStringLiteral("<integer\\s*>\\s*[-+]?0[0-9]"));
    return octal.match(QString::fromLatin1(bytes)).hasMatch();
}

// libplist 2.2's XML reader ignores a date's zone and reads a date without a time as 1970;
// dates are compared only in the form writers use, "2024-02-29T13:14:15Z".
bool libplistMisreadsDates(const QByteArray &bytes)
{
    static const QRegularExpression date(QStringLiteral("<date\\s*>([^<]*)</date\\s*>"));
    static const QRegularExpression canonical(QStringLiteral("^\\s*\\d{4}-\\d{2}-\\d{2}T\\d{2}:\\d{2}:\\d{2}(\\.\\d+)?Z\\s*$"));
    for (const auto &m : date.globalMatch(QString::fromLatin1(bytes))) {
        if (!canonical.match(m.captured(1)).hasMatch())
            return true;
    }
    return false;
}

// libplist 2.2's XML reader drops the last group of Base64 text without its padding, where
// Tessary decodes it as unpadded Base64.
bool libplistDropsUnpaddedBase64(const QByteArray &bytes)
{
    static const QRegularExpression data(QStringLiteral("<data\\s*>([^<]*)</data\\s*>"));
    for (const auto &m : data.globalMatch(QString::fromLatin1(bytes))) {
        if (m.captured(1).remove(QRegularExpression(QStringLiteral("\\s"))).size() % 4 != 0)
            return true;
    }
    return false;
}

// How the libplist reads went, printed when the fuzzer ends.
struct Tally {
    qint64 compared = 0, refused = 0, died = 0;
    ~Tally()
    {
        std::fprintf(stderr, "fuzz_property_list: libplist read %lld inputs that were compared, refused %lld, "
                             "died or ran away on %lld\n", compared, refused, died);
    }
};

void compareWithLibplist(const QByteArray &bytes, const PropertyList::ReadResult &ours)
{
    static LibplistWorker libplist;
    static Tally tally;
    const bool binary = bytes.startsWith("bplist00");
    // libplist's XML reader accepts malformed documents (unclosed or mismatched tags, trailing
    // content, "abc" as the integer 0, text that is not Base64 as empty data), which Tessary
    // refuses rather than guess at: XML is compared where both read it. Tessary's refusals for
    // its limits stand, and libplist keeps text as C strings, cut at a NUL.
    if (!ours.ok() && (!binary || refusedByALimit(ours.error) || libplistGuesses(bytes, ours.error)))
        return;
    if (ours.ok() && shapeOf(ours.value).nulText)
        return;
    if (!binary && (libplistReadsOctal(bytes) || libplistMisreadsDates(bytes) || libplistDropsUnpaddedBase64(bytes)))
        return;
    QVariant reference;
    switch (libplist.read(bytes, &reference)) {
    case LibplistWorker::Outcome::Refused:
        ++tally.refused;
        return;
    case LibplistWorker::Outcome::Died:
        ++tally.died;
        return;
    case LibplistWorker::Outcome::Read:
        ++tally.compared;
        break;
    }
    const Shape shape = shapeOf(reference);
    if (shape.values > BinaryPropertyListReader::kMaxExpandedValues || shape.depth > PropertyList::kMaxDepth)
        return;
    if (!ours.ok())
        fail("libplist accepted what Tessary refused", ours.error);
    PlistDiff::Leniency leniency;
    leniency.uidAsDictionary = !binary;
    leniency.xmlLineEnds = !binary;
    leniency.integerBits = true;
    leniency.undecodableText = true;
    leniency.narrowDates = true;
    leniency.dateSlackMs = binary ? 1 : 999; // libplist reads XML dates to the second
    const QString diff = PlistDiff::between(reference, ours.value, leniency);
    if (!diff.isEmpty())
        fail("the readers disagree", diff);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const PropertyList::ReadResult r = PropertyList::fromBytes(bytes, QStringLiteral("fuzz"));
    if (r.ok()) {
        // Whatever reads must write back and read back the same. Text the writers cannot keep
        // (NUL characters, lone surrogates; in XML, most control characters) is left out here;
        // an XML file keeps dates to the second, -0.0 as 0.0 and a reference as {"CF$UID": n}.
        const Shape shape = shapeOf(r.value);
        for (auto format : {PropertyList::Format::Binary, PropertyList::Format::Xml}) {
            const bool xml = format == PropertyList::Format::Xml;
            if (shape.nulText || shape.loneSurrogate || (xml && shape.xmlUnsafe))
                continue;
            const QByteArray written = PropertyList::toBytes(r.value, format);
            if (written.isEmpty())
                continue;
            const auto again = PropertyList::fromBytes(written, QStringLiteral("fuzz-again"));
            if (!again.ok())
                fail("written value does not read back", again.error);
            PlistDiff::Leniency leniency;
            leniency.uidAsDictionary = xml;
            leniency.signOfZero = xml;
            leniency.dateSlackMs = xml ? 999 : 0;
            const QString diff = PlistDiff::between(r.value, again.value, leniency);
            if (!diff.isEmpty())
                fail("written value reads back changed", diff);
        }
    }
    compareWithLibplist(bytes, r);
    return 0;
}

#include "foundation/NSStringExtensions.h"

#include <QStringDecoder>
#include <QTextDocument>

#include <algorithm>
#include <array>
#include <climits>

namespace {

// Mac OS Roman, bytes 0x80 to 0xFF; the lower half is ASCII.
constexpr std::array<char16_t, 128> kMacRomanHigh = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5, 0x00E7,
    0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, 0x00F2, 0x00F4, 0x00F6, 0x00F5,
    0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6, 0x00DF, 0x00AE, 0x00A9,
    0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, 0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211,
    0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248,
    0x2206, 0x00AB, 0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D,
    0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x2021, 0x00B7,
    0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, 0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4,
    0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD,
    0x02DB, 0x02C7,
};

std::optional<QByteArray> toMacRoman(const QString &text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (QChar c : text) {
        if (c.unicode() < 0x80) {
            bytes.append(char(c.unicode()));
            continue;
        }
        const auto *hit = std::find(kMacRomanHigh.begin(), kMacRomanHigh.end(), c.unicode());
        if (hit == kMacRomanHigh.end())
            return std::nullopt;
        bytes.append(char(0x80 + (hit - kMacRomanHigh.begin())));
    }
    return bytes;
}

// Reads text the way an HTML reader that is given no encoding does: a byte-order mark decides,
// and without one the bytes are taken as Latin-1, the web's fallback for unlabelled pages.
QString guessAndDecode(const QByteArray &bytes)
{
    const auto encoding = QStringConverter::encodingForData(bytes);
    QStringDecoder decoder(encoding.value_or(QStringConverter::Latin1));
    return decoder.decode(bytes);
}

// A scanner over text that skips nothing between tokens; literal matches ignore case.
class EntityScanner
{
public:
    explicit EntityScanner(const QString &text) : m_text(text) {}

    bool atEnd() const { return m_pos >= m_text.size(); }

    QString scanUpTo(QChar stop)
    {
        const qsizetype from = m_pos;
        qsizetype hit = m_text.indexOf(stop, m_pos);
        m_pos = hit < 0 ? m_text.size() : hit;
        return m_text.mid(from, m_pos - from);
    }
    // The matched text as it stands in the source, or nothing (position unchanged).
    std::optional<QString> scanString(QLatin1String literal)
    {
        if (QStringView(m_text).mid(m_pos).startsWith(literal, Qt::CaseInsensitive)) {
            const QString matched = m_text.mid(m_pos, literal.size());
            m_pos += literal.size();
            return matched;
        }
        return std::nullopt;
    }
    // A signed decimal number, clamped to the range of a 32-bit int.
    std::optional<qint64> scanInt()
    {
        qsizetype p = m_pos;
        bool negative = false;
        if (p < m_text.size() && (m_text[p] == u'-' || m_text[p] == u'+'))
            negative = m_text[p++] == u'-';
        const qsizetype digitsFrom = p;
        qint64 value = 0;
        for (; p < m_text.size() && m_text[p] >= u'0' && m_text[p] <= u'9'; ++p)
            value = std::min<qint64>(value * 10 + (m_text[p].unicode() - u'0'), qint64(INT_MAX) + 1);
        if (p == digitsFrom)
            return std::nullopt;
        m_pos = p;
        value = negative ? -value : value;
        return std::clamp<qint64>(value, INT_MIN, INT_MAX);
    }
    // An unsigned hexadecimal number after an optional "0x", clamped to 32 bits.
    std::optional<quint32> scanHexInt()
    {
        qsizetype p = m_pos;
        if (p + 2 < m_text.size() && m_text[p] == u'0' && (m_text[p + 1] == u'x' || m_text[p + 1] == u'X')
            && isHexDigit(m_text[p + 2]))
            p += 2;
        const qsizetype digitsFrom = p;
        quint64 value = 0;
        for (; p < m_text.size() && isHexDigit(m_text[p]); ++p)
            value = std::min<quint64>(value * 16 + hexValue(m_text[p]), quint64(UINT_MAX));
        if (p == digitsFrom)
            return std::nullopt;
        m_pos = p;
        return quint32(value);
    }
    // Up to the next space, tab, line feed, carriage return or ";"; empty when already there.
    QString scanUpToBoundary()
    {
        const qsizetype from = m_pos;
        while (m_pos < m_text.size() && !QStringView(u" \t\n\r;").contains(m_text[m_pos]))
            ++m_pos;
        return m_text.mid(from, m_pos - from);
    }

private:
    static bool isHexDigit(QChar c) { return hexValue(c) >= 0; }
    static int hexValue(QChar c)
    {
        const char16_t u = c.unicode();
        if (u >= u'0' && u <= u'9')
            return u - u'0';
        if (u >= u'a' && u <= u'f')
            return u - u'a' + 10;
        if (u >= u'A' && u <= u'F')
            return u - u'A' + 10;
        return -1;
    }

    const QString &m_text;
    qsizetype m_pos = 0;
};

} // namespace

QString NSStringExtensions::flattenHTML(const QString &html)
{
    if (html.isEmpty())
        return html;
    QByteArray bytes;
    if (html.size() < 4) {
        const auto roman = toMacRoman(html);
        if (!roman)
            return html;
        bytes = *roman;
    } else {
        // UTF-16 with its byte-order mark, so the reader knows what it is given.
        QStringEncoder encoder(QStringConverter::Utf16, QStringConverter::Flag::WriteBom);
        bytes = encoder.encode(html);
    }
    QTextDocument document;
    document.setHtml(guessAndDecode(bytes));
    return document.toPlainText();
}

std::optional<QString> NSStringExtensions::extractBetweenPattern(const QString &text, const QString &start,
                                                                 const QString &end)
{
    if (start.isEmpty() || end.isEmpty())
        return std::nullopt;
    const qsizetype s = text.indexOf(start, 0, Qt::CaseInsensitive);
    if (s < 0)
        return std::nullopt;
    const qsizetype from = s + start.size();
    const qsizetype e = text.indexOf(end, from, Qt::CaseInsensitive);
    if (e < 0)
        return std::nullopt;
    return text.mid(from, e - from);
}

std::optional<QString> NSStringExtensions::reverseExtractBetweenPattern(const QString &text, const QString &start,
                                                                        const QString &end)
{
    if (start.isEmpty() || end.isEmpty())
        return std::nullopt;
    const qsizetype e = text.indexOf(end, 0, Qt::CaseInsensitive);
    if (e < start.size())
        return std::nullopt;
    // The start marker must lie wholly before the end marker.
    const qsizetype s = text.lastIndexOf(start, e - start.size(), Qt::CaseInsensitive);
    if (s < 0)
        return std::nullopt;
    const qsizetype from = s + start.size();
    return text.mid(from, e - from);
}

std::optional<QString> NSStringExtensions::runScript(const QString &source)
{
    Q_UNUSED(source);
    return std::nullopt;
}

QString NSStringExtensions::cleanForFilename(const QString &name)
{
    QString clean = name;
    clean.replace(QLatin1Char('/'), QLatin1Char('-'));
    clean.replace(QLatin1Char(':'), QLatin1Char('-'));
    return clean;
}

QString NSStringExtensions::stringByDecodingHTMLEntities(const QString &text)
{
    if (!text.contains(QLatin1Char('&')))
        return text;
    QString result;
    result.reserve(text.size() + text.size() / 4);
    EntityScanner scanner(text);
    static const std::pair<QLatin1String, QLatin1String> named[] = {
        {QLatin1String("&amp;"), QLatin1String("&")},   {QLatin1String("&apos;"), QLatin1String("'")},
        {QLatin1String("&quot;"), QLatin1String("\"")}, {QLatin1String("&lt;"), QLatin1String("<")},
        {QLatin1String("&gt;"), QLatin1String(">")},
    };
    while (!scanner.atEnd()) {
        result += scanner.scanUpTo(QLatin1Char('&'));
        if (scanner.atEnd())
            break;
        bool decoded = false;
        for (const auto &[entity, character] : named) {
            if (scanner.scanString(entity)) {
                result += character;
                decoded = true;
                break;
            }
        }
        if (decoded)
            continue;
        if (scanner.scanString(QLatin1String("&#"))) {
            std::optional<quint32> number;
            const std::optional<QString> x = scanner.scanString(QLatin1String("x"));
            if (x) {
                number = scanner.scanHexInt();
            } else if (const auto decimal = scanner.scanInt()) {
                number = quint32(qint32(*decimal)); // written unsigned, as "%u" writes an int
            }
            if (number) {
                result += QString::number(*number);
                scanner.scanString(QLatin1String(";"));
            } else {
                result += QLatin1String("&#") + x.value_or(QString()) + scanner.scanUpToBoundary();
            }
            continue;
        }
        result += *scanner.scanString(QLatin1String("&"));
    }
    return result;
}

#include "foundation/NSStringExtensions.h"

#include <gtest/gtest.h>

namespace {

TEST(NSStringExtensions, DecodingEntitiesKeepsItsQuirks)
{
    const struct {
        const char *name;
        QString in;
        QString out;
    } cases[] = {
        {"no ampersand comes back as it is", QStringLiteral("plain <b> text"), QStringLiteral("plain <b> text")},
        {"named entities in any case; unknown ones stay", QStringLiteral("&lt;b&gt; &#169; &AMP; &bogus;"),
         QStringLiteral("<b> 169 & &bogus;")},
        {"quotes", QStringLiteral("&quot;&apos;&QUOT;"), QStringLiteral("\"'\"")},
        {"a number gives its digits, not its character", QStringLiteral("&#65;"), QStringLiteral("65")},
        {"hexadecimal is written in decimal", QStringLiteral("&#x41;|&#X41;|&#xaf;|&#xAF;"), QStringLiteral("65|65|175|175")},
        {"the semicolon is optional", QStringLiteral("&#65 x"), QStringLiteral("65 x")},
        {"negative numbers wrap as unsigned", QStringLiteral("&#-5;"), QStringLiteral("4294967291")},
        {"huge numbers saturate", QStringLiteral("&#99999999999;"), QStringLiteral("2147483647")},
        {"hexadecimal saturates unsigned", QStringLiteral("&#xFFFFFFFFFF;"), QStringLiteral("4294967295")},
        {"no number keeps the text to the boundary", QStringLiteral("&#abc def"), QStringLiteral("&#abc def")},
        {"an x without digits keeps its case", QStringLiteral("&#Xzz;"), QStringLiteral("&#Xzz;")},
        {"nothing after &#", QStringLiteral("&#;"), QStringLiteral("&#;")},
        {"lone ampersands", QStringLiteral("a & b &"), QStringLiteral("a & b &")},
        {"entities back to back", QStringLiteral("&amp;amp;"), QStringLiteral("&amp;")},
    };
    for (const auto &c : cases)
        EXPECT_EQ(NSStringExtensions::stringByDecodingHTMLEntities(c.in), c.out) << c.name;
}

TEST(NSStringExtensions, ExtractorsFindTheTextBetweenMarkers)
{
    using E = NSStringExtensions;
    const struct {
        const char *name;
        bool reverse;
        QString text, start, end;
        std::optional<QString> out;
    } cases[] = {
        {"case does not matter", false, QStringLiteral("aXbYc"), QStringLiteral("x"), QStringLiteral("y"), QStringLiteral("b")},
        {"end searched after start", false, QStringLiteral("y-x1y"), QStringLiteral("x"), QStringLiteral("y"), QStringLiteral("1")},
        {"adjacent markers give empty text", false, QStringLiteral("xy"), QStringLiteral("x"), QStringLiteral("y"), QString()},
        {"first start, first end", false, QStringLiteral("[1[2]3]"), QStringLiteral("["), QStringLiteral("]"), QStringLiteral("1[2")},
        {"missing start", false, QStringLiteral("abc"), QStringLiteral("x"), QStringLiteral("c"), std::nullopt},
        {"end only before start", false, QStringLiteral("aYbXc"), QStringLiteral("x"), QStringLiteral("y"), std::nullopt},
        {"empty marker", false, QStringLiteral("abc"), QString(), QStringLiteral("c"), std::nullopt},
        {"reverse: last start before first end", true, QStringLiteral("[1[2]3]"), QStringLiteral("["), QStringLiteral("]"), QStringLiteral("2")},
        {"reverse: case does not matter", true, QStringLiteral("<A>x<a>in</A>"), QStringLiteral("<a>"), QStringLiteral("</a>"), QStringLiteral("in")},
        {"reverse: start only after end", true, QStringLiteral("y x"), QStringLiteral("x"), QStringLiteral("y"), std::nullopt},
        {"reverse: missing end", true, QStringLiteral("x b"), QStringLiteral("x"), QStringLiteral("y"), std::nullopt},
        {"reverse: start may not overlap end", true, QStringLiteral("ab"), QStringLiteral("ab"), QStringLiteral("b"), std::nullopt},
    };
    for (const auto &c : cases) {
        const auto got = c.reverse ? E::reverseExtractBetweenPattern(c.text, c.start, c.end)
                                   : E::extractBetweenPattern(c.text, c.start, c.end);
        EXPECT_EQ(got, c.out) << c.name;
    }
}

TEST(NSStringExtensions, FlatteningReadsShortStringsAsMacRoman)
{
    const struct {
        const char *name;
        QString in;
        QString out;
    } cases[] = {
        {"empty", QString(), QString()},
        {"markup goes, text stays", QStringLiteral("<p>Hello <b>world</b></p>"), QStringLiteral("Hello world")},
        {"entities are decoded", QStringLiteral("fish &amp; chips"), QStringLiteral("fish & chips")},
        {"long text keeps every character", QStringLiteral("caf\u00e9 \u4e2d\u6587"), QStringLiteral("caf\u00e9 \u4e2d\u6587")},
        {"short ASCII", QStringLiteral("a<i>"), QStringLiteral("a")},
        // Mac OS Roman writes e-acute as 0x8E; read back without a label that byte is not e-acute.
        {"short text is re-read from its Mac OS Roman bytes", QStringLiteral("\u00e9"), QString(QChar(0x8E))},
        {"short text Mac OS Roman cannot hold comes back as it is", QStringLiteral("<\u4e2d>"), QStringLiteral("<\u4e2d>")},
    };
    for (const auto &c : cases)
        EXPECT_EQ(NSStringExtensions::flattenHTML(c.in), c.out) << c.name;
}

TEST(NSStringExtensions, FileNamesAndScripts)
{
    EXPECT_EQ(NSStringExtensions::cleanForFilename(QStringLiteral("2024/05/01 12:30")), QStringLiteral("2024-05-01 12-30"));
    EXPECT_EQ(NSStringExtensions::runScript(QStringLiteral("return \"x\"")), std::nullopt);
}

} // namespace

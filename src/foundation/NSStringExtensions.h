#pragma once

#include <QString>

#include <optional>

// Small text utilities kept for the application's use: flattening HTML to plain text, cutting
// text out between two markers, decoding HTML entities, and making a string safe as a file
// name. Each returns a new string, or nothing where the operation finds nothing.
class NSStringExtensions
{
public:
    // The plain text of an HTML fragment. Strings shorter than four characters are read as
    // Mac OS Roman bytes, longer ones as UTF-16; a short string that Mac OS Roman cannot hold is
    // returned as it is, and so is the empty string.
    static QString flattenHTML(const QString &html);

    // The text strictly between the first start marker and the first end marker after it
    // (both found without regard to case); nothing when either is missing.
    static std::optional<QString> extractBetweenPattern(const QString &text, const QString &start,
                                                        const QString &end);
    // The text strictly between the first end marker and the last start marker before it (both
    // found without regard to case); nothing when either is missing.
    static std::optional<QString> reverseExtractBetweenPattern(const QString &text, const QString &start,
                                                               const QString &end);

    // Scripts have no host on this system: always nothing.
    static std::optional<QString> runScript(const QString &source);

    // Every "/" and ":" replaced by "-".
    static QString cleanForFilename(const QString &name);

    // Decodes the five named entities (any case) and numeric entities. A numeric entity gives
    // its number in decimal digits, not the character it stands for ("&#65;" and "&#x41;" both
    // give "65"); anything else after "&" is kept as it stands.
    static QString stringByDecodingHTMLEntities(const QString &text);
};

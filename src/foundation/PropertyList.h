#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

// Reads and writes property lists, XML and binary. Reading goes through hardened parsers of our
// own (XmlPropertyListReader, BinaryPropertyListReader); writing through libplist.
//
// The value model is QVariant: QVariantMap (dictionary), QVariantList (array), QString, qint64
// (integer; quint64 for unsigned values above the signed range), double (real), bool,
// QByteArray (data), QDateTime (date, UTC) and PlistUid (keyed-archive reference). Integers and
// reals stay distinct in both directions.
class PropertyList
{
public:
    enum class Format { Xml, Binary };

    struct ReadResult {
        QVariant value;
        QString error; // empty when the read succeeded
        bool ok() const { return error.isEmpty(); }
    };

    // Inputs larger than this are refused before any parsing.
    static constexpr qint64 kMaxInputBytes = 64LL * 1024 * 1024;
    // Containers nested deeper than this are refused.
    static constexpr int kMaxDepth = 512;

    // sourceName names the input in error messages (a file path, "standard input", ...).
    // maxBytes: inputs larger than this are refused unread; trusted stores may allow more.
    static ReadResult fromBytes(const QByteArray &bytes, const QString &sourceName, qint64 maxBytes = kMaxInputBytes);
    static ReadResult fromFile(const QString &path);

    // Serialises a value; returns an empty array and sets *error when the value holds
    // something a property list cannot carry (an invalid QVariant, an unsupported type).
    static QByteArray toBytes(const QVariant &value, Format format, QString *error = nullptr);
    static QByteArray toXml(const QVariant &value, QString *error = nullptr) { return toBytes(value, Format::Xml, error); }
    static QByteArray toBinary(const QVariant &value, QString *error = nullptr) { return toBytes(value, Format::Binary, error); }

    // Writes atomically (a temporary file renamed over the target), so a failed or interrupted
    // write leaves any earlier file intact.
    static bool writeFile(const QString &path, const QVariant &value, Format format, QString *error = nullptr);

    // A plain-text name of a value's property-list type ("dictionary", "integer", ...).
    static QString typeName(const QVariant &value);
};

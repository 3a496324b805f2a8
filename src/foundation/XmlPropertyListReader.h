#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

// Parses XML property lists with QXmlStreamReader into the QVariant value model of PropertyList.
// Strict about structure (a dictionary alternates <key> and value, numbers must be numbers),
// bounded in nesting depth, and never resolves external entities.
class XmlPropertyListReader
{
public:
    // Returns the value, or an invalid QVariant with *error set ("line N: what is wrong").
    static QVariant read(const QByteArray &bytes, QString *error);
};

#pragma once

#include "foundation/PropertyList.h"

#include <QByteArray>
#include <QVariant>

#include <plist/plist.h>

// libplist's own reader and writers, the reference side of the differential property-list
// tests: converts between libplist's node trees and the QVariant value model of PropertyList.
class LibplistTree
{
public:
    // Reads through libplist's binary or XML reader (chosen by the "bplist00" magic); an
    // invalid QVariant when libplist refuses the input. libplist 2.2 aborts on some malformed
    // inputs: give it only valid files, or call it in a child process.
    static QVariant read(const QByteArray &bytes);

    // Writes a value with libplist's writers from nodes built here, not by PropertyList's writer.
    static QByteArray write(const QVariant &value, PropertyList::Format format);

    static QVariant toVariant(plist_t node);
    // Text must not hold a NUL character (libplist keeps text as C strings).
    static plist_t fromVariant(const QVariant &value);
};

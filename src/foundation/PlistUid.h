#pragma once

#include <QMetaType>
#include <QtGlobal>

// A keyed-archive object reference ("CF$UID") inside a property list. It is its own type so
// that a reference never reads as a plain integer.
struct PlistUid {
    quint64 value = 0;
    friend bool operator==(const PlistUid &a, const PlistUid &b) { return a.value == b.value; }
    friend bool operator!=(const PlistUid &a, const PlistUid &b) { return a.value != b.value; }
};
Q_DECLARE_METATYPE(PlistUid)

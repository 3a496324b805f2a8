#pragma once

#include <QString>

#include <vector>

// The proportions of a whole collage: a name for messages and the width-to-height ratio.
struct CollageShape
{
    QString name;
    double ratio = 1.0;

    // Every shape the library offers: square, the common photo formats in landscape and
    // portrait, panoramas and strips.
    static const std::vector<CollageShape> &all();
    static CollageShape named(const QString &name);
};

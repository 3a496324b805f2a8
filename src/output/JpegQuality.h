#pragma once

#include <QByteArray>

// The quality setting a JPEG was most likely written with, worked out from its luminance
// quantisation table: the table of the common encoder (the one Qt and most programs use) is a
// standard table scaled by the quality, so the quality whose scaled table is closest wins.
class JpegQuality
{
public:
    static constexpr int kDefaultQuality = 90;
    // 1 .. 100, or -1 when the bytes hold no readable JPEG quantisation table.
    static int estimate(const QByteArray &jpeg);
    // The estimate, or kDefaultQuality when there is none.
    static int estimateOrDefault(const QByteArray &jpeg);
};

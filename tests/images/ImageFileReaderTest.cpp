#include "images/ImageFileReader.h"

#include <gtest/gtest.h>

namespace {

QByteArray marker(char code)
{
    return QByteArray("\xFF", 1) + code;
}

TEST(ImageFileReader, AJpegIsCompleteOnlyWithAnEndAfterItsLastScan)
{
    const QByteArray soi = marker('\xD8'), sos = marker('\xDA'), eoi = marker('\xD9');
    const QByteArray header = soi + QByteArray(200, 'h');
    const QByteArray scan = QByteArray(5000, 's');
    // An embedded thumbnail inside an application segment brings a scan and an end of its own.
    const QByteArray thumbnail = marker('\xE1') + soi + sos + QByteArray(100, 't') + eoi;
    const struct {
        const char *name;
        QByteArray bytes;
        bool complete;
    } cases[] = {
        {"complete", header + sos + scan + eoi, true},
        {"complete, progressive (several scans)", header + sos + scan + sos + scan + eoi, true},
        {"complete with a thumbnail", header + thumbnail + sos + scan + eoi, true},
        {"cut inside the scan", header + sos + scan, false},
        {"cut inside the second scan", header + sos + scan + sos + scan.left(10), false},
        {"cut after a thumbnail's end", header + thumbnail + sos + scan, false},
        {"no scan at all", header + eoi, false},
        {"empty", QByteArray(), false},
    };
    for (const auto &c : cases)
        EXPECT_EQ(ImageFileReader::jpegIsComplete(c.bytes), c.complete) << c.name;
}

} // namespace

#include "AiffWriter.h"

#include <QtEndian>

#include <gtest/gtest.h>

namespace {

TEST(AiffWriter, ExtendedPrecisionSampleRates)
{
    const struct {
        double value;
        const char *hex;
    } cases[] = {
        {44100, "400eac44000000000000"},
        {48000, "400ebb80000000000000"},
        {22050, "400dac44000000000000"},
        {8000, "400bfa00000000000000"},
        {1, "3fff8000000000000000"},
        {0.5, "3ffe8000000000000000"},
        {0, "00000000000000000000"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(AiffWriter::extended80(c.value).toHex(), QByteArray(c.hex)) << c.value;
}

TEST(AiffWriter, ChunksSizesAndBigEndianSamples)
{
    // Three stereo frames.
    const std::vector<qint16> samples = {1, -1, 0x1234, -32768, 32767, 0};
    const QByteArray file = AiffWriter::write(samples, 2, 44100);
    const auto *d = reinterpret_cast<const uchar *>(file.constData());
    ASSERT_EQ(file.size(), 12 + 8 + 18 + 8 + 8 + 12);
    EXPECT_EQ(file.left(4), "FORM");
    EXPECT_EQ(qFromBigEndian<quint32>(d + 4), quint32(file.size() - 8));
    EXPECT_EQ(file.mid(8, 4), "AIFF");
    EXPECT_EQ(file.mid(12, 4), "COMM");
    EXPECT_EQ(qFromBigEndian<quint32>(d + 16), 18u);
    EXPECT_EQ(qFromBigEndian<quint16>(d + 20), 2);     // channels
    EXPECT_EQ(qFromBigEndian<quint32>(d + 22), 3u);    // frames
    EXPECT_EQ(qFromBigEndian<quint16>(d + 26), 16);    // bits
    EXPECT_EQ(file.mid(28, 10).toHex(), "400eac44000000000000");
    EXPECT_EQ(file.mid(38, 4), "SSND");
    EXPECT_EQ(qFromBigEndian<quint32>(d + 42), 8u + 12u);
    EXPECT_EQ(file.mid(46, 8), QByteArray(8, '\0'));   // offset, block size
    EXPECT_EQ(file.mid(54).toHex(), "0001ffff123480007fff0000");
}

TEST(AiffWriter, DropsAnIncompleteLastFrame)
{
    const QByteArray file = AiffWriter::write({5, 6, 7}, 2, 44100);
    const auto *d = reinterpret_cast<const uchar *>(file.constData());
    EXPECT_EQ(qFromBigEndian<quint32>(d + 22), 1u);
    EXPECT_EQ(file.size(), 54 + 4);
    EXPECT_EQ(qFromBigEndian<quint32>(d + 4), quint32(file.size() - 8));
}

} // namespace

#include "foundation/AiffSound.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

namespace {

// The reader against a second implementation: sox writes each sound and also decodes it to raw
// 16-bit samples; both must agree sample for sample (within one step where sox rounds wider
// samples down to 16 bits and the reader truncates).
TEST(AiffSound, AgreesWithSoxOnFilesSoxWrote)
{
    const QString sox = QStandardPaths::findExecutable(QStringLiteral("sox"));
    if (sox.isEmpty())
        GTEST_SKIP() << "sox is not installed (scripts/install-deps.sh installs it)";
    QTemporaryDir dir;
    const struct {
        const char *name;
        QStringList format;
        int channels;
        int rate;
    } cases[] = {
        {"stereo16.aiff", {"-b", "16", "-c", "2", "-r", "44100"}, 2, 44100},
        {"mono8.aiff", {"-b", "8", "-c", "1", "-r", "8000"}, 1, 8000},
        {"mono24.aiff", {"-b", "24", "-c", "1", "-r", "22050"}, 1, 22050},
        {"quad32.aiff", {"-b", "32", "-c", "4", "-r", "48000"}, 4, 48000},
        {"compressionless.aifc", {"-b", "16", "-c", "2", "-r", "32000", "-t", "aifc"}, 2, 32000},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = dir.filePath(QString::fromLatin1(c.name));
        const QString raw = path + QStringLiteral(".raw");
        QStringList make = QStringList{"-n"} + c.format + QStringList{path, "synth", "0.05", "sine", "440", "sine", "660"};
        ASSERT_EQ(QProcess::execute(sox, make), 0);
        ASSERT_EQ(QProcess::execute(sox, {"-D", path, "-t", "raw", "-e", "signed", "-b", "16", "-L", raw}), 0);
        QFile rawFile(raw);
        ASSERT_TRUE(rawFile.open(QIODevice::ReadOnly));
        const QByteArray expected = rawFile.readAll();

        const AiffSound sound = AiffSound::fromFile(path);
        ASSERT_TRUE(sound.isValid()) << sound.error.toStdString();
        EXPECT_EQ(sound.channels, c.channels);
        EXPECT_EQ(sound.sampleRate, c.rate);
        ASSERT_EQ(sound.pcm.size(), expected.size());
        for (qsizetype i = 0; i + 1 < expected.size(); i += 2) {
            const int a = qFromLittleEndian<qint16>(sound.pcm.constData() + i);
            const int b = qFromLittleEndian<qint16>(expected.constData() + i);
            ASSERT_LE(std::abs(a - b), 1) << "sample " << i / 2;
        }
    }
}

TEST(AiffSound, TheCompletionSoundReads)
{
    const AiffSound sound = AiffSound::fromFile(
        QDir(qEnvironmentVariable("TESSARY_RESOURCES", QStringLiteral(TESSARY_BINARY_DIR "/resources"))).filePath("harp.aif"));
    ASSERT_TRUE(sound.isValid()) << sound.error.toStdString();
    EXPECT_GT(sound.frameCount(), sound.sampleRate / 10);
}

// Damaged files give an invalid sound with a reason, never a crash or a read out of bounds.
TEST(AiffSound, DamagedFilesAreRefused)
{
    QByteArray good = QByteArray("FORM") + QByteArray(4, 0) + "AIFF";
    QByteArray comm = QByteArray("COMM") + QByteArray::fromHex("00000012") + QByteArray::fromHex("0001")
                      + QByteArray::fromHex("00000002") + QByteArray::fromHex("0010")
                      + QByteArray::fromHex("400EAC44000000000000");
    QByteArray ssnd = QByteArray("SSND") + QByteArray::fromHex("0000000C") + QByteArray(8, 0) + QByteArray::fromHex("01000200");
    good += comm + ssnd;
    qToBigEndian(quint32(good.size() - 8), good.data() + 4);
    ASSERT_TRUE(AiffSound::fromData(good).isValid()) << AiffSound::fromData(good).error.toStdString();
    EXPECT_EQ(AiffSound::fromData(good).sampleRate, 44100);

    QByteArray longChunk = good;
    qToBigEndian(quint32(0x7fffffff), longChunk.data() + 12 + 4);
    QByteArray badOffset = good;
    qToBigEndian(quint32(0xffffff00), badOffset.data() + 12 + 26 + 8);
    const struct {
        const char *name;
        QByteArray data;
    } cases[] = {
        {"empty", QByteArray()},
        {"not a form", QByteArray("RIFF....WAVE")},
        {"truncated header", good.left(20)},
        {"chunk longer than the file", longChunk},
        {"sound data offset past its chunk", badOffset},
        {"no sound data", good.left(12 + 26)},
    };
    for (const auto &c : cases)
        EXPECT_FALSE(AiffSound::fromData(c.data).isValid()) << c.name;
}

} // namespace

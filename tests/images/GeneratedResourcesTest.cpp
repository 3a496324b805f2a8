// The resources the build generates are the same bytes on every run of the generator.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

TEST(GeneratedResources, AreTheSameBytesOnEveryRun)
{
    // Regenerate a few resources of each kind into a fresh folder and compare with the build's.
    const QString tool = QStringLiteral(TESSARY_BINARY_DIR "/bin/tessary-resgen");
    if (!QFile::exists(tool))
        GTEST_SKIP() << "generator not built";
    const QDir built(qEnvironmentVariable("TESSARY_RESOURCES", QStringLiteral(TESSARY_BINARY_DIR "/resources")));
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QStringList names = {QStringLiteral("images-41.jpg"), QStringLiteral("flower-0.jpg"),
                               QStringLiteral("CropResult.tif"), QStringLiteral("ximage.png"),
                               QStringLiteral("harp.aif")};
    QProcess process;
    process.start(tool, {QStringLiteral("--out"), dir.path(), QStringLiteral("--only"), names.join(QLatin1Char(','))});
    ASSERT_TRUE(process.waitForFinished(120000));
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    for (const QString &name : names) {
        QFile a(built.filePath(name)), b(QDir(dir.path()).filePath(name));
        ASSERT_TRUE(a.open(QIODevice::ReadOnly)) << qPrintable(name);
        ASSERT_TRUE(b.open(QIODevice::ReadOnly)) << qPrintable(name);
        EXPECT_TRUE(a.readAll() == b.readAll()) << qPrintable(name) << " differs between runs";
    }
}

} // namespace

#include "CliProcess.h"

#include "foundation/Preferences.h"
#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace {

// Enough photos that writing the list back takes more than the file-size limit allows.
constexpr int kPhotos = 600;

QVariantMap oneTemplate(qint64 modules)
{
    return {{QStringLiteral("nbrModules"), modules},
            {QStringLiteral("contentSizeWidth"), 400.0},
            {QStringLiteral("contentSizeHeight"), 300.0},
            {QStringLiteral("moduleSizeInPoints"), qint64(100)},
            {QStringLiteral("borderWidth"), qint64(0)},
            {QStringLiteral("savedTessaryDataModules"), QVariantList{}}};
}

// A template as big as the photo list, for the same reason.
QVariantMap withThumbnail(QVariantMap t)
{
    t.insert(QStringLiteral("thumbnail"), QByteArray(60000, 'x'));
    return t;
}

// A store that cannot be written is read, every write fails with a non-zero exit and the reason
// in words, nothing is lost, and nothing is taken for damage.
class StoreFaultsTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString storeFolder() const { return dir.filePath(QStringLiteral("store")); }
    QString storeFile() const { return dir.filePath(QStringLiteral("store/defaults.sqlite")); }
    QString templatesFile() const { return dir.filePath(QStringLiteral("more.plist")); }
    QString newPhoto() const { return dir.filePath(QStringLiteral("new.jpg")); }

    void SetUp() override
    {
        QDir().mkpath(dir.filePath(QStringLiteral("photos")));
        QDir().mkpath(dir.filePath(QStringLiteral("docs")));
        QDir().mkpath(storeFolder());
        QVariantList bookmarks;
        QVariantList alignments;
        for (int i = 0; i < kPhotos; ++i) {
            const QString path = dir.filePath(QStringLiteral("photos/a-photo-with-a-long-name-that-fills-the-pages-%1.jpg").arg(i));
            QFile f(path);
            ASSERT_TRUE(f.open(QIODevice::WriteOnly));
            bookmarks.append(QFile::encodeName(path));
            alignments.append(qint64(i % 4));
        }
        QFile photo(newPhoto());
        ASSERT_TRUE(photo.open(QIODevice::WriteOnly));
        ASSERT_TRUE(PropertyList::writeFile(templatesFile(), QVariantMap{{QStringLiteral("templates"), QVariantList{oneTemplate(3)}}},
                                            PropertyList::Format::Binary));
        UserDefaults defaults(storeFile());
        ASSERT_TRUE(defaults.setValuesForKeys({{Preferences::Bookmarks, bookmarks},
                                               {Preferences::Aligments, alignments},
                                               {Preferences::FirstRunLoadFactoryImages, false},
                                               {Preferences::UserTemplates, QVariantList{withThumbnail(oneTemplate(1)), oneTemplate(2)}}}));
    }
};

TEST_F(StoreFaultsTest, AStoreThatCannotBeWrittenIsReadAndEveryWriteFailsWithItsReason)
{
    const auto chmodPath = [](const QString &path, mode_t mode) { ::chmod(QFile::encodeName(path).constData(), mode); };
    const struct Fault {
        const char *name;
        std::function<void()> apply;
        QStringList runnerOptions;
        QStringList reasons; // one of them is said for each failed write
        bool roomForSmallWrites = false;
    } faults[] = {
        {"read-only store file", [&] { chmodPath(storeFile(), 0444); }, {}, {QStringLiteral("can only be read")}},
        {"read-only folder", [&] { chmodPath(storeFolder(), 0555); }, {}, {QStringLiteral("can only be read")}},
        {"full disk", [] {}, {QStringLiteral("--file-size-limit"), QStringLiteral("40000")},
         {QStringLiteral("No space left on device"), QStringLiteral("File too large")}, true},
        {"disk full before the store opens", [] {}, {QStringLiteral("--file-size-limit"), QStringLiteral("4096")},
         {QStringLiteral("No space left on device"), QStringLiteral("File too large")}},
    };
    const struct Write {
        const char *name;
        QStringList args;
        // Stored in a few hundred bytes (equal alignments are written once and referred to),
        // so a nearly full disk may still take it: then it must succeed for real.
        bool small = false;
    } writes[] = {
        {"photos add", {QStringLiteral("photos"), QStringLiteral("add"), newPhoto()}},
        {"photos remove", {QStringLiteral("photos"), QStringLiteral("remove"), QStringLiteral("0")}},
        {"photos align", {QStringLiteral("photos"), QStringLiteral("align"), QStringLiteral("all"), QStringLiteral("fit")}, true},
        {"template import", {QStringLiteral("template"), QStringLiteral("import"), templatesFile()}},
        {"template apply-user", {QStringLiteral("template"), QStringLiteral("apply-user"), QStringLiteral("2")}},
        {"template delete", {QStringLiteral("template"), QStringLiteral("delete"), QStringLiteral("1")}},
        {"defaults write", {QStringLiteral("defaults"), QStringLiteral("write"), QStringLiteral("IconSize"), templatesFile()}},
    };
    const QProcessEnvironment env = CliProcess::environment(storeFile(), dir.filePath(QStringLiteral("docs")));
    const CliProcess probe = CliProcess::run({QStringLiteral("--help")}, env,
                                             {QStringLiteral("--unprivileged"), QStringLiteral("--file-size-limit"), QStringLiteral("4096")});
    if (probe.code == 127)
        GTEST_SKIP() << "the faults cannot be made here: " << probe.err.toStdString();
    CliProcess::handToUnprivilegedUser(dir.path());
    for (const Fault &fault : faults) {
        SCOPED_TRACE(fault.name);
        fault.apply();
        const QStringList options = QStringList{QStringLiteral("--unprivileged")} + fault.runnerOptions;

        const CliProcess list = CliProcess::run({QStringLiteral("photos"), QStringLiteral("list")}, env, options);
        EXPECT_EQ(list.code, 0) << list.err.toStdString();
        EXPECT_EQ(list.out.count(QLatin1Char('\n')), kPhotos);
        for (const Write &write : writes) {
            SCOPED_TRACE(write.name);
            const CliProcess r = CliProcess::run(write.args, env, options);
            EXPECT_FALSE(r.crashed) << "ended by a signal";
            if (write.small && fault.roomForSmallWrites && r.code == 0) {
                const CliProcess after = CliProcess::run({QStringLiteral("photos"), QStringLiteral("list")}, env, options);
                EXPECT_EQ(after.out.count(QStringLiteral("\t3\t")), kPhotos) << "every photo fits whole";
                continue;
            }
            EXPECT_NE(r.code, 0) << r.out.toStdString();
            EXPECT_TRUE(std::any_of(fault.reasons.cbegin(), fault.reasons.cend(), [&](const QString &reason) { return r.err.contains(reason); }))
                << r.err.toStdString();
        }
        chmodPath(storeFile(), 0644);
        chmodPath(storeFolder(), 0755);
        // Nothing was taken for damage, and everything is still there.
        EXPECT_TRUE(QDir(storeFolder()).entryList({QStringLiteral("*damaged*")}).isEmpty());
        UserDefaults defaults(storeFile());
        EXPECT_TRUE(defaults.movedAsidePath().isEmpty());
        EXPECT_EQ(defaults.arrayForKey(Preferences::Bookmarks).size(), kPhotos);
        EXPECT_EQ(defaults.arrayForKey(Preferences::UserTemplates).size(), 2);
        EXPECT_FALSE(defaults.hasObject(QStringLiteral("IconSize")));
    }
}

} // namespace

namespace {

// A picture written past a file-size limit (as on a full disk) fails with the system's reason,
// not "Unknown error", and the program is not ended by SIGXFSZ.
TEST(ImageWriteFaults, APictureThatDoesNotFitFailsWithItsReason)
{
    QTemporaryDir dir;
    QImage noise(600, 400, QImage::Format_RGB32);
    QRandomGenerator random(7);
    for (int y = 0; y < noise.height(); ++y) {
        for (int x = 0; x < noise.width(); ++x)
            noise.setPixel(x, y, random.generate());
    }
    const QString in = dir.filePath(QStringLiteral("in.png"));
    ASSERT_TRUE(noise.save(in));
    const QProcessEnvironment env = CliProcess::environment(dir.filePath(QStringLiteral("defaults.sqlite")), dir.path());
    const CliProcess probe = CliProcess::run({QStringLiteral("--help")}, env, {QStringLiteral("--file-size-limit"), QStringLiteral("4096")});
    if (probe.code == 127)
        GTEST_SKIP() << "a file-size limit cannot be set here: " << probe.err.toStdString();
    for (const char *extension : {"png", "jpg", "tiff"}) {
        SCOPED_TRACE(extension);
        const QString out = dir.filePath(QStringLiteral("out.%1").arg(QLatin1String(extension)));
        const CliProcess r = CliProcess::run({QStringLiteral("image"), QStringLiteral("fit"), in, QStringLiteral("600"), QStringLiteral("400"), QStringLiteral("0"), out},
                                             env, {QStringLiteral("--file-size-limit"), QStringLiteral("20000")});
        EXPECT_FALSE(r.crashed) << "ended by a signal";
        EXPECT_EQ(r.code, 1);
        EXPECT_TRUE(r.err.contains(QStringLiteral("File too large")) || r.err.contains(QStringLiteral("No space left on device")))
            << r.err.toStdString();
        EXPECT_FALSE(QFile::exists(out));
    }
}

} // namespace

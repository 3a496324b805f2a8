#include "foundation/Paths.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Where the programs find their resources from their own folder, installed or built.
struct ResourcesCase {
    const char *name;
    QStringList folders;   // made beside bin/ (a trailing '+' holds the built-in templates)
    const char *expected;  // relative to the root
};

class ResourcesBesideProgram : public ::testing::TestWithParam<ResourcesCase> {};

TEST_P(ResourcesBesideProgram, AreFoundRelativeToThePrograms)
{
    QTemporaryDir root;
    QDir(root.path()).mkpath(QStringLiteral("bin"));
    for (QString folder : GetParam().folders) {
        const bool withTemplates = folder.endsWith(QLatin1Char('+'));
        folder.chop(withTemplates ? 1 : 0);
        QDir(root.path()).mkpath(folder);
        if (withTemplates) {
            QFile f(QDir(root.path()).filePath(folder + QStringLiteral("/templates.plist")));
            ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        }
    }
    const QString found = Paths::resourcesFolderBeside(root.filePath(QStringLiteral("bin")));
    EXPECT_EQ(found, QDir::cleanPath(QDir(root.path()).canonicalPath() + QLatin1Char('/') + QLatin1String(GetParam().expected)));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ResourcesBesideProgram,
    ::testing::Values(ResourcesCase{"Installed", {QStringLiteral("share/tessary+")}, "share/tessary"},
                      ResourcesCase{"Built", {QStringLiteral("resources+")}, "resources"},
                      ResourcesCase{"TemplatesWin", {QStringLiteral("share/tessary"), QStringLiteral("resources+")}, "resources"},
                      ResourcesCase{"BothInstalledFirst", {QStringLiteral("share/tessary+"), QStringLiteral("resources+")}, "share/tessary"},
                      ResourcesCase{"OnlyAnEmptyBuildFolder", {QStringLiteral("resources")}, "resources"},
                      ResourcesCase{"NothingThere", {}, "share/tessary"}),
    [](const auto &info) { return std::string(info.param.name); });

} // namespace

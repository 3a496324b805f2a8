#pragma once

#include "foundation/UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

// A window test's own world: a fresh store and Documents folder in a temporary folder, and the
// generated resources of the build.
class AppFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        qputenv("TESSARY_DOCUMENTS", QFile::encodeName(dir.filePath(QStringLiteral("Documents"))));
        if (qEnvironmentVariableIsEmpty("TESSARY_RESOURCES"))
            qputenv("TESSARY_RESOURCES", TESSARY_BINARY_DIR "/resources");
        defaults = std::make_unique<UserDefaults>(storePath());
        ASSERT_TRUE(defaults->isOpen());
    }
    void TearDown() override
    {
        defaults.reset();
        qunsetenv("TESSARY_DOCUMENTS");
    }
    QString storePath() const { return dir.filePath(QStringLiteral("defaults.sqlite")); }

    QTemporaryDir dir;
    std::unique_ptr<UserDefaults> defaults;
};

#pragma once

#include "foundation/UserDefaults.h"
#include "support/RecordingAlertPresenter.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using RecordingAlerts = RecordingAlertPresenter;

// A temporary world for the photo list: a defaults store, a resources folder and a Documents
// folder (so the images folder is private to the test).
class PhotoListFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        QDir(dir.path()).mkpath(QStringLiteral("resources"));
        QDir(dir.path()).mkpath(QStringLiteral("documents"));
        QDir(dir.path()).mkpath(QStringLiteral("photos"));
        qputenv("TESSARY_DOCUMENTS", QFile::encodeName(documents()));
        defaults = std::make_unique<UserDefaults>(dir.filePath(QStringLiteral("defaults.sqlite")));
        ASSERT_TRUE(defaults->isOpen());
    }
    void TearDown() override { qunsetenv("TESSARY_DOCUMENTS"); }

    QString resources() const { return dir.filePath(QStringLiteral("resources")); }
    QString documents() const { return dir.filePath(QStringLiteral("documents")); }
    QString imagesFolder() const { return dir.filePath(QStringLiteral("documents/Images")); }

    // Writes a small file; the list never decodes it.
    QString makeFile(const QString &name, const QByteArray &content = QByteArray("jpeg"))
    {
        const QString path = dir.filePath(QStringLiteral("photos/") + name);
        QFile f(path);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(content);
        return path;
    }
    // Factory photos "images-N.jpg" for the given numbers.
    void makeFactoryImages(std::initializer_list<int> numbers)
    {
        for (int n : numbers) {
            QFile f(QDir(resources()).filePath(QStringLiteral("images-%1.jpg").arg(n)));
            ASSERT_TRUE(f.open(QIODevice::WriteOnly));
            f.write("jpeg");
        }
    }
    // Marks the first run as done, so a list starts empty.
    void skipFirstRun() { defaults->setBool(false, QStringLiteral("FirstRunLoadFactoryImages")); }

    QTemporaryDir dir;
    std::unique_ptr<UserDefaults> defaults;
    RecordingAlerts alerts;
};

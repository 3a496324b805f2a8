#pragma once

#include "foundation/AlertPresenter.h"
#include "foundation/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

// Records every alert. With autoAnswer set, each alert is answered with its default button at
// once; otherwise the completions wait in `pending` until a test answers them.
class RecordingAlerts : public AlertPresenter
{
public:
    void presentAlert(const Alert &alert, std::function<void(int)> completion) override
    {
        alerts.append(alert);
        if (autoAnswer) {
            if (completion)
                completion(DefaultButton);
        } else {
            pending.append(std::move(completion));
        }
    }
    void beep() override { ++beeps; }

    bool autoAnswer = true;
    QList<Alert> alerts;
    QList<std::function<void(int)>> pending;
    int beeps = 0;
};

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

#include "AppFixture.h"

#include "app/HalvernDesktopController.h"
#include "photos/ImageBrowserController.h"
#include "app/result/ResultOutputs.h"
#include "app/result/ResultSaveDialog.h"
#include "app/result/ResultWindow.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "output/ResultFormat.h"
#include "support/FaultFolder.h"
#include "app/result/SaveOptionsPanel.h"

#include <QComboBox>
#include <QImageReader>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>

namespace {

QByteArray contents(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// The result window with a picture, its store and folders of its own, and the viewer either
// recorded or (`realOpener`) the program's own, over a desktop that has no programs at all.
class SaveFaultsTest : public AppFixture
{
protected:
    void start(bool realOpener = false)
    {
        defaults->setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
        controller = std::make_unique<HalvernDesktopController>(*defaults, Paths::resourcesFolder());
        controller->launch();
        if (realOpener) {
            for (const char *name : {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS"})
                qputenv(name, QFile::encodeName(dir.filePath(QStringLiteral("empty-desktop"))));
        } else {
            outputs().setOpener([this](const QUrl &url) {
                opened << url.toLocalFile();
                return true;
            });
        }
        QDir().mkpath(temporary());
        outputs().setTemporaryFolder(temporary());
        QImage image(240, 160, QImage::Format_RGB32);
        image.fill(QColor(30, 120, 200));
        // A JPEG photo: the save dialog's format starts at it.
        const QString photo = dir.filePath(QStringLiteral("photo.jpg"));
        ASSERT_TRUE(image.save(photo, "jpeg"));
        controller->imageBrowserController().addImagesWithPaths({photo});
        controller->displayResult(image, true);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window(), 5000));
    }
    void TearDown() override
    {
        controller.reset();
        for (const char *name : {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS"})
            qunsetenv(name);
        AppFixture::TearDown();
    }
    ResultWindow &window() const { return controller->resultWindow(); }
    ResultOutputs &outputs() const { return controller->resultOutputs(); }
    QString temporary() const { return dir.filePath(QStringLiteral("tmp")); }
    // The alert shown on the result window, if any.
    QMessageBox *alert() const
    {
        for (QMessageBox *box : window().findChildren<QMessageBox *>())
            if (box->isVisible())
                return box;
        return nullptr;
    }

    std::unique_ptr<HalvernDesktopController> controller;
    QStringList opened;
};

// Through the real dialog, as a person types: the file written is the one named, in the
// format its extension names, and an existing file is replaced only after a question about
// that very file. The dialog opens next time in the folder of the last save.
TEST_F(SaveFaultsTest, TheFileWrittenIsTheFileNamedAndAskedAbout)
{
    start();
    enum Answer { NotAsked, Replace, Cancel };
    struct Case {
        const char *name;
        QByteArray popUp;
        const char *typed;
        QByteArray choose; // a format picked in the pop-up after typing
        QStringList existing;
        Answer answer;
        const char *written; // nullptr: nothing
        QByteArray format;
    };
    const Case cases[] = {
        {"typed png beside a jpg", "jpeg", "victim.png", {}, {"victim.jpg"}, NotAsked, "victim.png", "png"},
        {"typed png over a png, no", "jpeg", "victim.png", {}, {"victim.png"}, Cancel, nullptr, {}},
        {"typed png over a png, yes", "jpeg", "victim.png", {}, {"victim.png"}, Replace, "victim.png", "png"},
        {"no extension over the pop-up's", "tiff", "scan", {}, {"scan.tif"}, Cancel, nullptr, {}},
        {"unknown extension kept", "jpeg", "my.holiday", {}, {"my.holiday"}, NotAsked, "my.holiday.jpg", "jpeg"},
        {"pop-up rewrites the name", "png", "beach.png", "jpeg", {"beach.png"}, NotAsked, "beach.jpg", "jpeg"},
    };
    int n = 0;
    for (const Case &c : cases) {
        const QDir folder(dir.filePath(QStringLiteral("case-%1").arg(n++)));
        ASSERT_TRUE(folder.mkpath(QStringLiteral(".")));
        for (const QString &name : c.existing) {
            QFile f(folder.filePath(name));
            ASSERT_TRUE(f.open(QIODevice::WriteOnly));
            f.write("the person's own file " + name.toUtf8());
        }
        window().action(QStringLiteral("saveResult"))->trigger();
        ResultSaveDialog *dialog = outputs().saveDialog();
        ASSERT_NE(dialog, nullptr) << c.name;
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog, 5000));
        dialog->setDirectory(folder.path());
        SaveOptionsPanel &panel = dialog->options();
        if (&c == cases) {
            EXPECT_EQ(panel.format(), QByteArray("jpeg")) << "the first photo's format comes first";
        }
        panel.formatPopUp()->setCurrentIndex(panel.formatPopUp()->findData(c.popUp));
        auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        ASSERT_NE(name, nullptr);
        name->setFocus();
        name->selectAll();
        QTest::keyClicks(name, QString::fromLatin1(c.typed));
        const QByteArray typedFormat = ResultFormat::formatForSuffix(QFileInfo(QString::fromLatin1(c.typed)).suffix());
        EXPECT_EQ(panel.format(), typedFormat.isEmpty() ? c.popUp : typedFormat) << c.name << ": the pop-up follows";
        if (!c.choose.isEmpty()) {
            panel.formatPopUp()->setCurrentIndex(panel.formatPopUp()->findData(c.choose));
            EXPECT_EQ(name->text(), QString::fromLatin1(c.written)) << c.name;
        }
        QSignalSpy saved(&outputs(), &ResultOutputs::saved);
        QTest::keyClick(name, Qt::Key_Return);
        if (c.answer != NotAsked) {
            ASSERT_TRUE(QTest::qWaitFor([&] { return dialog->replaceQuestion() && dialog->replaceQuestion()->isVisible(); }, 2000))
                << c.name;
            QMessageBox *question = dialog->replaceQuestion();
            const QString target = c.written ? QString::fromLatin1(c.written) : c.existing.first();
            EXPECT_TRUE(question->text().contains(QStringLiteral("“%1”").arg(target))) << c.name << " " << qPrintable(question->text());
            QAbstractButton *button = question->button(QMessageBox::Cancel);
            if (c.answer == Replace)
                for (QAbstractButton *b : question->buttons())
                    if (b->text() == QStringLiteral("Replace"))
                        button = b;
            ASSERT_NE(button, nullptr);
            QTest::mouseClick(button, Qt::LeftButton);
        } else {
            EXPECT_EQ(dialog->replaceQuestion(), nullptr) << c.name;
        }
        if (!c.written) {
            // Cancel goes back to the dialog; nothing is written.
            EXPECT_FALSE(saved.wait(300)) << c.name;
            EXPECT_TRUE(dialog->isVisible()) << c.name;
            dialog->reject();
        } else {
            ASSERT_TRUE(QTest::qWaitFor([&] { return saved.count() == 1; }, 10000)) << c.name;
            EXPECT_TRUE(saved.at(0).at(1).toBool()) << c.name;
            EXPECT_EQ(saved.at(0).at(0).toString(), folder.filePath(QString::fromLatin1(c.written))) << c.name;
            QImageReader reader(folder.filePath(QString::fromLatin1(c.written)));
            reader.setDecideFormatFromContent(true);
            EXPECT_EQ(reader.format(), c.format) << c.name;
        }
        for (const QString &name : c.existing) {
            if (!c.written || name != QString::fromLatin1(c.written)) {
                EXPECT_EQ(contents(folder.filePath(name)), "the person's own file " + name.toUtf8()) << c.name;
            }
        }
        ASSERT_TRUE(QTest::qWaitFor([&] { return outputs().saveDialog() == nullptr; }, 2000)) << c.name;
        if (c.written) {
            // The next dialog opens where this save went.
            EXPECT_EQ(Preferences(*defaults).lastSaveFolder(), folder.path()) << c.name;
            window().action(QStringLiteral("saveResult"))->trigger();
            ASSERT_NE(outputs().saveDialog(), nullptr);
            EXPECT_EQ(outputs().saveDialog()->directory().absolutePath(), folder.absolutePath()) << c.name;
            outputs().saveDialog()->reject();
            ASSERT_TRUE(QTest::qWaitFor([&] { return outputs().saveDialog() == nullptr; }, 2000));
        }
    }
}

// A save that fails is an alert on the result window with the system's words, not a line in
// the status bar (which failures give which words is the encoder's own test).
TEST_F(SaveFaultsTest, AFailedSaveIsAnAlertWithTheSystemsReason)
{
    start();
    FaultFolder folder(dir.path(), FaultFolder::Kind::ReadOnly);
    ASSERT_TRUE(folder.usable());
    QImage picture(60, 40, QImage::Format_RGB32);
    picture.fill(Qt::darkGreen);
    controller->displayResult(picture, false);
    QSignalSpy saved(&outputs(), &ResultOutputs::saved);
    outputs().saveImageToPath(folder.filePath(QStringLiteral("collage.png")), ResultEncoder::Settings());
    ASSERT_TRUE(QTest::qWaitFor([&] { return saved.count() == 1; }, 10000));
    EXPECT_FALSE(saved.at(0).at(1).toBool());
    QMessageBox *box = alert();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->windowModality(), Qt::WindowModal);
    EXPECT_EQ(box->text(), QStringLiteral("“collage.png” could not be saved."));
    EXPECT_EQ(box->informativeText(), folder.reason());
    EXPECT_TRUE(window().statusBar()->currentMessage().isEmpty());
    box->done(0);
}

// Open in Viewer with no program for PNG files says so and removes its temporary file; a
// temporary file handed to a viewer is removed at quit.
TEST_F(SaveFaultsTest, NoViewerIsToldAndTemporaryFilesGoAtQuit)
{
    start(true);
    for (const char *action : {"openResult", "copyAndOpenResult"}) {
        window().action(QString::fromLatin1(action))->trigger();
        ASSERT_TRUE(QTest::qWaitFor([&] { return alert() != nullptr; }, 10000)) << action;
        EXPECT_EQ(alert()->text(), QStringLiteral("No program is set up to open PNG files.")) << action << " " << qPrintable(alert()->text());
        EXPECT_TRUE(QDir(temporary()).isEmpty()) << action;
        alert()->done(0);
        ASSERT_TRUE(QTest::qWaitFor([&] { return alert() == nullptr && !window().isWorking(); }, 2000));
    }
    outputs().setOpener([](const QUrl &) { return true; });
    QSignalSpy openedSpy(&outputs(), &ResultOutputs::opened);
    window().action(QStringLiteral("openResult"))->trigger();
    ASSERT_TRUE(openedSpy.wait(10000));
    EXPECT_FALSE(QDir(temporary()).isEmpty());
    controller.reset();
    EXPECT_TRUE(QDir(temporary()).isEmpty());
}

} // namespace

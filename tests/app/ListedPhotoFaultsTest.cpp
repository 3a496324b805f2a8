#include "AppFixture.h"

#include "app/collage/CollageMaker.h"
#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "app/result/ResultWindow.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserController.h"
#include "support/TestImages.h"
#include "app/collage/DragDropImageView.h"
#include "app/photos/ImageBrowserModel.h"
#include "app/photos/ImageBrowserPanel.h"
#include "app/photos/PhotoPreview.h"
#include "app/collage/TessaryDataView.h"
#include "app/collage/TessaryView.h"

#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include <functional>

#include <cstdio>

namespace {

// The program with its own store and folders, over three photos of the test's own, while
// their files are spoiled under it: the look of a photo that cannot be read (tile, thumbnail,
// preview with the reason), the alerts (their words and the window they come up over), the
// store afterwards.
class ListedPhotoFaultsTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        defaults->setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
        QDir().mkpath(photoFolder());
        for (int i = 0; i < 3; ++i)
            writePhoto(photoPath(i), QColor::fromHsv(i * 110, 200, 90));
        controller = std::make_unique<HalvernDesktopController>(*defaults, Paths::resourcesFolder());
        controller->launch();
        controller->collageMaker().setDelay(0);
        ASSERT_TRUE(QTest::qWaitFor([&] { return !view().currentLayout().tiles.empty(); }, 30000));
        browser().clearImages();
        browser().addImagesWithPaths({photoPath(0), photoPath(1), photoPath(2)});
        browser().selectIndex(1);
        const bool ready = QTest::qWaitFor([&] { return view().allTilesFilled() && view().tileWithTag(2); }, 30000);
        ASSERT_TRUE(ready) << view().currentLayout().tiles.size() << " tiles, filled " << view().allTilesFilled() << " count " << browser().count();
    }
    void TearDown() override
    {
        controller.reset();
        AppFixture::TearDown();
    }

    QString photoFolder() const { return dir.filePath(QStringLiteral("Photos")); }
    QString photoPath(int i) const { return QDir(photoFolder()).filePath(QStringLiteral("photo-%1.png").arg(i + 1)); }
    static void writePhoto(const QString &path, const QColor &colour)
    {
        QImage image(300, 200, QImage::Format_RGB32);
        image.fill(colour);
        ASSERT_TRUE(image.save(path, "PNG"));
    }

    ImageBrowserController &browser() const { return controller->imageBrowserController(); }
    TessaryView &view() const { return controller->mainWindow().tessaryView(); }
    ImageBrowserPanel &panel() const { return controller->mainWindow().imageBrowserPanel(); }

    // The look of photo `index` says it cannot be read: its tile and its thumbnail.
    bool looksUnreadable(qsizetype index) const
    {
        TessaryDataView *tile = view().tileWithTag(index);
        const QVariant state = panel().model().index(int(index)).data(ImageBrowserModel::ThumbnailStateRole);
        return tile && tile->imageView()->isUnreadable() && state.toInt() == ImageBrowserModel::ThumbnailFailed;
    }
    static QList<QMessageBox *> alertsShown()
    {
        QList<QMessageBox *> boxes;
        for (QWidget *w : QApplication::topLevelWidgets()) {
            if (auto *box = qobject_cast<QMessageBox *>(w); box && box->isVisible())
                boxes << box;
        }
        return boxes;
    }
    static void answer(QMessageBox *box) { QTest::mouseClick(box->buttons().first(), Qt::LeftButton); }

    std::unique_ptr<HalvernDesktopController> controller;
};

// A listed photo deleted, or replaced by something that is no picture, while the person looks
// at the result window: the alert comes up over that window in the program's words, the photo
// looks unreadable everywhere (the preview gives the reason) until it leaves the list, and the
// rest of the list stays, in the store too. The file itself is left alone. (Which changes of a
// file are seen, and the reason each unreadable file gives, are the file watcher's and the
// cache loader's tests.)
TEST_F(ListedPhotoFaultsTest, ASpoiledPhotoIsToldAndLeavesTheList)
{
    const struct {
        const char *what;
        std::function<void(const QString &path)> spoil;
        const char *word;   // in the alert
        const char *reason; // in the preview
    } cases[] = {
        {"deleted", [](const QString &path) { QFile::remove(path); }, "deleted", "no such file"},
        {"replaced by a non-picture saved over it",
         [](const QString &path) {
             ASSERT_TRUE(testimages::writeFile(path + QStringLiteral(".new"), "<html>not a photo</html>"));
             ASSERT_TRUE(::rename(QFile::encodeName(path + QStringLiteral(".new")).constData(), QFile::encodeName(path).constData()) == 0);
         },
         "modified", "is not a picture"},
    };
    controller->displayResult(QImage(QSize(40, 30), QImage::Format_RGB32), true);
    ResultWindow &result = controller->resultWindow();
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        const QString spoiled = photoPath(1);
        if (browser().count() < 3) {
            writePhoto(spoiled, Qt::darkYellow);
            browser().insertImage(spoiled, 1);
        }
        ASSERT_TRUE(QTest::qWaitFor([&] { return panel().preview().state() == PhotoPreview::State::Shown; }, 5000));
        result.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&result, 5000));

        c.spoil(spoiled);
        ASSERT_TRUE(QTest::qWaitFor([&] { return alertsShown().size() == 1; }, 5000));
        QMessageBox *alert = alertsShown().first();
        EXPECT_EQ(alert->text(), ImageBookmarks::changeMessage(spoiled, QLatin1String(c.word))) << alert->text().toStdString();
        EXPECT_EQ(alert->informativeText(), QStringLiteral("You may reload another image to replace it."));
        EXPECT_EQ(alert->parentWidget()->window(), &result) << "over the window the person looks at";

        EXPECT_TRUE(QTest::qWaitFor([&] { return looksUnreadable(1); }, 5000));
        EXPECT_TRUE(QTest::qWaitFor([&] { return panel().preview().state() == PhotoPreview::State::Unreadable; }, 5000));
        EXPECT_TRUE(panel().preview().reason().contains(QLatin1String(c.reason))) << panel().preview().reason().toStdString();
        EXPECT_TRUE(panel().preview().reason().contains(QStringLiteral("\u201cphoto-2.png\u201d")));
        EXPECT_TRUE(view().tileWithTag(0)->imageView()->image().isNull() == false) << "the other photos stay";

        answer(alert);
        ASSERT_TRUE(QTest::qWaitFor([&] { return browser().count() == 2; }, 5000));
        EXPECT_EQ(browser().images(), (QStringList{photoPath(0), photoPath(2)}));
        const QVariantList stored = defaults->arrayForKey(Preferences::Bookmarks);
        ASSERT_EQ(stored.size(), 2);
        EXPECT_EQ(stored.at(0).toByteArray(), QFile::encodeName(photoPath(0)));
        EXPECT_EQ(stored.at(1).toByteArray(), QFile::encodeName(photoPath(2)));
        EXPECT_EQ(QFile::exists(spoiled), std::string(c.what) != "deleted") << "another program's file is not Tessary's to delete";
        QFile::remove(spoiled + QStringLiteral(".new"));
        EXPECT_TRUE(alertsShown().isEmpty());
    }
}

// Make Collage with photos that cannot be read: the result shows the rest, and one alert over
// the result window names every photo left empty with its reason.
TEST_F(ListedPhotoFaultsTest, MakeCollageTellsOnceWhichPhotosWereLeftEmpty)
{
    const QString notes = QDir(photoFolder()).filePath(QStringLiteral("notes.jpg"));
    ASSERT_TRUE(testimages::writeFile(notes, "not a photo"));
    const QString huge = QDir(photoFolder()).filePath(QStringLiteral("huge.jpg"));
    ASSERT_TRUE(testimages::writeFile(huge, testimages::jpegClaiming(20000, 10000)));
    browser().addImagesWithPaths({notes, huge});
    ASSERT_TRUE(QTest::qWaitFor([&] { return view().allTilesFilled() && looksUnreadable(3) && looksUnreadable(4); }, 30000));
    EXPECT_FALSE(looksUnreadable(0));

    controller->imageCollage();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !alertsShown().isEmpty(); }, 30000));
    QTest::qWait(200);
    const QList<QMessageBox *> alerts = alertsShown();
    ASSERT_EQ(alerts.size(), 1) << "one alert, not one per photo";
    EXPECT_EQ(alerts.first()->parentWidget()->window(), &controller->resultWindow());
    EXPECT_EQ(alerts.first()->text(), QStringLiteral("2 photos cannot be read; their tiles were left empty."));
    const QStringList lines = alerts.first()->informativeText().split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines[0].startsWith(QStringLiteral("Photo 4: \u201cnotes.jpg\u201d is not a picture"))) << lines[0].toStdString();
    EXPECT_TRUE(lines[1].startsWith(QStringLiteral("Photo 5: \u201chuge.jpg\u201d is 20000 x 10000 pixels"))) << lines[1].toStdString();
    answer(alerts.first());
}

} // namespace

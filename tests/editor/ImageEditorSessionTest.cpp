#include "editor/ImageEditorSession.h"

#include "foundation/ImagesFolder.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageBrowserSelection.h"

#include "support/PhotoListFixture.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

namespace {

// Which photo a request to edit opens, and how the edited picture goes back into the list,
// without any window.
class ImageEditorSessionTest : public PhotoListFixture
{
protected:
    void SetUp() override
    {
        PhotoListFixture::SetUp();
        skipFirstRun();
        browser = std::make_unique<ImageBrowserController>(*defaults, resources(), alerts);
        // The same file twice: two entries, two URL objects.
        const QString photo = makeFile(QStringLiteral("a.jpg"));
        browser->addImagesWithPaths({photo, makeFile(QStringLiteral("b.jpg")), photo});
        ASSERT_EQ(browser->count(), 3);
        session = std::make_unique<ImageEditorSession>(*browser);
    }

    std::unique_ptr<ImageBrowserController> browser;
    std::unique_ptr<ImageEditorSession> session;
};

TEST_F(ImageEditorSessionTest, TheActionForTheSelectionGoesByTheIdentityOfItsUrl)
{
    ImageBookmarks &list = browser->imageBookmarks();
    using Action = ImageEditorSession::EditAction;
    const struct {
        const char *name;
        qsizetype editing;  // -1: nothing open
        qsizetype selected; // -1: no selection
        Action action;
    } cases[] = {{"nothing selected", -1, -1, Action::Nothing},
                 {"nothing open", -1, 0, Action::Begin},
                 {"the photo open", 0, 0, Action::Nothing},
                 {"another photo", 0, 1, Action::AskFirst},
                 {"the same file in another entry", 0, 2, Action::AskFirst}};
    for (const auto &c : cases) {
        session->setEditingURL(c.editing >= 0 ? list.urlAtIndex(c.editing) : nullptr);
        browser->selection().select(c.selected);
        ImageBookmarks::UrlRef url;
        EXPECT_EQ(session->actionForSelection(&url), c.action) << c.name;
        if (c.selected >= 0) {
            EXPECT_EQ(url, list.urlAtIndex(c.selected)) << c.name;
        }
    }
}

TEST_F(ImageEditorSessionTest, ReplacingPutsTheFileInTheEntryOrBeepsAndDeletesIt)
{
    ImageBookmarks &list = browser->imageBookmarks();
    session->setEditingURL(list.urlAtIndex(2));
    const QString edited = ImageEditorSession::writeEditedImage(testimages::gradient(20, 10));
    ASSERT_TRUE(ImagesFolder::isOwned(edited));
    EXPECT_TRUE(session->replaceWithEditedFile(edited));
    EXPECT_EQ(list.pathAtIndex(2), edited);
    EXPECT_EQ(session->editingURL(), list.urlAtIndex(2));
    EXPECT_EQ(session->editingPath(), edited);
    EXPECT_EQ(list.pathAtIndex(0), dir.filePath(QStringLiteral("photos/a.jpg"))); // the other entry of the file stays

    // The entry is gone: nothing replaced, a beep, no file left behind.
    browser->removeItemsAtIndexes({2}, true);
    const QString orphan = ImageEditorSession::writeEditedImage(testimages::gradient(20, 10));
    ASSERT_FALSE(orphan.isEmpty());
    const int beeps = alerts.beeps;
    EXPECT_FALSE(session->replaceWithEditedFile(orphan));
    EXPECT_EQ(alerts.beeps, beeps + 1);
    EXPECT_FALSE(QFile::exists(orphan));
    EXPECT_EQ(browser->count(), 2);
    // No picture: nothing written.
    EXPECT_TRUE(ImageEditorSession::writeEditedImage(QImage()).isEmpty());
}

} // namespace

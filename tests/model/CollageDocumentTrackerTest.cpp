#include "model/CollageDocumentTracker.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace {

// Whether the collage has unsaved changes: only against an open document, and only while what
// would be written differs from what was saved or opened (a change undone is no change).
TEST(CollageDocumentTracker, UnsavedMeansDifferentFromTheDocument)
{
    QTemporaryDir dir;
    CollageDocument saved;
    saved.templateData = {{QStringLiteral("nbrModules"), qint64(2)}};
    saved.setPhotos({dir.filePath(QStringLiteral("a.jpg")), dir.filePath(QStringLiteral("b.jpg"))}, {0, 0});

    CollageDocumentTracker tracker;
    CollageDocument changed = saved;
    changed.imageFrameStyle = 3;
    EXPECT_FALSE(tracker.update(changed)) << "the working collage has no document to differ from";
    EXPECT_FALSE(tracker.isModified());

    tracker.becomeCurrent(dir.filePath(QStringLiteral("c.tessary")), saved);
    EXPECT_EQ(tracker.path(), dir.filePath(QStringLiteral("c.tessary")));
    const struct {
        const char *name;
        std::function<void(CollageDocument &)> change;
    } cases[] = {
        {"template", [](CollageDocument &d) { d.templateData.insert(QStringLiteral("borderWidth"), qint64(4)); }},
        {"photo order", [](CollageDocument &d) { std::swap(d.photos[0], d.photos[1]); }},
        {"alignment", [](CollageDocument &d) { d.photos[1].alignment = 3; }},
        {"transform", [](CollageDocument &d) { d.coordinateTransform = 1; }},
        {"spacing", [](CollageDocument &d) { d.widthIncrement = 6; }},
        {"background", [](CollageDocument &d) { d.backgroundColor = Qt::red; }},
        {"jumbled", [](CollageDocument &d) {
             d.jumbled = true;
             d.jumbledFrames = {QRectF(0.1, 0.1, 0.5, 0.5)};
         }},
    };
    for (const auto &c : cases) {
        CollageDocument current = saved;
        c.change(current);
        EXPECT_TRUE(tracker.update(current)) << c.name;
        EXPECT_TRUE(tracker.isModified()) << c.name;
        EXPECT_FALSE(tracker.update(current)) << c.name << ": no change of state the second time";
        EXPECT_TRUE(tracker.update(saved)) << c.name;
        EXPECT_FALSE(tracker.isModified()) << c.name << ": undone";
    }

    // Saving the changed collage makes it the document's content; forgetting the document
    // leaves nothing unsaved.
    tracker.update(changed);
    tracker.becomeCurrent(tracker.path(), changed);
    EXPECT_FALSE(tracker.isModified());
    tracker.update(saved);
    ASSERT_TRUE(tracker.isModified());
    tracker.clear();
    EXPECT_FALSE(tracker.hasDocument());
    EXPECT_FALSE(tracker.isModified());
}

} // namespace

#include "editor/EditDocument.h"

#include "support/ExifJpeg.h"
#include "support/TestImages.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

QImage applied(QImage image, const QList<EditOperation> &ops)
{
    for (const EditOperation &op : ops)
        image = op.apply(image);
    return image;
}

const QList<EditOperation> kHistory = {
    EditOperation::cropTo(QRect(10, 5, 150, 90)),
    EditOperation::turn(EditOperation::TurnRight),
    EditOperation::straighten(5),
    EditOperation::annotate({Annotation{Annotation::Rectangle, Qt::red, 3, {{5, 5}, {40, 40}}, {}}}),
};

// The same history worked out at once and on a worker thread: going back and forth through it
// shows exactly the pixels of applying the first n edits to the source.
class EditDocumentTest : public ::testing::TestWithParam<qint64> {};

TEST_P(EditDocumentTest, EveryStepOfTheHistoryHasExactlyItsPixels)
{
    EditDocument document;
    document.setSynchronousPixelLimit(GetParam());
    const QImage source = testimages::gradient(200, 120);
    document.setSource(source);
    const auto settle = [&] { return QTest::qWaitFor([&] { return !document.isBusy(); }, 5000); };
    for (int i = 0; i < kHistory.size(); ++i) {
        document.setOperation(i, kHistory.at(i));
        EXPECT_EQ(document.targetSize(), applied(source, kHistory.mid(0, i + 1)).size());
        ASSERT_TRUE(settle());
    }
    // Back (undo) and forth (redo), in an order that uses and misses the remembered steps.
    for (int count : {3, 0, 4, 1, 2, 0, 4}) {
        document.setCount(count);
        ASSERT_TRUE(settle());
        EXPECT_EQ(document.image(), applied(source, kHistory.mid(0, count))) << "after " << count << " edits";
    }
    EXPECT_EQ(document.image(), applied(source, kHistory));
}

INSTANTIATE_TEST_SUITE_P(Threads, EditDocumentTest, ::testing::Values(qint64(EditDocument::kSynchronousPixels), qint64(0)),
                         [](const auto &info) { return info.param ? std::string("AtOnce") : std::string("OnAWorker"); });

TEST(EditDocumentOrderTest, ANewEditDropsTheUndoneOnesAndALaterRequestWins)
{
    EditDocument document;
    document.setSynchronousPixelLimit(0);
    const QImage source = testimages::quarters(80, 60);
    document.setSource(source);
    QSignalSpy changed(&document, &EditDocument::imageChanged);
    document.setOperation(0, EditOperation::turn(EditOperation::TurnRight));
    document.setOperation(1, EditOperation::turn(EditOperation::FlipHorizontal));
    // Taken back before either is worked out: only the last request shows.
    document.setCount(1);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !document.isBusy(); }, 5000));
    EXPECT_EQ(testimages::quarterColours(document.image()), QStringLiteral("BRWG"));
    EXPECT_EQ(changed.count(), 1);
    // A new edit after an undo replaces the undone one.
    document.setOperation(1, EditOperation::turn(EditOperation::TurnRight));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !document.isBusy(); }, 5000));
    EXPECT_EQ(document.operations().size(), 2);
    EXPECT_EQ(testimages::quarterColours(document.image()), QStringLiteral("WBGR"));
    // A new photo forgets everything.
    document.setSource(source);
    EXPECT_EQ(document.count(), 0);
    EXPECT_TRUE(document.operations().isEmpty());
    EXPECT_EQ(document.image(), source);
}

} // namespace

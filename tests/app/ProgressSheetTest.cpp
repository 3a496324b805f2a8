#include "app/blend/ProgressSheet.h"

#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// Past 0.99 (as a float) the bar is in its final, unmeasured stage; up to it, measured.
TEST(ProgressSheet, MainBarTurnsIndeterminateOnlyPast099)
{
    QWidget window;
    ProgressSheet sheet(&window);
    sheet.prepareForStitch();
    const struct {
        double value;
        bool indeterminate;
    } cases[] = {{0.0, false}, {0.5, false}, {0.99, false}, {0.991, true}, {1.0, true}, {0.3, false}};
    for (const auto &c : cases) {
        sheet.updateProgressBar(c.value);
        EXPECT_EQ(sheet.isProgressBarIndeterminate(), c.indeterminate) << c.value;
        EXPECT_EQ(sheet.progressBarValue(), c.value);
    }
}

// Preparing clears what the last blend showed and starts the spinner; Abort reports itself for
// the work to stop, Escape does nothing; ending it orders it out.
TEST(ProgressSheet, PreparedSheetStaysUpUntilEnded)
{
    QWidget window;
    window.resize(500, 400);
    window.show();
    ProgressSheet sheet(&window);
    sheet.updateProgressMessage(QStringLiteral("old"));
    QImage picture(40, 30, QImage::Format_RGB32);
    picture.fill(Qt::red);
    sheet.displayImage(picture);
    sheet.updateProgressBar(1.0);

    sheet.prepareForStitch();
    sheet.open();
    ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.isVisible(); }, 2000));
    EXPECT_TRUE(sheet.message().isEmpty());
    EXPECT_TRUE(sheet.image().isNull());
    EXPECT_FALSE(sheet.isProgressBarIndeterminate());
    EXPECT_EQ(sheet.progressBar()->value(), 0);
    EXPECT_TRUE(sheet.progressBar()->isVisible());
    EXPECT_FALSE(sheet.subProgressBar()->isVisible());
    EXPECT_EQ(sheet.indeterminateProgressBar()->maximum(), 0) << "spinner turning";
    EXPECT_EQ(sheet.windowModality(), Qt::WindowModal);

    QSignalSpy aborted(&sheet, &ProgressSheet::aborted);
    QTest::mouseClick(sheet.abortButton(), Qt::LeftButton);
    EXPECT_EQ(aborted.size(), 1);
    QTest::keyClick(&sheet, Qt::Key_Escape);
    EXPECT_TRUE(sheet.isVisible());
    sheet.endSheet();
    EXPECT_FALSE(sheet.isVisible());
}

} // namespace

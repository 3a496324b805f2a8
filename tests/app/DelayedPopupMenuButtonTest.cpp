#include "widgets/DelayedPopupMenuButton.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// A quick click (released at once) opens the blend menu 0.6 seconds after the press; the
// button itself never sends its click; each item of the menu asks for its blend.
TEST(DelayedPopupMenuButton, QuickClickOpensTheBlendMenuWhoseItemsAskForTheirBlend)
{
    QWidget window;
    window.resize(300, 200);
    auto *button = new DelayedPopupMenuButton(QStringLiteral("Blend"), &window);
    button->move(50, 120);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QSignalSpy clicked(button, &QPushButton::clicked);
    QSignalSpy bottomToTop(button, &DelayedPopupMenuButton::stitchBottomToTop);
    QSignalSpy leftToRight(button, &DelayedPopupMenuButton::stitchLeftToRight);
    QSignalSpy square(button, &DelayedPopupMenuButton::stitchSquare);
    QSignalSpy *spies[] = {&bottomToTop, &leftToRight, &square};
    for (int item = 0; item < 3; ++item) {
        QTest::mousePress(button, Qt::LeftButton);
        EXPECT_GT(button->mouseDownTime(), 0.0);
        EXPECT_TRUE(button->isDown());
        QTest::mouseRelease(button, Qt::LeftButton);
        if (item == 0)
            EXPECT_EQ(button->menu(), nullptr) << "not before the hold time";
        ASSERT_TRUE(QTest::qWaitFor([&] { return button->menu() && button->menu()->isVisible(); }, 3000));
        EXPECT_FALSE(button->isDown());
        button->menu()->actions().at(item)->trigger();
        button->menu()->close();
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(spies[i]->size(), i <= item ? 1 : 0) << "item " << item << " signal " << i;
    }
    EXPECT_EQ(clicked.size(), 0);
}

} // namespace

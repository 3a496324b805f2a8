#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QTest>

#include <gtest/gtest.h>

#include <utility>

// The dialogs a window test waits for and answers as a person would: found among the visible
// top-level widgets, each wait limited.
namespace Dialogs {

// The first visible top-level dialog of the kind, waited for up to five seconds.
template <typename Dialog>
Dialog *waitFor()
{
    Dialog *found = nullptr;
    (void)QTest::qWaitFor([&] {
        for (QWidget *w : QApplication::topLevelWidgets())
            if (auto *d = qobject_cast<Dialog *>(w); d && d->isVisible() && !found)
                found = d;
        return found != nullptr;
    }, 5000);
    return found;
}

// No dialog of the kind shows, once pending events are through.
template <typename Dialog>
bool noneShown()
{
    QTest::qWait(20);
    for (QWidget *w : QApplication::topLevelWidgets())
        if (qobject_cast<Dialog *>(w) && w->isVisible())
            return false;
    return true;
}

// Answers the open message box with the button of that text (the first button when empty);
// returns the box's text and informative text.
inline std::pair<QString, QString> answer(const QString &button = {})
{
    QMessageBox *box = waitFor<QMessageBox>();
    if (!box) {
        ADD_FAILURE() << "no message box for " << button.toStdString();
        return {};
    }
    const std::pair<QString, QString> texts{box->text(), box->informativeText()};
    QAbstractButton *chosen = button.isEmpty() && !box->buttons().isEmpty() ? box->buttons().first() : nullptr;
    for (QAbstractButton *b : box->buttons())
        if (!button.isEmpty() && b->text() == button)
            chosen = b;
    EXPECT_NE(chosen, nullptr) << button.toStdString();
    if (chosen)
        chosen->click();
    const QPointer<QMessageBox> open(box);
    EXPECT_TRUE(QTest::qWaitFor([open] { return !open || !open->isVisible(); }, 2000));
    return texts;
}

} // namespace Dialogs

#pragma once

#include "foundation/AlertPresenter.h"

#include <QPointer>
#include <QWidget>

// Alerts as window-modal message boxes, opened with open() so nothing waits for the answer:
// the completion receives it later. The default button answers 1, the alternate 0 and the
// other -1.
//
// An alert comes up over the window the person is looking at: the program's active window (the
// result window, the editor), or the window that owns any sheet or dialog that is active, so an
// alert never hides behind another window of the program and never dies with a closing dialog.
// When none of the program's windows is active it goes on the parent window given; without one
// (before it exists) the box is application-modal.
class MessageBoxAlertPresenter : public AlertPresenter
{
public:
    void setParentWindow(QWidget *window) { m_window = window; }
    void presentAlert(const Alert &alert, std::function<void(int response)> completion) override;
    void beep() override;

    // The alert over `window` (null: application-modal).
    void presentAlertOn(QWidget *window, const Alert &alert, std::function<void(int response)> completion);
    // The window an alert goes over now.
    QWidget *windowForAlerts() const;

private:
    QPointer<QWidget> m_window;
};

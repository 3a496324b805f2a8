#pragma once

#include "foundation/AlertPresenter.h"

#include <QPointer>
#include <QWidget>

// Alerts as window-modal message boxes on the main window, opened with open() so nothing waits
// for the answer: the completion receives it later. The default button answers 1, the alternate
// 0 and the other -1. Without a window (before it exists) the box is application-modal.
class MessageBoxAlertPresenter : public AlertPresenter
{
public:
    void setParentWindow(QWidget *window) { m_window = window; }
    void presentAlert(const Alert &alert, std::function<void(int response)> completion) override;
    void beep() override;

private:
    QPointer<QWidget> m_window;
};

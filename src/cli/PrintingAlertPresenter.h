#pragma once

#include "foundation/AlertPresenter.h"

#include <QTextStream>

// Alerts on a terminal: the message and its informative text are printed on the error stream
// and answered at once with the default button. Counts what it showed, so a command can end
// with a failing exit code after an alert.
class PrintingAlertPresenter : public AlertPresenter
{
public:
    explicit PrintingAlertPresenter(QTextStream &err) : m_err(err) {}

    void presentAlert(const Alert &alert, std::function<void(int response)> completion) override;
    void beep() override {}

    int alertCount() const { return m_alertCount; }

private:
    QTextStream &m_err;
    int m_alertCount = 0;
};

#pragma once

#include "foundation/AlertPresenter.h"

#include <QList>

#include <deque>

// An alert presenter for tests: records every alert and beep, and answers each alert at once
// with the next scripted response (the default button when the script has run out). With
// autoAnswer cleared, the completions wait in `pending` until the test answers them.
class RecordingAlertPresenter : public AlertPresenter
{
public:
    void presentAlert(const Alert &alert, std::function<void(int response)> completion) override
    {
        alerts.append(alert);
        if (!autoAnswer) {
            pending.append(std::move(completion));
            return;
        }
        int response = DefaultButton;
        if (!responses.empty()) {
            response = responses.front();
            responses.pop_front();
        }
        if (completion)
            completion(response);
    }
    void beep() override { ++beeps; }

    std::deque<int> responses;
    bool autoAnswer = true;
    QList<Alert> alerts;
    QList<std::function<void(int)>> pending;
    int beeps = 0;
};

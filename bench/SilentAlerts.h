#pragma once

#include "foundation/AlertPresenter.h"

// Benchmarks answer every alert with its default button at once and never beep.
class SilentAlerts : public AlertPresenter
{
public:
    void presentAlert(const Alert &, std::function<void(int)> completion) override
    {
        if (completion)
            completion(DefaultButton);
    }
    void beep() override {}
};

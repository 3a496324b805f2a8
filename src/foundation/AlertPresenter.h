#pragma once

#include <QString>

#include <functional>

// How logic asks the user something or tells them something, without knowing about windows.
// The window shows a window-modal message box; the command line prints; tests record.
//
// Answers: the default button is 1, the alternate button 0, the other button -1.
class AlertPresenter
{
public:
    enum class Style { Warning, Informational, Critical };
    enum Response { DefaultButton = 1, AlternateButton = 0, OtherButton = -1 };

    struct Alert {
        QString messageText;
        QString informativeText;
        QString defaultButton = QStringLiteral("OK");
        QString alternateButton; // empty: no such button
        QString otherButton;     // empty: no such button
        Style style = Style::Warning;
    };

    virtual ~AlertPresenter() = default;
    // Shows the alert; completion (may be empty) receives the answer later, on the main thread.
    virtual void presentAlert(const Alert &alert, std::function<void(int response)> completion) = 0;
    // The system beep.
    virtual void beep() = 0;
};

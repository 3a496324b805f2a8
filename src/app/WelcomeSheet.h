#pragma once

#include <QDialog>

class QCheckBox;
class UserDefaults;

// The sheet shown over the main window at launch: what Tessary does in three lines, a "Don't
// show this again" check box that writes "DoNotShowWelcomeWindowAgain" the moment it changes, a
// "Visit Website" button and OK. Window-modal; open it with open().
class WelcomeSheet : public QDialog
{
    Q_OBJECT
public:
    explicit WelcomeSheet(UserDefaults &defaults, QWidget *parent = nullptr);

    QCheckBox *dontShowAgainCheckbox() const { return m_dontShowAgain; }

signals:
    // "Visit Website" was pressed: the sheet has ended and the controller opens the site.
    void visitWebsiteRequested();

private:
    UserDefaults &m_defaults;
    QCheckBox *m_dontShowAgain;
};

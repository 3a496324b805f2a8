#pragma once

#include <QString>

#include <functional>

class QMessageBox;
class QWidget;

// The question asked before something is lost (a file replaced): a warning over the window,
// window-modal, with the question, what it means, the button that goes ahead and Cancel, which
// is the default and what Escape answers. The box deletes itself once answered.
class ConfirmAlert
{
public:
    // Opens the question over `parent`; `confirmed` runs when the person clicks `action`.
    // Returns the box, for naming and for tests that answer it.
    static QMessageBox *open(QWidget *parent, const QString &question, const QString &informative,
                             const QString &action, std::function<void()> confirmed);
};

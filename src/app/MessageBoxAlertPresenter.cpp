#include "app/MessageBoxAlertPresenter.h"

#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>

QWidget *MessageBoxAlertPresenter::windowForAlerts() const
{
    // Dialogs (sheets, file dialogs, other alerts) may close and delete themselves any moment:
    // the alert goes over the window that owns them.
    QWidget *window = QApplication::activeWindow();
    while (window && qobject_cast<QDialog *>(window))
        window = window->parentWidget() ? window->parentWidget()->window() : nullptr;
    return window ? window : m_window.data();
}

void MessageBoxAlertPresenter::presentAlert(const Alert &alert, std::function<void(int response)> completion)
{
    presentAlertOn(windowForAlerts(), alert, std::move(completion));
}

void MessageBoxAlertPresenter::presentAlertOn(QWidget *window, const Alert &alert,
                                              std::function<void(int response)> completion)
{
    auto *box = new QMessageBox(window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(window ? Qt::WindowModal : Qt::ApplicationModal);
    box->setText(alert.messageText);
    box->setInformativeText(alert.informativeText);
    switch (alert.style) {
    case Style::Informational:
        box->setIcon(QMessageBox::Information);
        break;
    case Style::Critical:
        box->setIcon(QMessageBox::Critical);
        break;
    case Style::Warning:
        box->setIcon(QMessageBox::Warning);
        break;
    }
    QPushButton *defaultButton = box->addButton(alert.defaultButton, QMessageBox::AcceptRole);
    QPushButton *alternateButton =
        alert.alternateButton.isEmpty() ? nullptr : box->addButton(alert.alternateButton, QMessageBox::RejectRole);
    QPushButton *otherButton =
        alert.otherButton.isEmpty() ? nullptr : box->addButton(alert.otherButton, QMessageBox::DestructiveRole);
    box->setDefaultButton(defaultButton);
    // Escape answers the alternate button where there is one, else the default.
    box->setEscapeButton(alternateButton ? alternateButton : defaultButton);
    QObject::connect(box, &QMessageBox::finished, box, [box, defaultButton, alternateButton, otherButton, completion](int) {
        if (!completion)
            return;
        QAbstractButton *clicked = box->clickedButton();
        int response = AlertPresenter::DefaultButton;
        if (clicked && clicked == alternateButton)
            response = AlertPresenter::AlternateButton;
        else if (clicked && clicked == otherButton)
            response = AlertPresenter::OtherButton;
        else if (!clicked && alternateButton)
            response = AlertPresenter::AlternateButton;
        Q_UNUSED(defaultButton);
        completion(response);
    });
    box->open();
}

void MessageBoxAlertPresenter::beep()
{
    QApplication::beep();
}

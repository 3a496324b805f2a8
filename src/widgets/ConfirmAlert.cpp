#include "widgets/ConfirmAlert.h"

#include <QMessageBox>
#include <QPushButton>

QMessageBox *ConfirmAlert::open(QWidget *parent, const QString &question, const QString &informative,
                                const QString &action, std::function<void()> confirmed)
{
    auto *box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(QMessageBox::Warning);
    box->setText(question);
    box->setInformativeText(informative);
    QPushButton *goAhead = box->addButton(action, QMessageBox::DestructiveRole);
    QPushButton *cancel = box->addButton(QMessageBox::Cancel);
    box->setDefaultButton(cancel);
    box->setEscapeButton(cancel);
    QObject::connect(box, &QMessageBox::finished, box, [box, goAhead, confirmed = std::move(confirmed)] {
        if (box->clickedButton() == goAhead && confirmed)
            confirmed();
    });
    box->open();
    return box;
}

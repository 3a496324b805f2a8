#pragma once

#include "support/Dialogs.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QPointer>
#include <QTest>

#include <gtest/gtest.h>

// Qt's own file dialog answered as a person would: the folder, the names typed into its name
// field (quoted when several), then Choose.
namespace FileDialogs {

// Waits for the open file dialog and answers it; returns the dialog's title.
inline QString choose(const QString &folder, const QStringList &names)
{
    QFileDialog *dialog = Dialogs::waitFor<QFileDialog>();
    if (!dialog) {
        ADD_FAILURE() << "no file dialog";
        return {};
    }
    const QString title = dialog->windowTitle();
    dialog->setDirectory(folder);
    QStringList quoted;
    for (const QString &n : names)
        quoted << (names.size() > 1 ? QStringLiteral("\"%1\"").arg(n) : n);
    if (auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
        edit->setText(quoted.join(QLatin1Char(' ')));
    QMetaObject::invokeMethod(dialog, "accept"); // the Choose button
    const QPointer<QFileDialog> open(dialog);
    EXPECT_TRUE(QTest::qWaitFor([open] { return !open || !open->isVisible(); }, 2000));
    return title;
}

} // namespace FileDialogs

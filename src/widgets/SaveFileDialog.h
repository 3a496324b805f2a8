#pragma once

#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>

class UserDefaults;

// Qt's own save dialog (window-modal, so tests drive it) that asks before replacing a file, and
// asks about the very file that will be written: `targetFor` turns the name typed into the path
// written, and when that file exists a window-modal question ("Replace" or "Cancel") comes first.
// With a defaults store it opens in the folder of the last save ("LastSaveFolder") and records
// the folder of each save there, so the next dialog of any kind starts where the last one ended.
class SaveFileDialog : public QFileDialog
{
    Q_OBJECT
public:
    // `defaults` may be null: no folder is remembered.
    SaveFileDialog(QWidget *parent, const QString &title, UserDefaults *defaults = nullptr);

    // Opens in the folder of the last save, or in `fallback` when there is none.
    void startInLastSaveFolder(const QString &fallback);
    // The path written, once accepted.
    QString targetPath() const { return m_target; }
    // The open replace question, if any.
    QMessageBox *replaceQuestion() const { return m_question; }

signals:
    // Accepted: write to `path` (asked about when it existed).
    void targetChosen(const QString &path);

public slots:
    void accept() override;

protected:
    // The path a typed name writes to; the name as Qt gives it (with its default suffix) here.
    virtual QString targetFor(const QString &typed) { return typed; }

private:
    void askToReplace(const QString &path);

    UserDefaults *m_defaults;
    QString m_target;
    QString m_confirmed;
    QPointer<QMessageBox> m_question;
};

#include "widgets/SaveFileDialog.h"

#include "foundation/Preferences.h"
#include "widgets/ConfirmAlert.h"

#include <QDir>
#include <QFileInfo>
#include <QMessageBox>

SaveFileDialog::SaveFileDialog(QWidget *parent, const QString &title, UserDefaults *defaults)
    : QFileDialog(parent, title)
    , m_defaults(defaults)
{
    setOption(QFileDialog::DontUseNativeDialog);
    // The question is asked here, about the file that will be written, not about the name typed.
    setOption(QFileDialog::DontConfirmOverwrite);
    setAcceptMode(QFileDialog::AcceptSave);
    setFileMode(QFileDialog::AnyFile);
    setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
}

void SaveFileDialog::startInLastSaveFolder(const QString &fallback)
{
    const QString last = m_defaults ? Preferences(*m_defaults).lastSaveFolder() : QString();
    setDirectory(!last.isEmpty() ? last : fallback);
}

void SaveFileDialog::accept()
{
    if (m_question)
        return;
    const QStringList files = selectedFiles();
    const QString typed = files.isEmpty() ? QString() : files.first();
    if (typed.isEmpty() || QFileInfo(typed).isDir()) {
        QFileDialog::accept(); // a folder typed: Qt goes into it
        return;
    }
    const QString target = targetFor(typed);
    if (target != m_confirmed && QFileInfo::exists(target)) {
        askToReplace(target);
        return;
    }
    m_target = target;
    if (m_defaults)
        Preferences(*m_defaults).setLastSaveFolder(QFileInfo(target).absolutePath());
    QFileDialog::accept();
    emit targetChosen(target);
}

void SaveFileDialog::askToReplace(const QString &path)
{
    const QFileInfo info(path);
    m_question = ConfirmAlert::open(
        this, tr("“%1” already exists. Do you want to replace it?").arg(info.fileName()),
        tr("A file with the same name already exists in “%1”. Replacing it overwrites its contents.")
            .arg(QDir::toNativeSeparators(info.absolutePath())),
        tr("Replace"), [this, path] {
            m_question = nullptr;
            m_confirmed = path;
            accept();
        });
    m_question->setObjectName(QStringLiteral("replaceQuestion"));
    // Answered either way, the dialog takes its own answers again.
    connect(m_question, &QMessageBox::finished, this, [this] { m_question = nullptr; });
}

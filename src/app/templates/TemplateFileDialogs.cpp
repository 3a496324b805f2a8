#include "app/templates/TemplateFileDialogs.h"

#include "widgets/SaveFileDialog.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>

namespace {

QFileDialog *makeDialog(QWidget *parent, const QString &title)
{
    auto *dialog = new QFileDialog(parent, title);
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    return dialog;
}

} // namespace

void TemplateFileDialogs::chooseTemplateFiles(QWidget *parent, const std::function<void(const QStringList &)> &chosen)
{
    QFileDialog *dialog = makeDialog(parent, QStringLiteral("Choose Template File"));
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setNameFilter(QObject::tr("Template files (*.plist)"));
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("Choose"));
    // Qt's dialog has no message line of its own: the message goes under the file list.
    if (auto *grid = qobject_cast<QGridLayout *>(dialog->layout())) {
        auto *message = new QLabel(QStringLiteral("Pick template file created in Tessary iOS."));
        message->setObjectName(QStringLiteral("chooseTemplateFileMessage"));
        grid->addWidget(message, grid->rowCount(), 0, 1, grid->columnCount());
    }
    QObject::connect(dialog, &QFileDialog::filesSelected, dialog, [chosen](const QStringList &files) { chosen(files); });
    dialog->open();
}

void TemplateFileDialogs::chooseDestinationFolder(QWidget *parent, const std::function<void(const QString &)> &chosen)
{
    QFileDialog *dialog = makeDialog(parent, QStringLiteral("Choose Destination:"));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("Choose"));
    QObject::connect(dialog, &QFileDialog::filesSelected, dialog, [chosen](const QStringList &folders) {
        if (!folders.isEmpty())
            chosen(folders.first());
    });
    dialog->open();
}

void TemplateFileDialogs::saveFile(QWidget *parent, const QString &proposedName, const QString &extension,
                                   const std::function<void(const QString &)> &chosen)
{
    // Asks before replacing, about the name with the extension Qt adds to it.
    auto *dialog = new SaveFileDialog(parent, QObject::tr("Save"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setNameFilter(QStringLiteral("%1 (*.%1)").arg(extension));
    dialog->setDefaultSuffix(extension);
    dialog->selectFile(proposedName);
    QObject::connect(dialog, &SaveFileDialog::targetChosen, dialog, [chosen](const QString &file) {
        if (!file.isEmpty())
            chosen(file);
    });
    dialog->open();
}

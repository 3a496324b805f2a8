#include "app/templates/TemplateActions.h"

#include "foundation/AlertPresenter.h"
#include "foundation/AtomicFileWriter.h"
#include "foundation/Log.h"
#include "templates/TemplateLinkInsertion.h"
#include "templates/TemplateStore.h"
#include "templates/TemplatesFile.h"
#include "app/templates/TemplateDownloadDialog.h"
#include "app/templates/TemplateFileDialogs.h"

#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>

TemplateActions::TemplateActions(TemplateStore &store, UserDefaults &defaults, AlertPresenter &alerts, QWidget *window)
    : QObject(window)
    , m_store(store)
    , m_alerts(alerts)
    , m_window(window)
    , m_editor(store, defaults, alerts)
    , m_exporter(store, alerts)
    , m_selection(store, defaults)
{
}

void TemplateActions::loadUserTemplates()
{
    m_editor.loadUserTemplates([this](bool replace) { presentChooseFileTemplatesDialog(replace); });
}

void TemplateActions::presentChooseFileTemplatesDialog(bool replace)
{
    TemplateFileDialogs::chooseTemplateFiles(m_window, [this, replace](const QStringList &paths) {
        importTemplateFiles(paths, replace);
    });
}

bool TemplateActions::importTemplateFiles(const QStringList &paths, bool replace)
{
    QStringList skipped;
    const bool added = m_editor.importTemplateFiles(paths, replace, &skipped);
    // A file that added nothing is named with its reason, even when others went in.
    if (!skipped.isEmpty())
        m_editor.notTemplateFileAlert([this] { loadUserTemplates(); }, skipped);
    return added;
}

void TemplateActions::clearAllUserTemplates()
{
    m_editor.clearAllUserTemplates();
}

TemplateSelection::MenuState TemplateActions::menuNeedsUpdate(TemplateTable table, qsizetype clickedRow) const
{
    return m_selection.menuNeedsUpdate(table, m_editor.copiedTemplateData() != nullptr, clickedRow);
}

void TemplateActions::cutTemplate(TemplateTable table)
{
    m_editor.cutTemplate(table);
}

void TemplateActions::copyTemplate(TemplateTable table, qsizetype clickedRow)
{
    m_editor.copyTemplate(table, clickedRow);
}

void TemplateActions::pasteTemplate(TemplateTable table, qsizetype clickedRow)
{
    m_editor.pasteTemplate(table, clickedRow);
}

void TemplateActions::deleteTemplate(TemplateEditor::DeleteSender sender, qsizetype clickedRow)
{
    m_editor.deleteTemplate(sender, clickedRow, [this](std::optional<qsizetype> next) {
        if (next)
            emit selectionAfterDelete(*next);
    });
}

void TemplateActions::downloadTemplate(const QUrl &link, qsizetype row)
{
    // Fetched without waiting, behind a window-modal progress sheet that can cancel it.
    const qsizetype before = m_store.userTemplates().size();
    TemplateDownloadDialog *dialog = TemplateDownloadDialog::download(m_editor, {link}, row, m_window);
    connect(dialog, &TemplateDownloadDialog::downloadFinished, this, [this, dialog, before](bool inserted) {
        if (inserted) {
            emit templatesAdded(m_store.userTemplates().size() - before);
        } else if (!dialog->insertion().wasCancelled()) {
            AlertPresenter::Alert alert;
            alert.messageText = QStringLiteral("Templates Not Loaded");
            alert.informativeText = dialog->insertion().errorString();
            alert.style = AlertPresenter::Style::Warning;
            m_alerts.beep();
            m_alerts.presentAlert(alert, {});
        }
        emit templateDownloadFinished(inserted);
    });
}

void TemplateActions::sortUserTemplates()
{
    m_editor.sortUserTemplates();
}

void TemplateActions::exportTemplates(TemplateTable table)
{
    m_exporter.exportTemplates(
        table,
        [this](const QVariantMap &file, const QString &name) {
            TemplateFileDialogs::saveFile(m_window, name, QStringLiteral("plist"), [this, file](const QString &path) {
                QString error;
                if (!TemplateExporter::writeTemplatesFile(path, file, &error))
                    tellNotWritten(path, error);
            });
        },
        [this] { saveAllIconsAndTemplates(); });
}

void TemplateActions::saveAllIconsAndTemplates()
{
    TemplateFileDialogs::chooseDestinationFolder(m_window, [this](const QString &folder) {
        const auto write = [this, folder] {
            const TemplateExporter::ManyFilesResult result = m_exporter.saveAllIconsAndTemplates(folder);
            if (!result.ok)
                tellNotWritten(QStringLiteral("Not every template file could be written into “%1”.").arg(folder),
                               QString());
        };
        const QStringList existing = m_exporter.existingManyFiles(folder);
        if (existing.isEmpty())
            return write();
        // Files of an earlier export are replaced only when the person says so.
        AlertPresenter::Alert alert;
        alert.messageText = existing.size() == 1
                                ? QStringLiteral("“%1” already exists. Do you want to replace it?").arg(existing.first())
                                : QStringLiteral("%1 of the files already exist in “%2”. Do you want to replace them?")
                                      .arg(existing.size())
                                      .arg(QFileInfo(folder).fileName());
        alert.informativeText = existing.mid(0, 6).join(QLatin1Char('\n')) + (existing.size() > 6 ? QStringLiteral("\n…") : QString());
        alert.defaultButton = QStringLiteral("Replace");
        alert.alternateButton = QStringLiteral("Cancel");
        m_alerts.presentAlert(alert, [write](int response) {
            if (response == AlertPresenter::DefaultButton)
                write();
        });
    });
}

void TemplateActions::tellNotWritten(const QString &what, const QString &reason)
{
    AlertPresenter::Alert alert;
    alert.messageText = reason.isEmpty() ? what
                                         : QStringLiteral("“%1” could not be saved.").arg(QFileInfo(what).fileName());
    alert.informativeText = reason;
    m_alerts.beep();
    m_alerts.presentAlert(alert, {});
}

void TemplateActions::exportTemplate(TemplateTable table, qsizetype clickedRow)
{
    // The clicked template is taken now: the store may change while the dialog is open.
    const TemplateStore::Template clicked = m_exporter.getTemplate(table, clickedRow);
    if (!clicked)
        return;
    const QString name = TemplateEditor::generateTemplateFileOrIconNameWithExtension(QStringLiteral(".plist"));
    TemplateFileDialogs::saveFile(m_window, name, QStringLiteral("plist"), [this, clicked](const QString &path) {
        QString error;
        if (!TemplateExporter::writeTemplatesFile(path, TemplatesFile::makeTemplateDictionaryWithTemplateData(*clicked), &error))
            tellNotWritten(path, error);
    });
}

void TemplateActions::copyIconImage(TemplateTable table, qsizetype clickedRow)
{
    const QImage icon = m_exporter.getIconForTemplateMenu(table, clickedRow);
    if (!icon.isNull())
        QGuiApplication::clipboard()->setImage(icon);
}

void TemplateActions::saveIconImage(TemplateTable table, qsizetype clickedRow)
{
    m_exporter.saveIconImage(table, clickedRow, [this](const QByteArray &png, const QString &name) {
        TemplateFileDialogs::saveFile(m_window, name, QStringLiteral("png"), [this, png](const QString &path) {
            QString error;
            if (!AtomicFileWriter::write(path, png, &error))
                tellNotWritten(path, error);
        });
    });
}

void TemplateActions::saveIconAndTemplate(TemplateTable table, qsizetype clickedRow)
{
    if (m_exporter.getIconForTemplateMenu(table, clickedRow).isNull() || !m_exporter.getTemplate(table, clickedRow))
        return;
    // The clicked template is held while the folder is chosen: the store may change meanwhile.
    const TemplateStore::Template clicked = m_exporter.getTemplate(table, clickedRow);
    TemplateFileDialogs::chooseDestinationFolder(m_window, [this, table, clickedRow, clicked](const QString &folder) {
        if (m_exporter.getTemplate(table, clickedRow) != clicked)
            return;
        if (!m_exporter.saveIconAndTemplate(table, clickedRow, folder))
            qCWarning(lcTessary, "template and icon not written into %s", qUtf8Printable(folder));
    });
}

#include "widgets/TemplateActions.h"

#include "foundation/AlertPresenter.h"
#include "foundation/AtomicFileWriter.h"
#include "foundation/Log.h"
#include "templates/TemplateLinkInsertion.h"
#include "templates/TemplateStore.h"
#include "templates/TemplatesFile.h"
#include "widgets/TemplateDownloadDialog.h"
#include "widgets/TemplateFileDialogs.h"

#include <QClipboard>
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

TemplateSelection::MenuState TemplateActions::menuNeedsUpdate(qsizetype clickedRow) const
{
    return m_selection.menuNeedsUpdate(m_editor.copiedTemplateData() != nullptr, clickedRow);
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
            TemplateFileDialogs::saveFile(m_window, name, QStringLiteral("plist"), [file](const QString &path) {
                QString error;
                if (!TemplateExporter::writeTemplatesFile(path, file, &error))
                    qCWarning(lcTessary, "templates export not written: %s", qUtf8Printable(error));
            });
        },
        [this] { saveAllIconsAndTemplates(); });
}

void TemplateActions::saveAllIconsAndTemplates()
{
    TemplateFileDialogs::chooseDestinationFolder(m_window, [this](const QString &folder) {
        const TemplateExporter::ManyFilesResult result = m_exporter.saveAllIconsAndTemplates(folder);
        if (!result.ok)
            qCWarning(lcTessary, "templates export into %s: not every file was written", qUtf8Printable(folder));
    });
}

void TemplateActions::exportTemplate(TemplateTable table, qsizetype clickedRow)
{
    // The clicked template is taken now: the store may change while the dialog is open.
    const TemplateStore::Template clicked = m_exporter.getTemplate(table, clickedRow);
    if (!clicked)
        return;
    const QString name = TemplateEditor::generateTemplateFileOrIconNameWithExtension(QStringLiteral(".plist"));
    TemplateFileDialogs::saveFile(m_window, name, QStringLiteral("plist"), [clicked](const QString &path) {
        QString error;
        if (!TemplateExporter::writeTemplatesFile(path, TemplatesFile::makeTemplateDictionaryWithTemplateData(*clicked), &error))
            qCWarning(lcTessary, "template export not written: %s", qUtf8Printable(error));
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
        TemplateFileDialogs::saveFile(m_window, name, QStringLiteral("png"), [png](const QString &path) {
            QString error;
            if (!AtomicFileWriter::write(path, png, &error))
                qCWarning(lcTessary, "template icon not written: %s", qUtf8Printable(error));
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

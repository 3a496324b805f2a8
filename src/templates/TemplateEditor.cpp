#include "templates/TemplateEditor.h"

#include "foundation/AlertPresenter.h"
#include "foundation/Log.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"
#include "templates/TemplateDownloader.h"
#include "templates/TemplatesFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QTimer>

namespace {

bool hasPlistExtension(const QString &path)
{
    return QFileInfo(path).suffix() == QLatin1String("plist");
}

} // namespace

TemplateEditor::TemplateEditor(TemplateStore &store, UserDefaults &defaults, AlertPresenter &alerts)
    : m_store(store)
    , m_defaults(defaults)
    , m_alerts(alerts)
    , m_downloadTimeoutMs(TemplateDownloader::kTimeoutMs)
{
}

TemplateStore::Template TemplateEditor::templateAt(TemplateTable table, qsizetype row) const
{
    return table == TemplateTable::BuiltIn ? m_store.builtInTemplateAt(row) : m_store.userTemplateAt(row);
}

void TemplateEditor::loadUserTemplates(const std::function<void(bool replace)> &chooseFiles)
{
    if (Preferences(m_defaults).dontShowAgain() && !m_store.userTemplates().isEmpty()) {
        AlertPresenter::Alert alert;
        alert.messageText = QStringLiteral("Append or Replace");
        alert.informativeText = QStringLiteral("Do you want to append or replace the existing templates?");
        alert.defaultButton = QStringLiteral("Append");
        alert.alternateButton = QStringLiteral("Replace");
        m_alerts.presentAlert(alert, [chooseFiles](int response) {
            if (chooseFiles)
                chooseFiles(response == AlertPresenter::AlternateButton);
        });
        return;
    }
    if (chooseFiles)
        chooseFiles(false);
}

bool TemplateEditor::importTemplateFiles(const QStringList &paths, bool replace, QStringList *skipped)
{
    Q_UNUSED(replace) // appending is the import's only mode
    bool added = false;
    for (const QString &path : paths) {
        const TemplatesFile::ReadResult read = TemplatesFile::fromFile(path);
        QString problem = read.error;
        if (problem.isEmpty()
            && !m_store.addTemplatesFromDictionary(TemplatesFile::makeTemplateDictionaryWithTemplates(read.templates)))
            problem = QStringLiteral("%1: no template in its \"templates\" array").arg(path);
        if (problem.isEmpty())
            added = true;
        else if (skipped)
            skipped->append(problem);
    }
    if (!added)
        m_alerts.beep();
    return added;
}

void TemplateEditor::notTemplateFileAlert(const std::function<void()> &tryAgain, const QStringList &reasons)
{
    AlertPresenter::Alert alert;
    alert.messageText = QStringLiteral("Templates Not Loaded");
    alert.informativeText = QStringLiteral("Make sure that you select a valid template file.");
    if (!reasons.isEmpty())
        alert.informativeText += QStringLiteral("\n\n") + reasons.join(QLatin1Char('\n'));
    alert.defaultButton = QStringLiteral("OK");
    alert.alternateButton = QStringLiteral("Try Again");
    m_alerts.presentAlert(alert, [tryAgain, this](int response) {
        if (response == AlertPresenter::AlternateButton && tryAgain)
            QTimer::singleShot(10, &m_store, tryAgain);
    });
}

void TemplateEditor::clearAllUserTemplates()
{
    if (m_store.userTemplates().isEmpty()) {
        m_alerts.beep();
        return;
    }
    AlertPresenter::Alert alert;
    alert.messageText = QStringLiteral("Delete All My Templates");
    alert.informativeText = QStringLiteral("Are you sure you want to Delete all 'My Templates'?");
    alert.defaultButton = QStringLiteral("Cancel");
    alert.alternateButton = QStringLiteral("Delete All");
    m_alerts.presentAlert(alert, [this](int response) {
        if (response == AlertPresenter::AlternateButton)
            m_store.clearUserTemplates();
    });
}

void TemplateEditor::deleteTemplate(DeleteSender sender, qsizetype clickedRow,
                                    const std::function<void(std::optional<qsizetype>)> &followUp)
{
    AlertPresenter::Alert alert;
    alert.messageText = QStringLiteral("Delete Template");
    alert.informativeText = QStringLiteral("Are you sure you want to delete the selected template?");
    alert.defaultButton = QStringLiteral("Cancel");
    alert.alternateButton = QStringLiteral("Delete");
    m_alerts.presentAlert(alert, [this, sender, clickedRow, followUp](int response) {
        if (response != AlertPresenter::AlternateButton)
            return;
        qsizetype row = -1;
        if (sender == DeleteSender::DeleteButton) {
            row = m_store.selectedUserRow();
        } else if (sender == DeleteSender::UserTableMenu) {
            qCInfo(lcTessary, "userTemplatesTable - deleteTemplate");
            row = clickedRow;
        }
        if (row < 0)
            return;
        const std::optional<qsizetype> next = deleteTemplateAtRow(row);
        if (followUp)
            followUp(next);
    });
}

std::optional<qsizetype> TemplateEditor::deleteTemplateAtRow(qsizetype row)
{
    const TemplateStore::Template remembered = m_store.selectedUserTemplate();
    if (!m_store.removeTemplateAtRow(row))
        return std::nullopt;
    if (remembered && m_store.userTemplates().contains(remembered))
        return std::nullopt;
    // The selected template went (or none was selected): the template that slid into the
    // selected row, if any, is applied as choosing it would.
    const qsizetype selected = m_store.selectedUserRow();
    m_store.setUserDefaultsFromUserTemplateData(selected);
    return selected;
}

void TemplateEditor::sortUserTemplates()
{
    AlertPresenter::Alert alert;
    alert.messageText = QStringLiteral("Sort My Templates?");
    alert.informativeText = QStringLiteral("This can not be undone.");
    alert.defaultButton = QStringLiteral("OK");
    alert.alternateButton = QStringLiteral("Cancel");
    m_alerts.presentAlert(alert, [this](int response) {
        if (response == AlertPresenter::DefaultButton)
            QTimer::singleShot(10, &m_store, [this] { doSortUserTemplates(); });
    });
}

void TemplateEditor::doSortUserTemplates()
{
    m_store.sortUserTemplates();
}

void TemplateEditor::cutTemplate(TemplateTable table)
{
    if (table == TemplateTable::User)
        qCInfo(lcTessary, "userTemplatesTable - cutTemplate");
    else
        qCInfo(lcTessary, "templatesTable - cutTemplate");
}

void TemplateEditor::copyTemplate(TemplateTable table, qsizetype clickedRow)
{
    if (table == TemplateTable::User)
        qCInfo(lcTessary, "userTemplatesTable - copyTemplate");
    else
        qCInfo(lcTessary, "templatesTable - copyTemplate");
    m_copiedTemplateData = templateAt(table, clickedRow);
}

bool TemplateEditor::pasteTemplate(TemplateTable menuTable, qsizetype clickedRow)
{
    if (menuTable != TemplateTable::User || !m_copiedTemplateData)
        return false;
    qCInfo(lcTessary, "userTemplatesTable - pasteTemplate");
    // Inserted as the very object held, so a second paste adds the same template again.
    const TemplateStore::Template held = m_copiedTemplateData;
    return m_store.insertTemplates({held}, clickedRow >= 0 ? clickedRow : 0);
}

bool TemplateEditor::validateDrop(TemplateTable target, const TemplateDrop &drop) const
{
    if (target == TemplateTable::BuiltIn)
        return false;
    if (drop.hasFileNames) {
        for (const QString &path : drop.fileNames) {
            if (!hasPlistExtension(path))
                return false;
        }
        return true;
    }
    for (const QUrl &link : drop.links) {
        if (!hasPlistExtension(link.path()))
            return false;
    }
    return true;
}

bool TemplateEditor::acceptDrop(TemplateTable target, const TemplateDrop &drop, qsizetype row, TemplateDrop::Operation operation)
{
    if (target == TemplateTable::BuiltIn)
        return false;
    switch (drop.source) {
    case TemplateDrop::Source::Outside: {
        if (drop.hasFileNames) {
            bool inserted = false;
            // Every file goes in at the same row, so a later file's templates come first.
            for (const QString &path : drop.fileNames) {
                if (!hasPlistExtension(path))
                    continue;
                const PropertyList::ReadResult read = PropertyList::fromFile(path);
                if (read.ok() && m_store.insertTemplatesFromDictionary(read.value, row))
                    inserted = true;
            }
            return inserted;
        }
        // The answer is that of the last link fetched.
        bool result = false;
        for (const QUrl &link : linksToFetch(drop))
            result = downloadAndInsertTemplateURL(link, row);
        return result;
    }
    case TemplateDrop::Source::UserTable:
        if (operation == TemplateDrop::Operation::Above)
            return m_store.moveTemplate(drop.sourceRow, row);
        return m_store.swapTemplates(row, drop.sourceRow);
    case TemplateDrop::Source::BuiltInTable: {
        const TemplateStore::Template t = m_store.builtInTemplateAt(drop.sourceRow);
        return t && m_store.insertTemplatesFromDictionary(TemplatesFile::makeTemplateDictionaryWithTemplateData(*t), row);
    }
    }
    return false;
}

bool TemplateEditor::isLinkDrop(const TemplateDrop &drop)
{
    return drop.source == TemplateDrop::Source::Outside && !drop.hasFileNames && !drop.links.isEmpty();
}

QList<QUrl> TemplateEditor::linksToFetch(const TemplateDrop &drop)
{
    QList<QUrl> links;
    for (const QUrl &link : drop.links) {
        if (hasPlistExtension(link.path()))
            links.append(link);
    }
    return links;
}

bool TemplateEditor::downloadAndInsertTemplateURL(const QUrl &url, qsizetype row)
{
    QString error;
    const std::optional<QByteArray> data = TemplateDownloader::download(url, &error, m_downloadTimeoutMs);
    if (!data) {
        qCInfo(lcTessary, "Template download failed: %s", qPrintable(error));
        return false;
    }
    return insertDownloadedTemplates(*data, row);
}

bool TemplateEditor::insertDownloadedTemplates(const QByteArray &data, qsizetype row)
{
    const QString path = Paths::documentsPathForFileName(QStringLiteral("templates.plist"));
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size() || !file.commit()) {
        qCInfo(lcTessary, "Template download not saved: %s", qPrintable(file.errorString()));
        return false;
    }
    const PropertyList::ReadResult read = PropertyList::fromFile(path);
    if (!read.ok())
        return false;
    if (row == -1)
        row = m_store.selectedUserRow() >= 0 ? m_store.selectedUserRow() : 0;
    return m_store.insertTemplatesFromDictionary(read.value, row);
}

QString TemplateEditor::generateTemplateFileOrIconNameWithExtension(const QString &extension, const QDateTime &now)
{
    // The 12-hour clock without a marker: 00:30 and 12:30 are both "12", 03:00 and 15:00 "03".
    const int hour12 = now.time().hour() % 12 == 0 ? 12 : now.time().hour() % 12;
    const QString date = QStringLiteral("%1-%2-%3-%4")
                             .arg(now.toString(QStringLiteral("dd-MM-yyyy")))
                             .arg(hour12, 2, 10, QLatin1Char('0'))
                             .arg(now.toString(QStringLiteral("mm")), now.toString(QStringLiteral("ss")));
    if (extension == QLatin1String(".plist"))
        return QStringLiteral("Tessary-Template-%1%2").arg(date, extension);
    if (extension == QLatin1String(".png"))
        return QStringLiteral("Tessary-Icon-%1").arg(date);
    return QString();
}

QString TemplateEditor::writeRowAsFile(TemplateTable table, qsizetype row, const QString &folder, const QDateTime &now) const
{
    const TemplateStore::Template t = templateAt(table, row);
    if (!t)
        return QString();
    const QString name = generateTemplateFileOrIconNameWithExtension(QStringLiteral(".plist"), now);
    QString error;
    if (!PropertyList::writeFile(QDir(folder).filePath(name), TemplatesFile::makeTemplateDictionaryWithTemplateData(*t),
                                 PropertyList::Format::Xml, &error))
        qCInfo(lcTessary, "Template file not written: %s", qPrintable(error));
    return name;
}

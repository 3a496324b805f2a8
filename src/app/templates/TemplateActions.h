#pragma once

#include "templates/TemplateEditor.h"
#include "templates/TemplateExporter.h"
#include "templates/TemplateSelection.h"
#include "templates/TemplateTable.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

class AlertPresenter;
class TemplateStore;
class UserDefaults;

// What the window does with "My Templates" and the built-in templates beyond choosing one:
// importing and clearing, and every item of the tables' contextual menus. The core editor and
// exporter decide and write; this class only asks for files and folders with Qt's own dialogs
// (window-modal on the window, never waited on) and forwards the answers.
class TemplateActions : public QObject
{
    Q_OBJECT
public:
    TemplateActions(TemplateStore &store, UserDefaults &defaults, AlertPresenter &alerts, QWidget *window);

    TemplateEditor &editor() { return m_editor; }
    TemplateExporter &exporter() { return m_exporter; }

    // Importing: asks "Append or Replace" when the load sheet is switched off and there are
    // templates already, then the open dialog; the chosen files are added in order. Nothing
    // added beeps; when files were chosen and none of them held templates, "Templates Not
    // Loaded" offers to try again.
    void loadUserTemplates();
    void presentChooseFileTemplatesDialog(bool replace);
    // Adds the templates of each file in order (files chosen, dropped or opened with Tessary);
    // a file that held none is named in "Templates Not Loaded" with its reason. True when any
    // template went in.
    bool importTemplateFiles(const QStringList &paths, bool replace = false);
    // Asks, then empties "My Templates" (an empty store only beeps).
    void clearAllUserTemplates();

    // A table's contextual menu state for a click on clickedRow (-1: empty space).
    TemplateSelection::MenuState menuNeedsUpdate(TemplateTable table, qsizetype clickedRow) const;

    // The menu items, for a click on clickedRow of the table whose menu it is (-1: none).
    void cutTemplate(TemplateTable table);
    void copyTemplate(TemplateTable table, qsizetype clickedRow);
    void pasteTemplate(TemplateTable table, qsizetype clickedRow);
    // The delete button deletes the selected template; the user table's menu the clicked one.
    void deleteTemplate(TemplateEditor::DeleteSender sender, qsizetype clickedRow);
    void sortUserTemplates();
    void exportTemplates(TemplateTable table);
    // The clicked template alone, saved as a templates file under a proposed generated name.
    void exportTemplate(TemplateTable table, qsizetype clickedRow);
    void copyIconImage(TemplateTable table, qsizetype clickedRow);
    void saveIconImage(TemplateTable table, qsizetype clickedRow);
    // The clicked template's icon and the template beside it, in a chosen folder.
    void saveIconAndTemplate(TemplateTable table, qsizetype clickedRow);

    // Fetches the templates file at the link and inserts its templates into "My Templates"
    // before the row (-1: before the selected user template, or at the top). Emits
    // templatesAdded with how many went in, or alerts with why none did (not when cancelled),
    // then templateDownloadFinished with the outcome.
    void downloadTemplate(const QUrl &link, qsizetype row = -1);

signals:
    // A link download ended: whether templates were inserted.
    void templateDownloadFinished(bool inserted);
    // A download put this many templates into "My Templates".
    void templatesAdded(qsizetype count);

    // Deleting the selected template moved the selection to this row (-1: none), which the
    // window applies and labels as a choice of that row.
    void selectionAfterDelete(qsizetype row);

private:
    // A save that failed, as an alert: `what` is the file (with the system's `reason`) or, with
    // no reason, the whole message.
    void tellNotWritten(const QString &what, const QString &reason);
    void saveAllIconsAndTemplates();

    TemplateStore &m_store;
    AlertPresenter &m_alerts;
    QPointer<QWidget> m_window;
    TemplateEditor m_editor;
    TemplateExporter m_exporter;
    TemplateSelection m_selection;
};

#pragma once

#include "templates/TemplateDrop.h"
#include "templates/TemplateStore.h"
#include "templates/TemplateTable.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <optional>

class AlertPresenter;
class UserDefaults;

// The edits of "My Templates" that the template tables offer: importing and clearing, deleting,
// sorting, cut, copy and paste, drops of rows, files and links, and rows dragged out as files.
// Questions go through the AlertPresenter; file choices are the window's, which calls back.
// The built-in store is never changed.
class TemplateEditor
{
public:
    enum class DeleteSender { DeleteButton, UserTableMenu, Other };

    TemplateEditor(TemplateStore &store, UserDefaults &defaults, AlertPresenter &alerts);

    // Starts an import: asks "Append or Replace" when the load sheet is switched off and there
    // are templates already, then lets the window choose files. Either answer appends (the only
    // way to replace is to clear first).
    void loadUserTemplates(const std::function<void(bool replace)> &chooseFiles);
    // Adds the templates of each file in order; beeps when no file added anything. The replace
    // flag is accepted and, as the import has always behaved, appends all the same. Each file
    // that added nothing is listed in `skipped` as "PATH: why".
    bool importTemplateFiles(const QStringList &paths, bool replace = false, QStringList *skipped = nullptr);
    // Tells the user a file was not a templates file, with each reason given ("PATH: why");
    // "Try Again" calls tryAgain shortly after.
    void notTemplateFileAlert(const std::function<void()> &tryAgain, const QStringList &reasons = {});
    // Asks, then empties "My Templates"; an empty store only beeps.
    void clearAllUserTemplates();

    // Asks, then deletes the selected row (delete button) or the clicked row (the user table's
    // menu). followUp receives what deleteTemplateAtRow returns.
    void deleteTemplate(DeleteSender sender, qsizetype clickedRow,
                        const std::function<void(std::optional<qsizetype>)> &followUp = {});
    // Deletes without asking. When the selected template itself was deleted, the template that
    // slides into its row is selected and its values written into the defaults. Returns nothing
    // when the selection stayed on its template (or nothing was deleted); otherwise the row
    // selected now, which the window lays out and shows (-1: none selected, a blank label).
    std::optional<qsizetype> deleteTemplateAtRow(qsizetype row);

    // Asks, then sorts "My Templates" by module count a moment later (after the sheet is gone).
    void sortUserTemplates();
    void doSortUserTemplates();

    // Cut changes nothing: it only logs which table it came from.
    void cutTemplate(TemplateTable table);
    // Holds the clicked template (shared with its store, not copied); no clicked row holds none.
    void copyTemplate(TemplateTable table, qsizetype clickedRow);
    // Inserts the held template before the clicked row of the user table (row 0 when none was
    // clicked). It stays held: pasting twice puts the same template in twice.
    bool pasteTemplate(TemplateTable menuTable, qsizetype clickedRow);
    TemplateStore::Template copiedTemplateData() const { return m_copiedTemplateData; }

    // Whether a drop may land on the table (its row and operation are never changed).
    bool validateDrop(TemplateTable target, const TemplateDrop &drop) const;
    // Performs a drop: files and links from outside are inserted at the row, a user row is
    // moved (Above) or swapped (On), a built-in row is copied into "My Templates".
    bool acceptDrop(TemplateTable target, const TemplateDrop &drop, qsizetype row, TemplateDrop::Operation operation);
    // Fetches the link (see TemplateDownloader), writes it to "templates.plist" in the Documents
    // folder, reads it back and inserts its templates at row (-1: at the selected row, or 0).
    // The caller waits; the window fetches with a TemplateLinkInsertion instead.
    bool downloadAndInsertTemplateURL(const QUrl &url, qsizetype row);
    // The second half of a link download, for bytes fetched without waiting: writes them
    // atomically to "templates.plist" in the Documents folder, reads that file back and inserts
    // its templates at row (-1: at the selected row, or 0). False when the file cannot be
    // written or read, or holds no template.
    bool insertDownloadedTemplates(const QByteArray &data, qsizetype row);
    // The time limit of each link download (5 s unless a test shortens it).
    int downloadTimeoutMs() const { return m_downloadTimeoutMs; }
    void setDownloadTimeoutMs(int ms) { m_downloadTimeoutMs = ms; }

    // A drop of links from outside: its templates arrive by download, which the window runs
    // without waiting (acceptDrop would fetch them one after the other while the caller waits).
    static bool isLinkDrop(const TemplateDrop &drop);
    // The links acceptDrop fetches for such a drop, in order: those whose path ends in "plist".
    // The drop's answer is that of the last of them; none gives false.
    static QList<QUrl> linksToFetch(const TemplateDrop &drop);

    // "Tessary-Template-<date>.plist" or "Tessary-Icon-<date>" (no extension) with the date as
    // day-month-year-hour-minute-second, the hour on the 12-hour clock without AM or PM.
    // Any other extension gives a null string.
    static QString generateTemplateFileOrIconNameWithExtension(const QString &extension,
                                                               const QDateTime &now = QDateTime::currentDateTime());
    // A row dragged out as a file: writes it as a one-template templates file into the folder
    // under a generated name and returns the name (null when there is no such row).
    QString writeRowAsFile(TemplateTable table, qsizetype row, const QString &folder,
                           const QDateTime &now = QDateTime::currentDateTime()) const;

private:
    TemplateStore::Template templateAt(TemplateTable table, qsizetype row) const;

    TemplateStore &m_store;
    UserDefaults &m_defaults;
    AlertPresenter &m_alerts;
    TemplateStore::Template m_copiedTemplateData;
    int m_downloadTimeoutMs;
};

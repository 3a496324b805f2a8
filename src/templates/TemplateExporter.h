#pragma once

#include "templates/TemplateStore.h"
#include "templates/TemplateTable.h"

#include <QByteArray>
#include <QDateTime>
#include <QImage>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>

class AlertPresenter;

// Templates leaving the application: a whole store as one templates file, every user template
// as its own file beside its icon with an HTML page linking them, a template's icon as PNG, and
// a single template (with or without its icon). Folder and file choices are the window's; it
// passes the chosen paths in.
class TemplateExporter
{
public:
    struct ManyFilesResult {
        QStringList templateFiles; // names written, in store order
        QStringList iconFiles;
        QString indexFile;
        bool ok = true; // false when any write failed
    };

    TemplateExporter(const TemplateStore &store, AlertPresenter &alerts);

    // The templates file of the whole store shown by the table.
    QVariantMap getTemplatesFileDictionaryForTemplateMenu(TemplateTable table) const;
    // The clicked template of the table, or nullptr when no row was clicked.
    TemplateStore::Template getTemplate(TemplateTable table, qsizetype clickedRow) const;

    // Asks "Save As One File Or Many?": "Save One" hands the table's store to saveOne with the
    // proposed name "Templates Export"; "Many Files" calls manyFiles (always "My Templates").
    void exportTemplates(TemplateTable table, const std::function<void(const QVariantMap &, const QString &)> &saveOne,
                         const std::function<void()> &manyFiles);
    // Writes a templates file (XML property list) atomically.
    static bool writeTemplatesFile(const QString &path, const QVariantMap &templatesFile, QString *error = nullptr);

    // Every user template with a thumbnail, as "Tessary-Template-<folder>-<n>.plist" beside
    // "Tessary-Icon-<folder>-<n>.png" (n its 1-based position, so templates without thumbnail
    // leave gaps), and "Tessary-Templates-<folder>.html" linking them, in UTF-16 with a BOM.
    ManyFilesResult saveAllIconsAndTemplates(const QString &folder) const;
    // The files of saveAllIconsAndTemplates that already exist in the folder (asked about first).
    QStringList existingManyFiles(const QString &folder) const;
    // The index page for (template file, icon file) pairs, as text.
    static QString htmlIndex(const QList<std::pair<QString, QString>> &links);

    // The clicked template's thumbnail, decoded; a null image when there is none.
    QImage getIconForTemplateMenu(TemplateTable table, qsizetype clickedRow) const;
    // The picture encoded as a non-interlaced PNG at its own size; empty for a null image.
    static QByteArray pngData(const QImage &image);

    // The clicked template's icon as PNG for the window to save under the proposed name (which
    // has no extension). Nothing for no icon; an icon that cannot be encoded is reported with
    // "The image could not be saved.".
    bool saveIconImage(TemplateTable table, qsizetype clickedRow,
                       const std::function<void(const QByteArray &png, const QString &proposedName)> &save);
    // Writes the clicked template's icon and then, if that worked, the template alone as a
    // templates file into the folder, under generated names. False when either is missing or a
    // write failed.
    bool saveIconAndTemplate(TemplateTable table, qsizetype clickedRow, const QString &folder,
                             const QDateTime &now = QDateTime::currentDateTime()) const;
    // The clicked template alone as a templates file at path.
    bool exportTemplate(TemplateTable table, qsizetype clickedRow, const QString &path) const;
    // The clicked template alone as a templates file in the folder, under a generated name;
    // returns the path written, or a null string.
    QString saveTemplate(TemplateTable table, qsizetype clickedRow, const QString &folder,
                         const QDateTime &now = QDateTime::currentDateTime()) const;

private:
    const TemplateStore &m_store;
    AlertPresenter &m_alerts;
};

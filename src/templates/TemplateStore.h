#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include <functional>
#include <memory>

class LayoutEngine;
class UserDefaults;

// The two template stores: the built-in templates shipped in the resources (fixed once loaded)
// and "My Templates", the user's own, persisted under "UserTemplates" after every change.
//
// A template in a store is shared by pointer: identity, not equality, is what keeps the user's
// selection on the same template when rows move, and what lets a template pasted twice appear
// twice as the very same object.
//
// Every change of "My Templates" is one transaction that re-reads the stored list and applies
// the change to it, so that another process's changes made meanwhile are kept; the list here
// then follows what was stored. A change that could not be written is undone here and
// reported with writeFailed.
//
// The store also keeps the user table's selected row, since every change must restore it. The
// window mirrors it: it reports the user's clicks with setSelectedUserRow and follows
// userSelectionChanged, which is emitted when a change moves the selection.
class TemplateStore : public QObject
{
    Q_OBJECT
public:
    using Template = std::shared_ptr<const QVariantMap>;
    using Templates = QList<Template>;

    explicit TemplateStore(UserDefaults &defaults, QObject *parent = nullptr);

    static Template makeTemplate(const QVariantMap &templateData) { return std::make_shared<const QVariantMap>(templateData); }
    // The templates of a templates file dictionary, each a new shared template; elements that
    // are not dictionaries are not templates and are left out. Empty when the value is not a
    // dictionary with a "templates" array.
    static Templates templatesFromDictionary(const QVariant &templatesFile);
    // The plain list of the templates' dictionaries, as a templates file or the defaults hold it.
    static QVariantList toVariantList(const Templates &templates);

    // Built-in store: "templates.plist", then "templates_additional.plist", then every file of
    // the "Templates" folder by name, each adding its "templates" array; a missing or unreadable
    // one adds nothing. Sorted by "nbrModules", keeping the load order among equals.
    static Templates readBuiltInTemplates(const QString &resourcesFolder);
    void loadBuiltInTemplates(const QString &resourcesFolder);
    void setBuiltInTemplates(Templates templates) { m_builtInTemplates = std::move(templates); }
    const Templates &builtInTemplates() const { return m_builtInTemplates; }

    // User store: read back from "UserTemplates" (start-up).
    void restoreUserTemplates();
    const Templates &userTemplates() const { return m_userTemplates; }
    Template userTemplateAt(qsizetype row) const;
    Template builtInTemplateAt(qsizetype row) const;

    // The user table's selected row, -1 for none. Every change that moves it saves it under
    // "SelectedUserTemplateTableRow" (the table saves the user's own clicks).
    qsizetype selectedUserRow() const { return m_selectedUserRow; }
    void setSelectedUserRow(qsizetype row);
    // Selects the saved row again, when one is saved and it is still a row (for edits made
    // without the table, which a first start's default row 0 must not steer).
    void restoreSelectedUserRow();
    Template selectedUserTemplate() const { return userTemplateAt(m_selectedUserRow); }

    // Inserts the templates of a templates file as one block at index (clamped to the store),
    // persists, and keeps the selection on the template it was on. False, and nothing changed,
    // when the dictionary has no "templates" array or it holds no template.
    bool insertTemplatesFromDictionary(const QVariant &templatesFile, qsizetype index);
    bool addTemplatesFromDictionary(const QVariant &templatesFile);
    // The same with templates already shared: the very objects go into the store.
    bool insertTemplates(const Templates &templates, qsizetype index);

    // The edits of "My Templates". Each persists and keeps the selection by identity; each
    // returns false and changes nothing for a row outside the store.
    bool removeTemplateAtRow(qsizetype row);
    // Moves the template at `from` so that it lands before the template that was at `to`
    // (a drop between rows): moving row 0 to 3 puts it at index 2.
    bool moveTemplate(qsizetype from, qsizetype to);
    bool swapTemplates(qsizetype a, qsizetype b);
    // Sorts by "nbrModules" ascending, keeping the order among equals.
    void sortUserTemplates();
    void clearUserTemplates();

    // Copies a template's layout values into the defaults in the order the collage reads them:
    // the modules (and, when an engine is given, its module list reloaded from them), the
    // content size, module size and border width (a missing value removes the key), then the
    // background colour, then the background image, which removes any background colour first.
    // The values are written in one transaction: all of them or, when the write fails (false,
    // the defaults' errorString says why), none.
    static bool setUserDefaultsFromDataDictionary(UserDefaults &defaults, const QVariantMap &templateData,
                                                  LayoutEngine *engine = nullptr);
    // False for a row that is not one, and (after writeFailed) when the write failed.
    bool setUserDefaultsFromBuiltInTemplateData(qsizetype row, LayoutEngine *engine = nullptr);
    bool setUserDefaultsFromUserTemplateData(qsizetype row, LayoutEngine *engine = nullptr);
    // Tells whoever shows failures (writeFailed) that a write of the templates' values failed.
    void reportWriteFailure(const QString &what, const QString &reason) { emit writeFailed(what, reason); }

    // Stably sorts templates by their "nbrModules" numbers.
    static void sortByModuleCount(Templates &templates);

signals:
    // The user store changed and was persisted: the user table reloads.
    void userTemplatesChanged();
    // A change moved the user table's selection to this row (-1: none).
    void userSelectionChanged(qsizetype row);
    // A change was not stored: what (a sentence for the user) and the reason in words. The
    // window shows an alert; the command line prints it and fails.
    void writeFailed(const QString &what, const QString &reason);

private:
    // Writes the user store to "UserTemplates", tells the table, then puts the selection back
    // on `remembered` when it is still in the store. When it is not, the selected row number is
    // kept if it is still a row, else nothing is selected. Returns whether it was found.
    // A change of the list, applied both here and to the list read back from the store.
    using Edit = std::function<void(Templates &templates)>;
    // Applies the edit here and to the stored list in one transaction, then keeps the
    // selection as persistKeepingSelection says. Returns whether the change was stored.
    bool persistKeepingSelection(const Edit &change);
    bool persist(const Edit &change);
    void selectRow(qsizetype row);
    // The templates of a stored list; those that were in the list at the last write keep
    // their shared objects.
    Templates templatesFromStored(const QVariant &stored) const;
    // The position of the n-th occurrence of that very template (-1 when there is none), and
    // which occurrence the one at row is.
    static qsizetype occurrence(const Templates &templates, const Template &t, qsizetype n);
    static qsizetype occurrenceAt(const Templates &templates, qsizetype row);

    UserDefaults &m_defaults;
    Templates m_builtInTemplates;
    Templates m_userTemplates;
    // "My Templates" as last read from or written to the store.
    Templates m_committedUserTemplates;
    qsizetype m_selectedUserRow = -1;
};

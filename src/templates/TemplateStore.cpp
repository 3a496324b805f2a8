#include "templates/TemplateStore.h"

#include "foundation/Log.h"
#include "foundation/PlistValue.h"
#include "foundation/Preferences.h"
#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"
#include "model/LayoutEngine.h"
#include "templates/TemplatesFile.h"

#include <QDir>

#include <algorithm>

namespace {

// The templates of one resource file; a missing or unreadable file adds nothing.
TemplateStore::Templates readTemplatesFile(const QString &path)
{
    const PropertyList::ReadResult read = PropertyList::fromFile(path);
    if (!read.ok())
        return {};
    return TemplateStore::templatesFromDictionary(read.value);
}

} // namespace

TemplateStore::TemplateStore(UserDefaults &defaults, QObject *parent)
    : QObject(parent)
    , m_defaults(defaults)
{
}

TemplateStore::Templates TemplateStore::templatesFromDictionary(const QVariant &templatesFile)
{
    const TemplatesFile::ReadResult read = TemplatesFile::fromDictionary(templatesFile, QString());
    Templates out;
    if (!read.ok())
        return out;
    out.reserve(read.templates.size());
    for (const QVariant &t : read.templates) {
        if (t.typeId() == QMetaType::QVariantMap)
            out.append(makeTemplate(t.toMap()));
    }
    return out;
}

QVariantList TemplateStore::toVariantList(const Templates &templates)
{
    QVariantList list;
    list.reserve(templates.size());
    for (const Template &t : templates)
        list.append(*t);
    return list;
}

void TemplateStore::sortByModuleCount(Templates &templates)
{
    std::stable_sort(templates.begin(), templates.end(), [](const Template &a, const Template &b) {
        return PlistValue::doubleValue(a->value(QStringLiteral("nbrModules")))
               < PlistValue::doubleValue(b->value(QStringLiteral("nbrModules")));
    });
}

TemplateStore::Templates TemplateStore::readBuiltInTemplates(const QString &resourcesFolder)
{
    const QDir resources(resourcesFolder);
    Templates all = readTemplatesFile(resources.filePath(QStringLiteral("templates.plist")));
    all += readTemplatesFile(resources.filePath(QStringLiteral("templates_additional.plist")));
    // Every file of the folder, whatever its extension; sorted by name so that the order among
    // templates of equal size, and so every row number, is the same on every machine.
    const QDir folder(resources.filePath(QStringLiteral("Templates")));
    const QStringList names = folder.entryList(QDir::Files | QDir::Hidden, QDir::Name);
    for (const QString &name : names)
        all += readTemplatesFile(folder.filePath(name));
    sortByModuleCount(all);
    return all;
}

void TemplateStore::loadBuiltInTemplates(const QString &resourcesFolder)
{
    m_builtInTemplates = readBuiltInTemplates(resourcesFolder);
}

void TemplateStore::restoreUserTemplates()
{
    m_committedUserTemplates.clear();
    m_userTemplates = templatesFromStored(m_defaults.objectForKey(Preferences::UserTemplates));
    m_committedUserTemplates = m_userTemplates;
}

TemplateStore::Templates TemplateStore::templatesFromStored(const QVariant &stored) const
{
    Templates out;
    if (stored.typeId() != QMetaType::QVariantList)
        return out;
    QList<bool> used(m_committedUserTemplates.size(), false);
    for (const QVariant &t : stored.toList()) {
        if (t.typeId() != QMetaType::QVariantMap)
            continue;
        const QVariantMap dictionary = t.toMap();
        Template found;
        for (qsizetype j = 0; j < m_committedUserTemplates.size() && !found; ++j) {
            if (!used.at(j) && *m_committedUserTemplates.at(j) == dictionary) {
                used[j] = true;
                found = m_committedUserTemplates.at(j);
            }
        }
        out.append(found ? found : makeTemplate(dictionary));
    }
    return out;
}

qsizetype TemplateStore::occurrence(const Templates &templates, const Template &t, qsizetype n)
{
    for (qsizetype i = 0; i < templates.size(); ++i) {
        if (templates.at(i) == t && n-- == 0)
            return i;
    }
    return -1;
}

qsizetype TemplateStore::occurrenceAt(const Templates &templates, qsizetype row)
{
    return std::count(templates.cbegin(), templates.cbegin() + row, templates.at(row));
}

TemplateStore::Template TemplateStore::userTemplateAt(qsizetype row) const
{
    return row >= 0 && row < m_userTemplates.size() ? m_userTemplates[row] : nullptr;
}

TemplateStore::Template TemplateStore::builtInTemplateAt(qsizetype row) const
{
    return row >= 0 && row < m_builtInTemplates.size() ? m_builtInTemplates[row] : nullptr;
}

void TemplateStore::setSelectedUserRow(qsizetype row)
{
    m_selectedUserRow = row >= 0 && row < m_userTemplates.size() ? row : -1;
}

void TemplateStore::restoreSelectedUserRow()
{
    const bool saved = m_defaults.hasObject(Preferences::SelectedUserTemplateTableRow);
    setSelectedUserRow(saved ? qsizetype(m_defaults.integerForKey(Preferences::SelectedUserTemplateTableRow)) : -1);
}

void TemplateStore::selectRow(qsizetype row)
{
    if (row == m_selectedUserRow)
        return;
    m_selectedUserRow = row;
    // Saved at once, so the row stored names the template that stayed selected.
    if (!m_defaults.setInteger(row, Preferences::SelectedUserTemplateTableRow)) {
        qCWarning(lcTessary, "Could not save the selected template: %s", qPrintable(m_defaults.errorString()));
        emit writeFailed(QStringLiteral("The selected template could not be saved."), m_defaults.errorString());
    }
    emit userSelectionChanged(row);
}

bool TemplateStore::persist(const Edit &change)
{
    Templates result;
    const bool stored = m_defaults.update({Preferences::UserTemplates}, [&](QVariantMap &values) {
        result = templatesFromStored(values.value(Preferences::UserTemplates));
        change(result);
        values.insert(Preferences::UserTemplates, toVariantList(result));
        return true;
    });
    if (!stored) {
        const QString reason = m_defaults.errorString();
        qCWarning(lcTessary, "Could not save My Templates: %s", qPrintable(reason));
        m_userTemplates = m_committedUserTemplates;
        emit writeFailed(QStringLiteral("My Templates could not be saved."), reason);
        return false;
    }
    m_userTemplates = m_committedUserTemplates = result;
    emit userTemplatesChanged();
    return true;
}

bool TemplateStore::persistKeepingSelection(const Edit &change)
{
    const Template remembered = selectedUserTemplate();
    const bool stored = persist(change);
    if (remembered) {
        const qsizetype row = m_userTemplates.indexOf(remembered);
        if (row >= 0) {
            selectRow(row);
            return stored;
        }
    }
    // The table keeps the row number while it is still a row.
    if (m_selectedUserRow >= m_userTemplates.size())
        selectRow(-1);
    return stored;
}

bool TemplateStore::insertTemplatesFromDictionary(const QVariant &templatesFile, qsizetype index)
{
    return insertTemplates(templatesFromDictionary(templatesFile), index);
}

bool TemplateStore::insertTemplates(const Templates &incoming, qsizetype index)
{
    if (incoming.isEmpty() || incoming.contains(nullptr))
        return false;
    index = std::clamp<qsizetype>(index, 0, m_userTemplates.size());
    // The block goes before the template it went before here; at the end when it went there.
    const Template before = userTemplateAt(index);
    const qsizetype nth = before ? occurrenceAt(m_userTemplates, index) : 0;
    return persistKeepingSelection([incoming, before, nth](Templates &templates) {
        qsizetype at = before ? occurrence(templates, before, nth) : -1;
        if (at < 0)
            at = templates.size();
        for (qsizetype i = 0; i < incoming.size(); ++i)
            templates.insert(at + i, incoming[i]);
    });
}

bool TemplateStore::addTemplatesFromDictionary(const QVariant &templatesFile)
{
    return insertTemplatesFromDictionary(templatesFile, m_userTemplates.size());
}

bool TemplateStore::removeTemplateAtRow(qsizetype row)
{
    if (row < 0 || row >= m_userTemplates.size())
        return false;
    const Template gone = m_userTemplates.at(row);
    const qsizetype nth = occurrenceAt(m_userTemplates, row);
    return persistKeepingSelection([gone, nth](Templates &templates) {
        const qsizetype at = occurrence(templates, gone, nth);
        if (at >= 0)
            templates.removeAt(at);
    });
}

bool TemplateStore::moveTemplate(qsizetype from, qsizetype to)
{
    const qsizetype n = m_userTemplates.size();
    if (from < 0 || from >= n || to < 0 || to > n)
        return false;
    if (to == from || to == from + 1)
        return persistKeepingSelection([](Templates &) {}); // it stays where it is
    const Template moving = m_userTemplates.at(from);
    const qsizetype movingNth = occurrenceAt(m_userTemplates, from);
    const Template before = userTemplateAt(to);
    // Which occurrence of `before` it is once the moving one is out of the way.
    const qsizetype beforeNth = before ? occurrenceAt(m_userTemplates, to) - (before == moving && from < to ? 1 : 0) : 0;
    return persistKeepingSelection([=](Templates &templates) {
        const qsizetype at = occurrence(templates, moving, movingNth);
        if (at < 0)
            return;
        templates.removeAt(at);
        qsizetype target = before ? occurrence(templates, before, beforeNth) : -1;
        if (target < 0)
            target = templates.size();
        templates.insert(target, moving);
    });
}

bool TemplateStore::swapTemplates(qsizetype a, qsizetype b)
{
    const qsizetype n = m_userTemplates.size();
    if (a < 0 || a >= n || b < 0 || b >= n)
        return false;
    const Template first = m_userTemplates.at(a);
    const Template second = m_userTemplates.at(b);
    const qsizetype firstNth = occurrenceAt(m_userTemplates, a);
    const qsizetype secondNth = occurrenceAt(m_userTemplates, b);
    return persistKeepingSelection([=](Templates &templates) {
        const qsizetype i = occurrence(templates, first, firstNth);
        const qsizetype j = occurrence(templates, second, secondNth);
        if (i >= 0 && j >= 0)
            templates.swapItemsAt(i, j);
    });
}

void TemplateStore::sortUserTemplates()
{
    persistKeepingSelection([](Templates &templates) { sortByModuleCount(templates); });
}

void TemplateStore::clearUserTemplates()
{
    persistKeepingSelection([](Templates &templates) { templates.clear(); });
}

bool TemplateStore::setUserDefaultsFromDataDictionary(UserDefaults &defaults, const QVariantMap &t, LayoutEngine *engine)
{
    const QStringList keys{Preferences::SavedTessaryDataModules, Preferences::ContentSizeWidth, Preferences::ContentSizeHeight,
                           Preferences::ModuleSizeInPoints,      Preferences::BorderWidth,      Preferences::BackgroundColor,
                           Preferences::BackgroundImage};
    const bool stored = defaults.update(keys, [&t](QVariantMap &values) {
        // A missing value removes the key.
        const auto copy = [&](const QString &key) {
            if (t.contains(key))
                values.insert(key, t.value(key));
            else
                values.remove(key);
        };
        copy(Preferences::SavedTessaryDataModules);
        copy(Preferences::ContentSizeWidth);
        copy(Preferences::ContentSizeHeight);
        copy(Preferences::ModuleSizeInPoints);
        copy(Preferences::BorderWidth);
        if (t.contains(Preferences::BackgroundColor))
            copy(Preferences::BackgroundColor);
        if (t.contains(Preferences::BackgroundImage)) {
            values.remove(Preferences::BackgroundColor);
            copy(Preferences::BackgroundImage);
        }
        return true;
    });
    if (stored && engine)
        engine->loadTessaryDataModulesEmpty(defaults, true);
    return stored;
}

bool TemplateStore::setUserDefaultsFromBuiltInTemplateData(qsizetype row, LayoutEngine *engine)
{
    const Template t = builtInTemplateAt(row);
    if (!t)
        return false;
    if (setUserDefaultsFromDataDictionary(m_defaults, *t, engine))
        return true;
    emit writeFailed(QStringLiteral("The template could not be applied."), m_defaults.errorString());
    return false;
}

bool TemplateStore::setUserDefaultsFromUserTemplateData(qsizetype row, LayoutEngine *engine)
{
    const Template t = userTemplateAt(row);
    if (!t)
        return false;
    if (setUserDefaultsFromDataDictionary(m_defaults, *t, engine))
        return true;
    emit writeFailed(QStringLiteral("The template could not be applied."), m_defaults.errorString());
    return false;
}

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
    m_userTemplates.clear();
    const QVariant stored = m_defaults.objectForKey(Preferences::UserTemplates);
    if (stored.typeId() != QMetaType::QVariantList)
        return;
    for (const QVariant &t : stored.toList()) {
        if (t.typeId() == QMetaType::QVariantMap)
            m_userTemplates.append(makeTemplate(t.toMap()));
    }
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
    if (!m_defaults.setInteger(row, Preferences::SelectedUserTemplateTableRow))
        qCWarning(lcTessary, "Could not save the selected template: %s", qPrintable(m_defaults.errorString()));
    emit userSelectionChanged(row);
}

void TemplateStore::persist()
{
    if (!m_defaults.setObject(toVariantList(m_userTemplates), Preferences::UserTemplates))
        qCWarning(lcTessary, "Could not save My Templates: %s", qPrintable(m_defaults.errorString()));
    m_defaults.synchronize();
    emit userTemplatesChanged();
}

bool TemplateStore::persistKeepingSelection(const Template &remembered)
{
    persist();
    if (remembered) {
        const qsizetype row = m_userTemplates.indexOf(remembered);
        if (row >= 0) {
            selectRow(row);
            return true;
        }
    }
    // The table keeps the row number while it is still a row.
    if (m_selectedUserRow >= m_userTemplates.size())
        selectRow(-1);
    return false;
}

bool TemplateStore::insertTemplatesFromDictionary(const QVariant &templatesFile, qsizetype index)
{
    return insertTemplates(templatesFromDictionary(templatesFile), index);
}

bool TemplateStore::insertTemplates(const Templates &incoming, qsizetype index)
{
    if (incoming.isEmpty() || incoming.contains(nullptr))
        return false;
    const Template remembered = selectedUserTemplate();
    index = std::clamp<qsizetype>(index, 0, m_userTemplates.size());
    for (qsizetype i = 0; i < incoming.size(); ++i)
        m_userTemplates.insert(index + i, incoming[i]);
    persistKeepingSelection(remembered);
    return true;
}

bool TemplateStore::addTemplatesFromDictionary(const QVariant &templatesFile)
{
    return insertTemplatesFromDictionary(templatesFile, m_userTemplates.size());
}

bool TemplateStore::removeTemplateAtRow(qsizetype row)
{
    if (row < 0 || row >= m_userTemplates.size())
        return false;
    const Template remembered = selectedUserTemplate();
    m_userTemplates.removeAt(row);
    persistKeepingSelection(remembered);
    return true;
}

bool TemplateStore::moveTemplate(qsizetype from, qsizetype to)
{
    const qsizetype n = m_userTemplates.size();
    if (from < 0 || from >= n || to < 0 || to > n)
        return false;
    const Template remembered = selectedUserTemplate();
    const Template moving = m_userTemplates.takeAt(from);
    m_userTemplates.insert(from < to ? to - 1 : to, moving);
    persistKeepingSelection(remembered);
    return true;
}

bool TemplateStore::swapTemplates(qsizetype a, qsizetype b)
{
    const qsizetype n = m_userTemplates.size();
    if (a < 0 || a >= n || b < 0 || b >= n)
        return false;
    const Template remembered = selectedUserTemplate();
    m_userTemplates.swapItemsAt(a, b);
    persistKeepingSelection(remembered);
    return true;
}

void TemplateStore::sortUserTemplates()
{
    const Template remembered = selectedUserTemplate();
    sortByModuleCount(m_userTemplates);
    persistKeepingSelection(remembered);
}

void TemplateStore::clearUserTemplates()
{
    m_userTemplates.clear();
    persistKeepingSelection(nullptr);
}

void TemplateStore::setUserDefaultsFromDataDictionary(UserDefaults &defaults, const QVariantMap &t, LayoutEngine *engine)
{
    // A missing value removes the key: setObject with an invalid QVariant removes.
    const auto copy = [&](const QString &key) { defaults.setObject(t.value(key), key); };
    copy(Preferences::SavedTessaryDataModules);
    if (engine)
        engine->loadTessaryDataModulesEmpty(defaults, true);
    copy(Preferences::ContentSizeWidth);
    copy(Preferences::ContentSizeHeight);
    copy(Preferences::ModuleSizeInPoints);
    copy(Preferences::BorderWidth);
    if (t.contains(Preferences::BackgroundColor))
        copy(Preferences::BackgroundColor);
    if (t.contains(Preferences::BackgroundImage)) {
        defaults.removeObject(Preferences::BackgroundColor);
        copy(Preferences::BackgroundImage);
    }
    defaults.synchronize();
}

bool TemplateStore::setUserDefaultsFromBuiltInTemplateData(qsizetype row, LayoutEngine *engine)
{
    const Template t = builtInTemplateAt(row);
    if (!t)
        return false;
    setUserDefaultsFromDataDictionary(m_defaults, *t, engine);
    return true;
}

bool TemplateStore::setUserDefaultsFromUserTemplateData(qsizetype row, LayoutEngine *engine)
{
    const Template t = userTemplateAt(row);
    if (!t)
        return false;
    setUserDefaultsFromDataDictionary(m_defaults, *t, engine);
    return true;
}

#include "templates/TemplateSelection.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "model/LayoutEngine.h"
#include "templates/TemplateStore.h"
#include "templates/TemplateTables.h"

TemplateSelection::TemplateSelection(TemplateStore &store, UserDefaults &defaults)
    : m_store(store)
    , m_defaults(defaults)
{
}

qsizetype TemplateSelection::savedRow(TemplateTable table) const
{
    const bool builtIn = table == TemplateTable::BuiltIn;
    const QString key = builtIn ? Preferences::SelectedTemplateTableRow : Preferences::SelectedUserTemplateTableRow;
    const qint64 row = m_defaults.hasObject(key) ? m_defaults.integerForKey(key) : (builtIn ? kDefaultBuiltInRow : 0);
    const qsizetype count = builtIn ? m_store.builtInTemplates().size() : m_store.userTemplates().size();
    // A saved row beyond the table (a smaller library, deleted templates) selects nothing.
    return row >= 0 && row < count ? qsizetype(row) : -1;
}

QString TemplateSelection::selectionDidChange(TemplateTable table, qsizetype row)
{
    const QString key = table == TemplateTable::BuiltIn ? Preferences::SelectedTemplateTableRow
                                                        : Preferences::SelectedUserTemplateTableRow;
    if (!m_defaults.setInteger(row < 0 ? -1 : row, key))
        m_store.reportWriteFailure(QStringLiteral("The selected template could not be saved."), m_defaults.errorString());
    if (table == TemplateTable::User)
        m_store.setSelectedUserRow(row);
    return TemplateTables::selectedRowLabel(row);
}

std::optional<CollageLayout> TemplateSelection::doChooseTemplate(TemplateTable currentTab, qsizetype row, LayoutEngine &engine,
                                                                 const QSizeF &available, const TessaryViewDelegate *delegate)
{
    const bool applied = currentTab == TemplateTable::BuiltIn ? m_store.setUserDefaultsFromBuiltInTemplateData(row, &engine)
                                                              : m_store.setUserDefaultsFromUserTemplateData(row, &engine);
    if (!applied)
        return std::nullopt;
    engine.setup(m_defaults, available);
    return engine.reloadData(m_defaults, delegate);
}

TemplateSelection::MenuState TemplateSelection::menuNeedsUpdate(TemplateTable table, bool templateHeld,
                                                               qsizetype clickedRow) const
{
    MenuState state;
    if (table == TemplateTable::BuiltIn) {
        state.exportAll = true;
        state.exportOne = state.copyIcon = state.saveIcon = state.saveTemplateAndIcon = clickedRow >= 0;
        return state;
    }
    state.paste = templateHeld;
    if (!m_store.userTemplates().isEmpty()) {
        state.deleteAll = state.exportAll = true;
        if (clickedRow >= 0 && clickedRow < m_store.userTemplates().size())
            state.deleteOne = state.exportOne = state.copyIcon = state.saveIcon = state.saveTemplateAndIcon = true;
    }
    return state;
}

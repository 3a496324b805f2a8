#include "app/templates/TemplateContextMenu.h"

#include "templates/TemplateEditor.h"
#include "app/templates/TemplateActions.h"

TemplateContextMenu::TemplateContextMenu(TemplateTable table, TemplateActions &actions, QWidget *parent)
    : QMenu(parent)
    , m_table(table)
    , m_actions(actions)
{
    const bool user = table == TemplateTable::User;
    setObjectName(user ? QStringLiteral("userTemplatesMenu") : QStringLiteral("templatesMenu"));
    setToolTipsVisible(true);

    connect(add("cutTemplate", tr("Cut"), tr("Templates are not cut; copy one to paste it into My Templates")),
            &QAction::triggered, this, [this] { m_actions.cutTemplate(m_table); });
    connect(add("copyTemplate", tr("Copy"), tr("Hold this template to paste it into My Templates")),
            &QAction::triggered, this, [this] { m_actions.copyTemplate(m_table, m_clickedRow); });
    if (user) {
        connect(add("pasteTemplate", tr("Paste"), tr("Insert the copied template before this one")),
                &QAction::triggered, this, [this] { m_actions.pasteTemplate(m_table, m_clickedRow); });
        addSeparator();
        connect(add("deleteTemplate", tr("Delete…"), tr("Delete this template")), &QAction::triggered, this,
                [this] { m_actions.deleteTemplate(TemplateEditor::DeleteSender::UserTableMenu, m_clickedRow); });
        connect(add("deleteAllTemplates", tr("Delete All…"), tr("Delete all of My Templates")),
                &QAction::triggered, this, [this] { m_actions.clearAllUserTemplates(); });
        connect(add("sortUserTemplates", tr("Sort by Number of Photos…"), tr("Sort My Templates by their number of photos")),
                &QAction::triggered, this, [this] { m_actions.sortUserTemplates(); });
    }
    addSeparator();
    connect(add("exportAllTemplates", tr("Export Templates…"), tr("Save all these templates in one file or many")),
            &QAction::triggered, this, [this] { m_actions.exportTemplates(m_table); });
    connect(add("exportTemplate", tr("Export Template…"), tr("Save this template in a file of its own")),
            &QAction::triggered, this, [this] { m_actions.exportTemplate(m_table, m_clickedRow); });
    addSeparator();
    connect(add("copyTemplateIcon", tr("Copy Icon"), tr("Copy this template's picture")), &QAction::triggered, this,
            [this] { m_actions.copyIconImage(m_table, m_clickedRow); });
    connect(add("saveTemplateIcon", tr("Save Icon…"), tr("Save this template's picture as a PNG file")),
            &QAction::triggered, this, [this] { m_actions.saveIconImage(m_table, m_clickedRow); });
    connect(add("saveTemplateAndIcon", tr("Save Template and Icon…"), tr("Save this template and its picture in a folder")),
            &QAction::triggered, this, [this] { m_actions.saveIconAndTemplate(m_table, m_clickedRow); });
}

QAction *TemplateContextMenu::add(const char *name, const QString &text, const QString &toolTip)
{
    QAction *a = addAction(text);
    a->setObjectName(QString::fromLatin1(name));
    a->setToolTip(toolTip);
    return a;
}

QAction *TemplateContextMenu::item(const QString &name) const
{
    return findChild<QAction *>(name, Qt::FindDirectChildrenOnly);
}

void TemplateContextMenu::updateForRow(qsizetype clickedRow)
{
    m_clickedRow = clickedRow;
    const TemplateSelection::MenuState state = m_actions.menuNeedsUpdate(m_table, clickedRow);
    const std::pair<const char *, bool> items[] = {
        {"pasteTemplate", state.paste},          {"deleteAllTemplates", state.deleteAll},
        {"exportAllTemplates", state.exportAll}, {"deleteTemplate", state.deleteOne},
        {"exportTemplate", state.exportOne},     {"copyTemplateIcon", state.copyIcon},
        {"saveTemplateIcon", state.saveIcon},    {"saveTemplateAndIcon", state.saveTemplateAndIcon},
    };
    // The built-in table's menu has no paste and no delete items.
    for (const auto &[name, enabled] : items)
        if (QAction *a = item(QString::fromLatin1(name)))
            a->setEnabled(enabled);
}

void TemplateContextMenu::popupForRow(qsizetype clickedRow, const QPoint &globalPos)
{
    updateForRow(clickedRow);
    popup(globalPos);
}

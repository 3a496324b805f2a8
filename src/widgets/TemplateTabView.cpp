#include "widgets/TemplateTabView.h"

// Placeholder while the tables are being built.
struct TemplateTabView::Private {
};

TemplateTabView::TemplateTabView(TemplateStore &, TemplateSelection &, UserDefaults &, QWidget *parent)
    : QWidget(parent)
    , d(std::make_unique<Private>())
{
}

TemplateTabView::~TemplateTabView() = default;

TemplateTable TemplateTabView::currentTable() const { return TemplateTable::BuiltIn; }
qsizetype TemplateTabView::selectedRow(TemplateTable) const { return -1; }

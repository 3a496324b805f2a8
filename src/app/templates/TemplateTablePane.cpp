#include "app/templates/TemplateTablePane.h"

#include "app/templates/TemplateListModel.h"
#include "app/templates/TemplateTableView.h"
#include "app/templates/TemplateThumbnailDelegate.h"

#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

TemplateTablePane::TemplateTablePane(TemplateStore &store, TemplateTable table, QWidget *parent)
    : QWidget(parent)
    , m_table(table)
    , m_model(new TemplateListModel(store, table, this))
    , m_view(new TemplateTableView(table))
    , m_slider(new QSlider(Qt::Horizontal))
    , m_label(new QLabel(QStringLiteral(" ")))
{
    const bool builtIn = table == TemplateTable::BuiltIn;
    setObjectName(builtIn ? QStringLiteral("templatesPane") : QStringLiteral("userTemplatesPane"));

    m_view->setObjectName(builtIn ? QStringLiteral("templatesTable") : QStringLiteral("userTemplatesTable"));
    m_view->setModel(m_model);
    m_view->setItemDelegate(new TemplateThumbnailDelegate(m_view));
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_view->setUniformItemSizes(false);
    m_view->setResizeMode(QListView::Adjust);
    m_view->setSpacing(1);
    m_view->setMinimumWidth(140);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);

    m_slider->setObjectName(builtIn ? QStringLiteral("templatesTableSlider") : QStringLiteral("userTemplatesTableSlider"));
    m_slider->setRange(kMinimumScale, kMaximumScale);
    m_slider->setValue(kInitialScale);
    m_slider->setToolTip(tr("Thumbnail size"));
    m_model->setSliderPercent(kInitialScale);

    m_label->setObjectName(builtIn ? QStringLiteral("templatesTableSelectedRowLabel")
                                   : QStringLiteral("userTemplatesTableSelectedRowLabel"));
    m_label->setToolTip(tr("The number of the selected template"));
    m_label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_label->setMinimumWidth(m_label->fontMetrics().horizontalAdvance(QStringLiteral("0000")));

    auto *bottom = new QHBoxLayout;
    bottom->setContentsMargins(4, 0, 4, 0);
    bottom->setSpacing(8);
    if (!builtIn) {
        m_deleteButton = new QPushButton(tr("Delete"));
        m_deleteButton->setObjectName(QStringLiteral("deleteTemplateButton"));
        m_deleteButton->setToolTip(tr("Delete the selected template from My Templates"));
        m_deleteButton->setAutoDefault(false);
        bottom->addWidget(m_deleteButton);
        connect(m_deleteButton, &QPushButton::clicked, this, &TemplateTablePane::deleteRequested);
    }
    bottom->addWidget(m_slider, 1);
    bottom->addWidget(m_label);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 4);
    layout->setSpacing(6);
    layout->addWidget(m_view, 1);
    layout->addLayout(bottom);

    connect(m_view, &QWidget::customContextMenuRequested, this, [this](const QPoint &pos) {
        const QModelIndex index = m_view->indexAt(pos);
        emit contextMenuRequested(index.isValid() ? index.row() : -1, m_view->viewport()->mapToGlobal(pos));
    });
    connect(m_slider, &QSlider::valueChanged, this, &TemplateTablePane::sliderMoved);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        m_shownRow = selectedRow();
        if (!m_quiet)
            emit selectionDidChange(m_shownRow);
    });
}

QListView *TemplateTablePane::tableView() const
{
    return m_view;
}

qsizetype TemplateTablePane::selectedRow() const
{
    const QModelIndexList rows = m_view->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void TemplateTablePane::selectRow(qsizetype row)
{
    QItemSelectionModel *selection = m_view->selectionModel();
    const QModelIndex index = m_model->index(int(row));
    if (!index.isValid()) {
        selection->clearSelection();
        m_shownRow = -1;
        return;
    }
    selection->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void TemplateTablePane::selectRowQuietly(qsizetype row)
{
    m_quiet = true;
    selectRow(row);
    m_quiet = false;
}

void TemplateTablePane::scrollToRow(qsizetype row)
{
    const QModelIndex index = m_model->index(int(row));
    if (index.isValid())
        m_view->scrollTo(index, QAbstractItemView::PositionAtCenter);
}

void TemplateTablePane::setRowLabel(const QString &text)
{
    m_label->setText(text);
}

void TemplateTablePane::reload()
{
    // The store changes its list before it reports the change, so the row selected before it
    // is the one last seen, not the one the selection model finds now.
    const qsizetype row = m_shownRow;
    m_quiet = true;
    m_model->reload();
    selectRow(row);
    m_quiet = false;
    // A selected row that is gone leaves nothing selected, which is a selection change.
    if (row >= 0 && selectedRow() < 0)
        emit selectionDidChange(-1);
}

void TemplateTablePane::sliderMoved(int value)
{
    m_model->setSliderPercent(value);
}

#include "app/templates/TemplateListModel.h"

#include "foundation/BackgroundJob.h"
#include "foundation/CountedNoun.h"
#include "foundation/PlistValue.h"
#include "templates/TemplateTables.h"

#include <QSize>

#include <cmath>

TemplateListModel::TemplateListModel(TemplateStore &store, TemplateTable table, QObject *parent)
    : QAbstractListModel(parent)
    , m_store(store)
    , m_table(table)
{
    m_thumbnailHeights.fill(-1.0, int(templates().size()));
}

const TemplateStore::Templates &TemplateListModel::templates() const
{
    return m_table == TemplateTable::BuiltIn ? m_store.builtInTemplates() : m_store.userTemplates();
}

TemplateStore::Template TemplateListModel::templateAt(int row) const
{
    const auto &list = templates();
    return row >= 0 && row < list.size() ? list.at(row) : nullptr;
}

int TemplateListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(templates().size());
}

double TemplateListModel::rowHeight(int row) const
{
    if (row < 0 || row >= m_thumbnailHeights.size())
        return TemplateTables::kFallbackRowHeight;
    if (m_thumbnailHeights[row] < 0.0)
        m_thumbnailHeights[row] = TemplateTables::thumbnailHeight(templateAt(row));
    const double height = m_thumbnailHeights[row];
    if (height <= 0.0)
        return m_table == TemplateTable::User ? TemplateTables::kFallbackRowHeight : 0.0;
    return m_sliderPercent * height / 100.0;
}

QVariant TemplateListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const int row = index.row();
    switch (role) {
    case Qt::DecorationRole: {
        const auto found = m_thumbnails.constFind(row);
        if (found != m_thumbnails.constEnd())
            return *found;
        requestThumbnail(row);
        return {};
    }
    case Qt::SizeHintRole:
        return QSize(0, int(std::lround(rowHeight(row))));
    case Qt::ToolTipRole: {
        const TemplateStore::Template t = templateAt(row);
        const qint64 modules = t ? PlistValue::integerValue(t->value(QStringLiteral("nbrModules"))) : 0;
        return tr("Template %1: %2").arg(row + 1).arg(CountedNoun::text(modules, tr("photo"), tr("photos")));
    }
    case Qt::AccessibleTextRole:
        return tr("Template %1").arg(row + 1);
    default:
        return {};
    }
}

Qt::ItemFlags TemplateListModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QAbstractListModel::flags(index);
    if (index.isValid())
        flags |= Qt::ItemIsDragEnabled;
    return flags;
}

void TemplateListModel::requestThumbnail(int row) const
{
    if (m_pending.contains(row))
        return;
    m_pending.insert(row);
    // The worker gets its own reference to the template; the store may change meanwhile, and the
    // generation then tells the result to go away.
    const TemplateStore::Template t = templateAt(row);
    const quint64 generation = m_generation;
    auto *self = const_cast<TemplateListModel *>(this);
    // A job of the model's own: when the model goes first, the decode ends alone, unheard.
    auto *job = new BackgroundJob(self, BackgroundJob::Threads::SharedPool, BackgroundJob::Ending::Drop);
    connect(job, &BackgroundJob::finished, self, [self, job, row, generation](const QVariant &image) {
        job->deleteLater();
        if (generation != self->m_generation)
            return;
        self->m_pending.remove(row);
        self->m_thumbnails.insert(row, image.value<QImage>());
        const QModelIndex changed = self->index(row);
        emit self->dataChanged(changed, changed, {Qt::DecorationRole});
        emit self->thumbnailReady(row);
    });
    job->start([t](BackgroundJob::Control &) { return QVariant(TemplateTables::thumbnailImage(t)); });
}

void TemplateListModel::setSliderPercent(double percent)
{
    if (percent == m_sliderPercent)
        return;
    // Rows keep their places; only their heights change, so the views keep selection and scroll.
    emit layoutAboutToBeChanged();
    m_sliderPercent = percent;
    emit layoutChanged();
}

void TemplateListModel::reload()
{
    beginResetModel();
    ++m_generation;
    m_thumbnails.clear();
    m_pending.clear();
    m_thumbnailHeights.fill(-1.0, int(templates().size()));
    endResetModel();
}

#pragma once

#include "templates/TemplateStore.h"
#include "templates/TemplateTable.h"

#include <QAbstractListModel>
#include <QHash>
#include <QImage>
#include <QSet>
#include <QVector>

// One template table as a list model: a row per template of its store, the decoded thumbnail as
// the decoration and the row height (the thumbnail's height at the slider's percent) as the
// size hint.
//
// Thumbnails are decoded only when a row is first painted, on the thread pool: until then the
// decoration is an invalid variant (the delegate draws a "loading" look), afterwards a QImage
// that is null when the template has no thumbnail that decodes. Row heights come from the
// thumbnails' headers, which are read without decoding.
class TemplateListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    TemplateListModel(TemplateStore &store, TemplateTable table, QObject *parent = nullptr);

    TemplateTable table() const { return m_table; }
    TemplateStore::Template templateAt(int row) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    // Every row can be dragged (to the other table, within "My Templates", or out as a file).
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    // The thumbnail scale of the table's slider, in percent of each thumbnail's own height.
    double sliderPercent() const { return m_sliderPercent; }
    void setSliderPercent(double percent);
    // The row's height at the current slider value.
    double rowHeight(int row) const;

    // The store changed: every row is read again (thumbnails and heights too).
    void reload();

    // Thumbnails asked for and not decoded yet.
    int pendingThumbnails() const { return int(m_pending.size()); }
    // Thumbnails decoded so far (only rows that were shown).
    int decodedThumbnails() const { return int(m_thumbnails.size()); }

signals:
    // A thumbnail was decoded and is shown from now on.
    void thumbnailReady(int row);

private:
    const TemplateStore::Templates &templates() const;
    void requestThumbnail(int row) const;

    TemplateStore &m_store;
    TemplateTable m_table;
    double m_sliderPercent = 100.0;
    // Decoded thumbnails by row, the rows being decoded, and the thumbnails' header heights
    // (negative: not read yet). The generation tells results of an older store content apart.
    mutable QHash<int, QImage> m_thumbnails;
    mutable QSet<int> m_pending;
    mutable QVector<double> m_thumbnailHeights;
    quint64 m_generation = 0;
};

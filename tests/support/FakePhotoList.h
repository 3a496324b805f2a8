#pragma once

#include "photos/TessaryViewDelegate.h"

#include <QList>
#include <QStringList>

#include <utility>

// A photo list for tests: fixed paths, alignments and framings.
class FakePhotoList : public TessaryViewDelegate
{
public:
    FakePhotoList() = default;
    explicit FakePhotoList(QStringList photos, QList<int> alignments = {}, qsizetype selected = -1)
        : m_photos(std::move(photos)), m_alignments(std::move(alignments)), m_selected(selected)
    {
    }
    // n photos named "/photos/p<i>.jpg".
    static FakePhotoList numbered(int n)
    {
        QStringList photos;
        for (int i = 0; i < n; ++i)
            photos << QStringLiteral("/photos/p%1.jpg").arg(i);
        return FakePhotoList(photos);
    }

    QStringList pickedPhotos() const override { return m_photos; }
    int alignmentIndexAtIndex(qsizetype index) const override
    {
        return index >= 0 && index < m_alignments.size() ? m_alignments[index] : 0;
    }
    PhotoFraming framingAtIndex(qsizetype index) const override { return framings.value(index); }
    qsizetype selectedItem() const override { return m_selected; }
    void selectIndex(qsizetype index) override { m_selected = index; }
    void exchangeItem(qsizetype a, qsizetype b) override
    {
        if (a >= 0 && b >= 0 && a < m_photos.size() && b < m_photos.size())
            m_photos.swapItemsAt(a, b);
    }

    QList<PhotoFraming> framings;

private:
    QStringList m_photos;
    QList<int> m_alignments;
    qsizetype m_selected = -1;
};

#pragma once

#include "images/PhotoFraming.h"

#include <QString>
#include <QStringList>

// What the collage view asks of the photo list: the ordered photo paths and each photo's
// alignment, and what it tells it about tiles being selected or swapped.
class TessaryViewDelegate
{
public:
    virtual ~TessaryViewDelegate() = default;
    virtual QStringList pickedPhotos() const = 0;
    // 0 centred crop, 1 crop keeping the start, 2 crop keeping the end, 3 fit the whole image,
    // 4 fill around the photo's subject (Smart).
    virtual int alignmentIndexAtIndex(qsizetype index) const = 0;
    // The photo's hand framing, which wins over its alignment; none by default.
    virtual PhotoFraming framingAtIndex(qsizetype) const { return PhotoFraming(); }
    // The selected photo's index, or -1 when none is selected.
    virtual qsizetype selectedItem() const = 0;
    virtual void selectIndex(qsizetype index) = 0;
    virtual void exchangeItem(qsizetype index, qsizetype withIndex) = 0;
};

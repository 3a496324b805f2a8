#pragma once

#include <QImage>
#include <QString>

#include <utility>
#include <vector>

// One picture showing every generated picture as a labelled thumbnail, for looking at the whole
// set at once.
class ContactSheet
{
public:
    using Entry = std::pair<QString, QImage>;   // label, thumbnail
    static QImage render(const std::vector<Entry> &entries, int cellSize = 220, int columns = 8);
};

#pragma once

#include <QImage>
#include <QString>

#include <vector>

// One picture with every thumbnail of the library side by side, labelled with its row in the
// built-in list and its module count, for checking the library by eye.
class ContactSheet
{
public:
    struct Item
    {
        QImage thumbnail;
        QString label;
    };
    static QImage render(const std::vector<Item> &items, int perRow = 20);
};

#include "ContactSheet.h"

#include <QFont>
#include <QPainter>

QImage ContactSheet::render(const std::vector<Item> &items, int perRow)
{
    const int cell = 176, label = 16;
    const int columns = std::max(1, perRow);
    const int rows = int((items.size() + size_t(columns) - 1) / size_t(columns));
    QImage sheet(columns * cell, std::max(1, rows) * (cell + label), QImage::Format_RGB32);
    sheet.fill(Qt::white);
    QPainter p(&sheet);
    p.setRenderHint(QPainter::Antialiasing);
    QFont font = p.font();
    font.setPixelSize(11);
    p.setFont(font);
    p.setPen(QColor(0x55, 0x55, 0x55));
    for (size_t i = 0; i < items.size(); ++i) {
        const int x = int(i % size_t(columns)) * cell;
        const int y = int(i / size_t(columns)) * (cell + label);
        const QImage &t = items[i].thumbnail;
        p.drawImage(x + (cell - t.width()) / 2, y + (cell - t.height()) / 2, t);
        p.drawText(QRect(x, y + cell - 2, cell, label), Qt::AlignCenter, items[i].label);
    }
    return sheet;
}

#include "ContactSheet.h"

#include <QFont>
#include <QPainter>

QImage ContactSheet::render(const std::vector<Entry> &entries, int cellSize, int columns)
{
    const int labelHeight = 22;
    const int gap = 10;
    const int rows = (int(entries.size()) + columns - 1) / columns;
    const int cellW = cellSize + gap;
    const int cellH = cellSize + labelHeight + gap;
    QImage sheet(columns * cellW + gap, std::max(1, rows) * cellH + gap, QImage::Format_RGB32);
    sheet.fill(QColor(48, 48, 52));
    QPainter p(&sheet);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    p.setRenderHint(QPainter::TextAntialiasing);
    QFont font;
    font.setPixelSize(13);
    p.setFont(font);
    for (size_t i = 0; i < entries.size(); ++i) {
        const auto &[name, picture] = entries[i];   // name: the label under the picture
        const int x = gap + int(i % size_t(columns)) * cellW;
        const int y = gap + int(i / size_t(columns)) * cellH;
        if (!picture.isNull()) {
            const QImage thumb = picture.scaled(cellSize, cellSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            // Checkerboard behind pictures with transparency.
            const QRect frame(x + (cellSize - thumb.width()) / 2, y + (cellSize - thumb.height()) / 2,
                              thumb.width(), thumb.height());
            for (int cy = frame.top(); cy < frame.bottom(); cy += 8)
                for (int cx = frame.left(); cx < frame.right(); cx += 8)
                    p.fillRect(QRect(cx, cy, 8, 8).intersected(frame),
                               ((cx - frame.left()) / 8 + (cy - frame.top()) / 8) % 2 ? QColor(90, 90, 95) : QColor(70, 70, 75));
            p.drawImage(frame.topLeft(), thumb);
        }
        p.setPen(QColor(225, 225, 225));
        p.drawText(QRect(x, y + cellSize + 2, cellSize, labelHeight), Qt::AlignHCenter | Qt::AlignVCenter,
                   name);
    }
    return sheet;
}

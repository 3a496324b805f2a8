#include "app/photos/UnreadablePhotoMark.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace {

const QColor kBadge(32, 32, 36, 225);
const QColor kBadgeEdge(255, 255, 255, 170);
const QColor kGlyph(245, 245, 245);
const QColor kSlash(255, 112, 92);

// A small picture: a frame with a hill and a sun, struck through.
void paintGlyph(QPainter &p, const QRectF &box)
{
    const double s = box.width();
    const double line = std::max(1.5, s / 14);
    const QRectF frame = box.adjusted(line, s * 0.14, -line, -s * 0.14);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(kGlyph, line, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawRoundedRect(frame, line * 1.5, line * 1.5);
    QPainterPath hill;
    hill.moveTo(frame.left() + line, frame.bottom() - line);
    hill.lineTo(frame.left() + frame.width() * 0.38, frame.top() + frame.height() * 0.45);
    hill.lineTo(frame.left() + frame.width() * 0.58, frame.top() + frame.height() * 0.68);
    hill.lineTo(frame.left() + frame.width() * 0.72, frame.top() + frame.height() * 0.55);
    hill.lineTo(frame.right() - line, frame.bottom() - line);
    p.drawPath(hill);
    p.setPen(Qt::NoPen);
    p.setBrush(kGlyph);
    const double sun = frame.height() * 0.11;
    p.drawEllipse(QPointF(frame.right() - frame.width() * 0.24, frame.top() + frame.height() * 0.3), sun, sun);
    // The stroke: a badge-coloured gap first, so the slash stands clear of the picture.
    const QLineF slash(box.right() - line, box.top() + line, box.left() + line, box.bottom() - line);
    p.setPen(QPen(kBadge, line * 3.2, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(slash);
    p.setPen(QPen(kSlash, line * 1.4, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(slash);
}

} // namespace

void UnreadablePhotoMark::paintField(QPainter &painter, const QRectF &area)
{
    painter.fillRect(area, QColor(206, 206, 206));
}

void UnreadablePhotoMark::paint(QPainter &painter, const QRectF &area, const QString &label)
{
    const double side = std::min(area.width(), area.height());
    if (side < 14)
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double glyph = std::clamp(side * 0.3, 10.0, 44.0);
    const double pad = std::clamp(glyph * 0.3, 3.0, 10.0);
    const double hpad = std::max(3.0, pad * 0.5);
    // The label on one line where it fits, else broken at its spaces, in a smaller size if need
    // be; left out only where it cannot be shown whole (a cut-off label reads worse than none).
    const double maxTextWidth = area.width() - 4 - 2 * hpad;
    const double maxTextHeight = area.height() - 4 - glyph - 2.6 * pad;
    int flags = Qt::AlignHCenter | Qt::AlignTop;
    QFont font = painter.font();
    font.setBold(true);
    QRectF text;
    bool withLabel = false;
    const int largest = int(std::clamp(side * 0.1, 10.0, 13.0));
    for (const bool wrap : {false, true}) {
        flags = wrap ? flags | Qt::TextWordWrap : flags;
        for (int px = largest; px >= (wrap ? 8 : 9) && !withLabel && !label.isEmpty(); --px) {
            font.setPixelSize(px);
            text = QFontMetricsF(font).boundingRect(QRectF(0, 0, std::max(1.0, maxTextWidth), 1000), flags, label);
            withLabel = maxTextWidth > 0 && text.width() <= maxTextWidth && text.height() <= maxTextHeight;
        }
        if (withLabel)
            break;
    }
    const QSizeF badgeSize(withLabel ? std::max(glyph + 2 * pad, text.width() + 2 * hpad) : glyph + 2 * pad,
                           withLabel ? glyph + text.height() + 2.6 * pad : glyph + 2 * pad);
    const QRectF badge(area.center() - QPointF(badgeSize.width() / 2, badgeSize.height() / 2), badgeSize);
    painter.setPen(QPen(kBadgeEdge, 1));
    painter.setBrush(kBadge);
    painter.drawRoundedRect(badge.adjusted(0.5, 0.5, -0.5, -0.5), pad, pad);
    paintGlyph(painter, QRectF(badge.center().x() - glyph / 2, badge.top() + pad, glyph, glyph));
    if (withLabel) {
        painter.setFont(font);
        painter.setPen(kGlyph);
        painter.drawText(QRectF(badge.left(), badge.top() + pad + glyph + 0.6 * pad, badge.width(), text.height()), flags,
                         label);
    }
    painter.restore();
}

#pragma once

#include <QColor>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>

class QPainter;

// One mark drawn on a photo by the editor's annotate tool: text, an arrow, a rectangle, an
// ellipse or a freehand line, in a colour and a line width, placed in picture pixels. The same
// painting shows it on screen while it can still be moved and burns it into the pixels.
struct Annotation {
    enum Kind { Text = 0, Arrow, Rectangle, Ellipse, Freehand };
    static constexpr int kKindCount = 5;

    Kind kind = Arrow;
    QColor colour = Qt::red;
    double width = 4;
    // Text: its top-left corner; arrow: tail and tip; rectangle and ellipse: two opposite
    // corners; freehand: every point of the stroke.
    QList<QPointF> points;
    QString text;

    // The text's pixel size, which grows with the line width.
    double fontPixelSize() const;
    // Everything the painting can touch.
    QRectF boundingRect() const;
    void paint(QPainter &painter) const;
    Annotation translated(const QPointF &offset) const;
    // Too small to be meant (a click without a drag, or an empty text).
    bool isEmpty() const;
    bool operator==(const Annotation &) const = default;
};

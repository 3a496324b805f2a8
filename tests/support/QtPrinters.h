#pragma once

#include <QPoint>
#include <QPointF>
#include <QSize>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <ostream>

// Readable GoogleTest failure messages for the Qt value types the tests compare.
inline void PrintTo(const QString &s, std::ostream *os) { *os << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QPoint &p, std::ostream *os) { *os << '(' << p.x() << ", " << p.y() << ')'; }
inline void PrintTo(const QPointF &p, std::ostream *os) { *os << '(' << p.x() << ", " << p.y() << ')'; }
inline void PrintTo(const QSize &s, std::ostream *os) { *os << s.width() << " x " << s.height(); }
inline void PrintTo(const QSizeF &s, std::ostream *os) { *os << s.width() << " x " << s.height(); }
inline void PrintTo(const QRectF &r, std::ostream *os)
{
    *os << '(' << r.x() << ", " << r.y() << ", " << r.width() << ", " << r.height() << ')';
}

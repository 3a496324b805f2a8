#include "SlotPattern.h"

#include <cmath>

SlotPattern::SlotPattern(QString family, QString name, int columns, int rows, std::vector<QRect> blocks)
    : m_family(std::move(family)), m_name(std::move(name)), m_columns(columns), m_rows(rows),
      m_blocks(std::move(blocks))
{
}

SlotPattern SlotPattern::transposed(const QString &family, const QString &name) const
{
    std::vector<QRect> blocks;
    blocks.reserve(m_blocks.size());
    for (const QRect &b : m_blocks)
        blocks.emplace_back(b.y(), b.x(), b.height(), b.width());
    return SlotPattern(family, name, m_rows, m_columns, std::move(blocks));
}

SlotPattern SlotPattern::mirrored(const QString &name) const
{
    std::vector<QRect> blocks;
    blocks.reserve(m_blocks.size());
    for (const QRect &b : m_blocks)
        blocks.emplace_back(m_columns - b.x() - b.width(), b.y(), b.width(), b.height());
    return SlotPattern(m_family, name, m_columns, m_rows, std::move(blocks));
}

std::optional<QSize> SlotPattern::slotSizeFor(double ratio, double tolerance, int maxSlotSide) const
{
    if (m_columns <= 0 || m_rows <= 0 || ratio <= 0)
        return std::nullopt;
    // Errors are compared in steps of half a percent, and within a step the smaller slot wins:
    // a slightly less exact fit on a much smaller grid gives simpler, faster layouts.
    static const std::vector<double> logs = [] {
        std::vector<double> l(64);
        for (size_t i = 1; i < l.size(); ++i)
            l[i] = std::log(double(i));
        return l;
    }();
    if (maxSlotSide >= int(logs.size()))
        maxSlotSide = int(logs.size()) - 1;
    const double wanted = std::log(ratio) - std::log(double(m_columns) / double(m_rows));
    std::optional<QSize> best;
    int bestStep = 0;
    double bestError = 0;
    for (int sw = 1; sw <= maxSlotSide; ++sw) {
        for (int sh = 1; sh <= maxSlotSide; ++sh) {
            const double error = std::abs(logs[size_t(sw)] - logs[size_t(sh)] - wanted);
            const int step = int(error / 0.005);
            const bool better = !best || step < bestStep
                || (step == bestStep && sw * sh < best->width() * best->height());
            if (better) {
                best = QSize(sw, sh);
                bestStep = step;
                bestError = error;
            }
        }
    }
    if (bestError > std::log1p(tolerance))
        return std::nullopt;
    return best;
}

bool SlotPattern::tilesExactly() const
{
    if (m_columns <= 0 || m_rows <= 0)
        return false;
    std::vector<int> cover(size_t(m_columns) * size_t(m_rows), 0);
    for (const QRect &b : m_blocks) {
        if (b.width() <= 0 || b.height() <= 0 || b.x() < 0 || b.y() < 0 || b.x() + b.width() > m_columns
            || b.y() + b.height() > m_rows)
            return false;
        for (int y = b.y(); y < b.y() + b.height(); ++y) {
            for (int x = b.x(); x < b.x() + b.width(); ++x) {
                if (++cover[size_t(y) * size_t(m_columns) + size_t(x)] > 1)
                    return false;
            }
        }
    }
    for (int c : cover) {
        if (c != 1)
            return false;
    }
    return true;
}

#include "model/TileJumble.h"

#include "foundation/AlertPresenter.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "model/CollageLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

std::vector<QRectF> framesOf(const CollageLayout &layout)
{
    std::vector<QRectF> frames;
    frames.reserve(layout.tiles.size());
    for (const TileLayout &t : layout.tiles)
        frames.push_back(t.frame);
    return frames;
}

void setFrames(CollageLayout &layout, const std::vector<QRectF> &frames)
{
    for (size_t i = 0; i < layout.tiles.size() && i < frames.size(); ++i)
        layout.tiles[i].frame = frames[i];
}

// A truncation that gives a defined answer for any real (NaN and infinities of a degenerate
// collage give 0 or the integer limits instead of undefined behaviour).
qint64 truncated(double v)
{
    if (!std::isfinite(v))
        return std::isnan(v) ? 0 : (v > 0 ? std::numeric_limits<qint32>::max() : std::numeric_limits<qint32>::min());
    return qint64(std::clamp(std::trunc(v), -2147483648.0, 2147483647.0));
}

} // namespace

TileJumble::TileJumble(QRandomGenerator *random)
    : m_random(random ? random : QRandomGenerator::system())
{
}

qint64 TileJumble::randomIntegerBetween(qint64 a, qint64 b, QRandomGenerator &random)
{
    const float lo = float(std::min(a, b));
    const float hi = float(std::max(a, b));
    if (lo == hi)
        return qint64(lo);
    if (hi - lo == 1.0f)
        return random.bounded(2) == 0 ? qint64(lo) : qint64(hi);
    const float d = hi - lo;
    const double u = double(random.generate()) / 4294967296.0; // [0, 1)
    const float t = float((double(std::trunc(d)) - 1.0) * u + 1.0) - 1.0f;
    const float value = lo + t / (d - 1.0f) * d;
    return qint64(std::round(value)); // halves away from zero
}

QPointF TileJumble::center(const QRectF &frame)
{
    return QPointF(float(frame.x() + frame.width() * 0.5), float(frame.y() + frame.height() * 0.5));
}

QRectF TileJumble::withCenter(const QRectF &frame, float cx, float cy)
{
    return QRectF(double(cx) - frame.width() * 0.5, double(cy) - frame.height() * 0.5, frame.width(), frame.height());
}

void TileJumble::jumble(std::vector<QRectF> &frames, const QSizeF &collageSize)
{
    m_jumbledCx.clear();
    m_jumbledCy.clear();
    m_jumbledCx.reserve(qsizetype(frames.size()));
    m_jumbledCy.reserve(qsizetype(frames.size()));
    const double W = collageSize.width();
    const double H = collageSize.height();
    for (QRectF &frame : frames) {
        const QPointF c = center(frame);
        m_jumbledCx.append(float(c.x()));
        m_jumbledCy.append(float(c.y()));
        const double w = frame.width();
        const double h = frame.height();
        const qint64 cx = randomIntegerBetween(truncated(w * 0.5), truncated(W - w * 0.5), *m_random);
        const qint64 cy = randomIntegerBetween(truncated(h * 0.5), truncated(H - h * 0.5), *m_random);
        frame = withCenter(frame, float(cx), float(cy));
    }
    m_isJumbled = true;
}

void TileJumble::undojumble(std::vector<QRectF> &frames)
{
    QList<float> cx;
    QList<float> cy;
    cx.reserve(qsizetype(frames.size()));
    cy.reserve(qsizetype(frames.size()));
    for (size_t k = 0; k < frames.size(); ++k) {
        const QPointF c = center(frames[k]);
        if (qsizetype(k) >= m_jumbledCx.size() || qsizetype(k) >= m_jumbledCy.size()) {
            // No place was recorded for this tile: it stays, and its place is kept for the next undo.
            cx.append(float(c.x()));
            cy.append(float(c.y()));
            continue;
        }
        cx.append(float(c.x()));
        cy.append(float(c.y()));
        frames[k] = withCenter(frames[k], m_jumbledCx[qsizetype(k)], m_jumbledCy[qsizetype(k)]);
    }
    m_jumbledCx = cx;
    m_jumbledCy = cy;
}

bool TileJumble::unjumble(UserDefaults &defaults, qint64 selectedTemplateRow)
{
    m_isJumbled = false;
    const qint64 row = selectedTemplateRow < 0 ? -1 : selectedTemplateRow;
    defaults.setInteger(row, Preferences::SelectedTemplateTableRow);
    return row >= 0;
}

void TileJumble::jumble(CollageLayout &layout)
{
    std::vector<QRectF> frames = framesOf(layout);
    jumble(frames, layout.contentSize);
    setFrames(layout, frames);
}

void TileJumble::undojumble(CollageLayout &layout)
{
    std::vector<QRectF> frames = framesOf(layout);
    undojumble(frames);
    setFrames(layout, frames);
}

bool TileJumble::shouldRelayout(AlertPresenter &alerts)
{
    if (!m_isJumbled)
        return true;
    if (!m_alertShown) {
        m_alertShown = true;
        AlertPresenter::Alert alert;
        alert.messageText = QStringLiteral("Tessary is Jumbled.");
        alert.informativeText = QStringLiteral(
            "Changes cannot be displayed until the tessary is unjumbled.\n\nThis message will not be displayed again.");
        alert.defaultButton = QStringLiteral("OK");
        alerts.presentAlert(alert, {});
    }
    return false;
}

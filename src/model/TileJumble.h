#pragma once

#include <QList>
#include <QRandomGenerator>
#include <QRectF>
#include <QSizeF>

#include <vector>

class AlertPresenter;
class UserDefaults;
struct CollageLayout;

// Scatters the tiles of a collage at random places inside it (each tile keeps its size and may
// overlap others), swaps between the scattered and the previous places on undo, and ends with
// unjumble. While jumbled the collage must not be laid out again: shouldRelayout() says so and
// tells the user once per run of the program, that is once per TileJumble, which the collage
// view keeps for its lifetime.
//
// Tiles are handled as their frames, in tile order, so the same logic serves the window's tiles
// and a plain layout value.
class TileJumble
{
public:
    // The random source defaults to the system's; tests pass a seeded generator.
    explicit TileJumble(QRandomGenerator *random = QRandomGenerator::system());

    // A random whole number between a and b (in either order), both included: a single value
    // when they are equal, a coin toss when they are one apart, otherwise lo + u x (hi - lo)
    // with u uniform in [0, 1), worked in single precision and rounded half away from zero.
    static qint64 randomIntegerBetween(qint64 a, qint64 b, QRandomGenerator &random);

    // Centre of a frame as single-precision numbers, and the frame of that size moved so that
    // its centre is there.
    static QPointF center(const QRectF &frame);
    static QRectF withCenter(const QRectF &frame, float cx, float cy);

    // Records every tile's current centre for undo, then moves each tile to a random centre
    // that keeps it inside a collage of `collageSize` (up to rounding). Enters the jumbled state;
    // from the jumbled state the current places become the undo places.
    void jumble(std::vector<QRectF> &frames, const QSizeF &collageSize);
    // Moves every tile to its recorded place and records where it was instead, so that a second
    // undo returns to the scattered places. Tiles without a recorded place stay where they are.
    // The collage stays jumbled.
    void undojumble(std::vector<QRectF> &frames);
    // Back to the normal state. The selected template row (-1 for none) is stored under
    // "SelectedTemplateTableRow"; the answer is whether a row is selected, in which case the
    // caller chooses that template again, which lays the tiles out at their proper places.
    bool unjumble(UserDefaults &defaults, qint64 selectedTemplateRow);

    // The same operations on the tile frames of a layout value; its content size is the collage.
    void jumble(CollageLayout &layout);
    void undojumble(CollageLayout &layout);

    // Whether a relayout may happen now. While jumbled it may not; the first refusal of this
    // object shows "Tessary is Jumbled." (later ones say nothing).
    bool shouldRelayout(AlertPresenter &alerts);

    bool isJumbled() const { return m_isJumbled; }
    // The centres to return to on undo, one per tile in tile order.
    const QList<float> &jumbled_cx() const { return m_jumbledCx; }
    const QList<float> &jumbled_cy() const { return m_jumbledCy; }

private:
    QRandomGenerator *m_random;
    bool m_isJumbled = false;
    bool m_alertShown = false;
    QList<float> m_jumbledCx;
    QList<float> m_jumbledCy;
};

#pragma once

#include <QSizeF>

// The zoom of the image editor's view: the four zoom steps (half a step out, half a step in,
// actual size, fit) and the factor that fits a picture into a viewport. The view only applies
// the factor it is given.
class EditorZoom
{
public:
    enum Step { ZoomOut = 0, ZoomIn = 1, ActualSize = 2, ZoomToFit = 3 };
    static constexpr int kStepCount = 4;
    // One half-step out (1/sqrt 2) and in (sqrt 2).
    static constexpr double kZoomOutFactor = 0.7071068;
    static constexpr double kZoomInFactor = 1.414214;
    static constexpr double kMinimumZoom = 0.01;
    static constexpr double kMaximumZoom = 32.0;

    // The largest factor at which the whole picture fits the viewport; 1 for an empty picture.
    static double fitFactor(const QSizeF &image, const QSizeF &viewport);
    // The factor after a step of the table from `current`; out-of-range steps keep `current`.
    static double afterStep(int step, double current, const QSizeF &image, const QSizeF &viewport);
    // The factor after a wheel turn or pinch that scales by `scale`, kept within the limits.
    static double scaled(double current, double scale);
    static double clamp(double factor);
};

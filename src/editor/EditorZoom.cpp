#include "editor/EditorZoom.h"

#include <algorithm>

double EditorZoom::fitFactor(const QSizeF &image, const QSizeF &viewport)
{
    if (image.width() <= 0 || image.height() <= 0 || viewport.width() <= 0 || viewport.height() <= 0)
        return 1.0;
    return clamp(std::min(viewport.width() / image.width(), viewport.height() / image.height()));
}

double EditorZoom::afterStep(int step, double current, const QSizeF &image, const QSizeF &viewport)
{
    switch (step) {
    case ZoomOut:
        return scaled(current, kZoomOutFactor);
    case ZoomIn:
        return scaled(current, kZoomInFactor);
    case ActualSize:
        return 1.0;
    case ZoomToFit:
        return fitFactor(image, viewport);
    default:
        return current;
    }
}

double EditorZoom::scaled(double current, double scale)
{
    return clamp(current * scale);
}

double EditorZoom::clamp(double factor)
{
    return std::clamp(factor, kMinimumZoom, kMaximumZoom);
}

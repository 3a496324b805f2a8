#include "widgets/CollageControlBar.h"

// Placeholder while the controls are being built.
struct CollageControlBar::Private {
};

CollageControlBar::CollageControlBar(TessaryView &, UserDefaults &, QWidget *parent)
    : QWidget(parent)
    , d(std::make_unique<Private>())
{
}

CollageControlBar::~CollageControlBar() = default;

#pragma once

#include <QWidget>

#include <memory>

class TessaryView;
class UserDefaults;

// The controls under the collage: the transform segments and their name, the spacing type and
// image frame style pop-ups, the width and height spacing, Jumble / Undo Jumble / Unjumble and
// the collage background colour with its clear button. Each control forwards to the view.
class CollageControlBar : public QWidget
{
    Q_OBJECT
public:
    CollageControlBar(TessaryView &view, UserDefaults &defaults, QWidget *parent = nullptr);
    ~CollageControlBar() override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

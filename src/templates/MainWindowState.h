#pragma once

#include "templates/TemplateTable.h"

#include <QList>
#include <QRect>
#include <QSize>
#include <QString>

class TemplateSelection;
class UserDefaults;

// What the main window brings back at the next start, beside what the photo list, the template
// rows and the background colour keep themselves: the template tab in front, the coordinate
// transform, the spacing type, the image frame style, and the window's frame. Each has a key of
// its own, written when it changes (the frame when the program quits). Reading falls back to
// the first start's value whenever a stored value is absent or no longer makes sense.
class MainWindowState
{
public:
    static inline const QString TemplateTab = QStringLiteral("SelectedTemplateTab");
    static inline const QString CoordinateTransform = QStringLiteral("CoordinateTransform");
    static inline const QString SpacingType = QStringLiteral("SpacingType");
    static inline const QString ImageFrameStyle = QStringLiteral("ImageFrameStyle");
    // [x, y, width, height] of the window's normal (not maximised) frame, and whether it was
    // maximised.
    static inline const QString WindowFrame = QStringLiteral("MainWindowFrame");
    static inline const QString WindowMaximized = QStringLiteral("MainWindowMaximized");

    // None, Photo, Grey Bezel, Groove, Button; Inset, Outset.
    static constexpr int kImageFrameStyleCount = 5;
    static constexpr int kSpacingTypeCount = 2;

    struct Collage {
        TemplateTable tab = TemplateTable::BuiltIn;
        int coordinateTransform = 0;
        int spacingType = 0;
        int imageFrameStyle = 0;
        bool operator==(const Collage &) const = default;
    };

    explicit MainWindowState(UserDefaults &defaults);

    // The collage's controls as last left. "My Templates" comes back in front only while its
    // saved row is still a row (otherwise the built-in tab and its row are shown); a value out
    // of its control's range reads as the control's first value.
    Collage collage(const TemplateSelection &selection) const;

    // Where the window opens, on screens whose available areas are given (the primary first):
    // the saved frame when it overlaps one of them, made to fit that screen whole (shrunk to it,
    // but never below the minimum, and moved onto it); otherwise the preferred size, fitted the
    // same way, centred on the first screen.
    QRect windowFrame(const QList<QRect> &screens, const QSize &preferred, const QSize &minimum) const;
    bool windowMaximized() const;

    bool setTemplateTab(TemplateTable tab);
    bool setCoordinateTransform(int transform);
    bool setSpacingType(int type);
    bool setImageFrameStyle(int style);
    bool setWindowFrame(const QRect &frame, bool maximized);

private:
    int intIn(const QString &key, int count) const;

    UserDefaults &m_defaults;
};

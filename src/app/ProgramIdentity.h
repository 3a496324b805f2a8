#pragma once

#include <QIcon>
#include <QString>

// Who the program says it is to the desktop: its name (on X11 also the class of its windows,
// which the desktop entry's StartupWMClass names), its desktop entry (the window's app id on
// Wayland) and the icon every window carries.
class ProgramIdentity
{
public:
    static inline const QString kName = QStringLiteral("Tessary");
    static inline const QString kDesktopEntry = QStringLiteral("org.tessary.Tessary");

    // Sets the application's name, organisation and desktop entry; before the application object.
    static void apply();
    // The installed icon from the icon theme, or, where Tessary is not installed (run from its
    // build folder), the same icon drawn at the usual sizes.
    static QIcon icon();
};

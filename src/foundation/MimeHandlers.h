#pragma once

#include <QString>
#include <QStringList>

// Whether the desktop has a program for a kind of file, found the way the desktop's own "open"
// finds one (the freedesktop.org rules): the defaults and added associations of the
// mimeapps.list files in the configuration and data folders, the mimeinfo.cache of each
// applications folder, and the MimeType lines of the desktop entries themselves. An entry counts
// only when its desktop file exists. Reads the XDG_* variables each time, so a test can point
// them at folders of its own.
class MimeHandlers
{
public:
    static bool hasHandler(const QString &mimeType);
    // The applications folders searched, most important first.
    static QStringList applicationFolders();
};

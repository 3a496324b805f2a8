#pragma once

#include <QStringList>

// The files Tessary was asked to open (arguments of a start, or handed over by a later start),
// sorted by what is done with them: collage documents (".tessary") are opened, templates files
// (".plist") are imported into "My Templates", anything else is offered to the photo list.
// Paths that are not there at all are set apart in `missing`, so they can be named; folders and
// other things that are not regular files are passed over.
// All as absolute paths, in the order given.
struct OpenedFiles {
    QStringList photos;
    QStringList templateFiles;
    QStringList collages;
    QStringList missing;

    static OpenedFiles sort(const QStringList &paths);
    bool isEmpty() const { return photos.isEmpty() && templateFiles.isEmpty() && collages.isEmpty(); }
};

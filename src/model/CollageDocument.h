#pragma once

#include "images/PhotoFraming.h"

#include <QColor>
#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

class UserDefaults;

// One whole collage kept in a file of its own (".tessary"): the template's layout values, the
// photo list with one alignment per photo, the coordinate transform, the tile spacing, the
// image frame style, the background colour and, while the collage is jumbled, where each tile
// was scattered to, with the tile spacing. The file is an XML property list (the README describes its keys).
//
// Each photo is written twice: by its absolute path and by its path relative to the
// document's folder. Reading tries the absolute path first and the relative one when the
// absolute file is gone, so a folder holding the photos and the document can be moved as one.
// A photo found by neither way is reported in missingPhotos and left empty (an empty path),
// keeping every later photo in its own module. Keys this version does not know are kept and
// written back unchanged.
class CollageDocument
{
public:
    static inline const QString kFileSuffix = QStringLiteral("tessary");
    // The version written; documents of a later version are still read for what is known.
    static constexpr qint64 kFormatVersion = 1;

    struct Photo {
        // The absolute path as stored in the document, and the path it was found at (empty
        // when it was found nowhere).
        QString storedPath;
        QString path;
        // An alignment this version does not know reads as 0.
        int alignment = 0;
        // The photo's hand framing ("framing", beside "alignment"); none when absent.
        PhotoFraming framing;
        bool operator==(const Photo &) const = default;
    };

    // The template's layout values: "savedTessaryDataModules", "contentSizeWidth",
    // "contentSizeHeight", "moduleSizeInPoints", "borderWidth", "nbrModules", and optional
    // "backgroundColor" / "backgroundImage", as a template dictionary holds them.
    QVariantMap templateData;
    QList<Photo> photos;
    int coordinateTransform = 0;
    int spacingType = 0;
    // Tile spacing in percent of a module, across and down.
    double widthIncrement = 5.0;
    double heightIncrement = 5.0;
    int imageFrameStyle = 0;
    QColor backgroundColor = QColor(Qt::transparent);
    // While jumbled, the frame of each tile in tile order, in fractions of the collage's width
    // and height (so it fits the collage at any size it is shown or rendered at).
    bool jumbled = false;
    QList<QRectF> jumbledFrames;
    // Top-level keys this version does not know, written back as they were read.
    QVariantMap otherKeys;

    // Takes the collage's template and tile spacing from the store, as it holds them for the
    // current collage: the template's layout values present there (with "nbrModules" counted from
    // the modules) and the spacing across and down.
    void setTemplateFromDefaults(UserDefaults &defaults);
    // The jumbled tiles' frames for a collage of `size` with `tileCount` tiles; none when the
    // document is not jumbled or its frames are for another number of tiles.
    QList<QRectF> jumbledFramesAt(const QSizeF &size, qsizetype tileCount) const;
    // A document of photos given by path (each found where it is).
    void setPhotos(const QStringList &paths, const QList<int> &alignments, const QList<PhotoFraming> &framings = {});
    // The paths to lay out, in order; a missing photo is an empty path.
    QStringList photoPaths() const;
    QList<int> photoAlignments() const;
    QList<PhotoFraming> photoFramings() const;

    struct ReadResult;
    static ReadResult read(const QString &path);
    // The document's values from a property list read from a document in documentFolder.
    static ReadResult fromPropertyList(const QVariant &root, const QString &documentFolder);

    // The property list written for a document in documentFolder.
    QVariantMap toPropertyList(const QString &documentFolder) const;
    // Writes the document atomically: a failed write leaves an earlier file as it was.
    bool write(const QString &path, QString *error = nullptr) const;
};

struct CollageDocument::ReadResult {
    std::optional<CollageDocument> document;
    // Why the file was refused; empty when it was read.
    QString error;
    // The stored paths of the photos found nowhere, in list order, each once.
    QStringList missingPhotos;
    bool ok() const { return document.has_value(); }
};

#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// The file formats a result is saved in and the names its files get. The format choice of the
// save dialog starts at the format of the first photo of the list (or of the placeholder picture
// when the list is empty), so a collage of JPEG photos is offered as JPEG.
class ResultFormat
{
public:
    // The formats offered, in this order, among PNG, JPEG, TIFF, WebP and BMP: those Qt can
    // write here (Qt's own names: "png", "jpeg", "tiff", "webp", "bmp").
    static QList<QByteArray> writableFormats();
    static bool isWritable(const QByteArray &format);

    // The format the choice starts at for a reference picture: its own format when it is one of
    // the writable ones, PNG for any other picture, and empty when the file cannot be read as a
    // picture at all (then no save dialog is shown).
    static QByteArray startingFormat(const QString &referencePath);

    // "PNG", "JPEG", "TIFF", "WebP", "BMP".
    static QString displayName(const QByteArray &format);
    // The extension written: "png", "jpg", "tif", "webp", "bmp".
    static QString suffix(const QByteArray &format);
    // A file dialog name filter, e.g. "JPEG (*.jpg *.jpeg)".
    static QString nameFilter(const QByteArray &format);
    // Whether the format has a quality setting (JPEG, WebP) or a compression choice (TIFF).
    static bool hasQuality(const QByteArray &format);
    static bool hasCompression(const QByteArray &format);
    // Whether the format keeps transparency; the others are flattened on white.
    static bool keepsAlpha(const QByteArray &format);

    // The writable format a file name's extension names ("jpg", "jpeg" and "jpe" JPEG, "tif" and
    // "tiff" TIFF, any case); empty for an extension of no format written here. The one table of
    // extensions for every save of the program and the command line.
    static QByteArray formatForSuffix(const QString &suffix);

    // Where a save writes and in what format.
    struct Target {
        QString path;
        QByteArray format;
        bool operator==(const Target &) const = default;
    };
    // From the name typed and the format chosen in the dialog: a typed extension of a format
    // written here chooses that format, and the name stays as typed; any other name gets the
    // chosen format's extension added ("my.holiday" becomes "my.holiday.jpg"). So the file
    // written is the one named, and a file is only ever replaced under its own name.
    static Target saveTarget(const QString &typedPath, const QByteArray &chosenFormat);
    // The name with its extension set to the format's, as a choice of format changes the name
    // field: a known extension is replaced, any other name gets the extension added.
    static QString withSuffix(const QString &path, const QByteArray &format);
    // The name the save dialog starts with.
    static QString defaultFileName(const QByteArray &format);
    // The temporary PNG handed to the default viewer, a fresh UUID name in `folder`.
    static QString temporaryPngPath(const QString &folder);
};

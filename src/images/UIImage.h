#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QUrl>

#include <memory>

class PhotoFraming;
struct UIImageLoadResult;

// An image: one or more bitmap frames (the pages of a multi-page TIFF, usually just one) and a
// size in points. Loading makes the point size equal the pixel size.
//
// A UIImage is a handle: copies refer to the same image, like references to one object.
// isSameImage() tells whether two handles are that one image. The only change ever made to an
// image after it is made is its point size, by scaleImageToSize() (see there), which every handle
// sees. The empty image (0 x 0, no frames) is what failed loads give.
class UIImage
{
public:
    using LoadResult = UIImageLoadResult;

    UIImage(); // the empty image
    // One frame; the point size is its pixel size. A null QImage gives the empty image.
    explicit UIImage(const QImage &frame);
    UIImage(const QList<QImage> &frames, const QSizeF &size);

    // Every frame of the file, sized to the largest frame width and the largest frame height
    // (possibly from different pages). Never fails: unreadable, broken, empty, hostile or
    // oversized files give the empty image.
    static UIImage initWithContentsOfFile(const QString &path);
    // The same, with the reason for a failure (e.g. for the command line).
    static LoadResult loadFile(const QString &path);
    // The same from bytes in memory (any format Qt reads, decided by content).
    static LoadResult loadData(const QByteArray &bytes, const QString &name = QStringLiteral("image data"));
    // Exactly initWithContentsOfFile(path).scaleToUnderMegaPixels(megapixels) in size and
    // crop, but a JPEG much larger than the limit is decoded at a reduced scale (1/2, 1/4, 1/8)
    // first, which is several times faster.
    static UIImage initWithContentsOfFileUnderMegaPixels(const QString &path, double megapixels);
    static LoadResult loadFileUnderMegaPixels(const QString &path, double megapixels);
    // The whole picture brought within side x side (a thumbnail), never enlarged: a JPEG is
    // decoded at the smallest reduced scale that still has the pixels the thumbnail shows.
    static LoadResult loadFileWithin(const QString &path, int side);
    // Exactly initWithContentsOfFile(path).imageToFitSize(size, method), for a render or a tile
    // that needs the picture much smaller than the file: a JPEG is decoded at a reduced scale
    // that still has at least the pixels the fitted result shows.
    // With a framing (not null) the result shows the framing's crop instead.
    static UIImage initWithContentsOfFileFittedToSize(const QString &path, const QSizeF &size, int method);
    static UIImage initWithContentsOfFileFittedToSize(const QString &path, const QSizeF &size, int method,
                                                      const PhotoFraming &framing);
    // A picture from a URL, for previews: local files only, the empty image otherwise.
    static UIImage initWithContentsOfURL(const QUrl &url);

    // TIFF encoding of the frame that is drawn (Qt writes single-page TIFF), and back. Decoding
    // gives the empty image for bytes that are not an image; the point size is the pixel size.
    QByteArray TIFFRepresentation() const;
    static UIImage initWithTIFFRepresentation(const QByteArray &tiff);

    QSizeF size() const;
    qreal width() const { return size().width(); }
    qreal height() const { return size().height(); }
    // Changes the point size of this image (seen through every handle); the pixels stay.
    void setSize(const QSizeF &size) const;
    // Pixel size of the frame that is drawn; 0 for the empty image.
    int pixelsWide() const;
    int pixelsHigh() const;
    QSize pixelSize() const { return QSize(pixelsWide(), pixelsHigh()); }
    int frameCount() const;
    QList<QImage> representations() const;
    // The frame that is drawn: the largest by pixel area, the first of equals.
    QImage bestRepresentation() const;
    // True when there is a frame to draw.
    bool isValid() const;
    bool isEmpty() const { return !isValid(); }
    bool isSameImage(const UIImage &other) const { return m_data == other.m_data; }

    // Photos are turned upright as they are read (the orientation a camera records is applied
    // on decoding), so nothing is left to do here. Returns this very image.
    UIImage fixOrientation() const;
    // The region `rect` (points, origin lower left) as a new one-frame image.
    UIImage croppedImage(const QRectF &rect) const;
    // The largest centred part of `image` with the aspect ratio of `size`.
    static UIImage doFitImage(const UIImage &image, const QSizeF &size);
    // `image` turned by a quarter turn; the result is pixelsHigh x pixelsWide.
    static UIImage rotate90(const UIImage &image, bool clockwise);
    // A decoded copy of the TIFF encoding: what another toolkit would be handed. Null when there
    // is nothing to encode. getCGImageRef() is the same taken from all frames, so the first.
    QImage CGImage() const;
    QImage getCGImageRef() const;

    // A copy of this image, of its size (reduced to at most 8 megapixels when
    // `megapixelLimit`), with the picture drawn inside a uniform border of `inset` points filled
    // with `background` (made opaque). The border never exceeds half the smaller side. With
    // `insetByCropping` the picture is cropped to the content area (centred), else scaled to
    // fit inside it. The empty image when no drawing surface can be made.
    UIImage imageWithInsetContent(int inset, bool megapixelLimit, const QColor &background, bool insetByCropping) const;

    // Shorthands for the image operations most callers need (see ImageOperations).
    UIImage imageToFitSize(const QSizeF &size, int method) const;
    UIImage imageToFitSize(const QSizeF &size, int method, const PhotoFraming &framing) const;
    UIImage scaleToUnderMegaPixels(double megapixels) const;
    UIImage scaleImageToSize(const QSizeF &size) const;

private:
    struct Data {
        QList<QImage> frames;
        QSizeF size{0, 0};
    };
    std::shared_ptr<Data> m_data;
};

// The result of a load that reports why it failed.
struct UIImageLoadResult {
    UIImage image; // the empty image on error
    QString error; // empty on success; names the file otherwise
    bool ok() const { return error.isEmpty(); }
};

#include "editor/EditedImageReader.h"

#include "images/ImageFileReader.h"
#include "images/UIImage.h"
#include "output/JpegQuality.h"

EditedImageReader::Photo EditedImageReader::read(const QString &path)
{
    Photo photo;
    QByteArray bytes;
    QString error;
    if (!ImageFileReader::readFile(path, &bytes, &error))
        return photo;
    const ImageFileReader::Header header = ImageFileReader::readHeader(bytes, path);
    if (!header.ok())
        return photo;
    const UIImage::LoadResult loaded = UIImage::loadData(bytes, path);
    if (!loaded.ok())
        return photo;
    photo.image = loaded.image.bestRepresentation();
    photo.properties.format = header.format;
    photo.properties.size = photo.image.size();
    if (header.format == "jpeg")
        photo.properties.quality = JpegQuality::estimateOrDefault(bytes);
    photo.ok = !photo.image.isNull();
    return photo;
}

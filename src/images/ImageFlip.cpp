#include "ImageFlip.h"

UIImage ImageFlip::flipImage(const UIImage &image)
{
    const UIImage decoded = UIImage::initWithTIFFRepresentation(image.TIFFRepresentation());
    if (!decoded.isValid())
        return image;
    QImage picture = decoded.bestRepresentation();
    if (flipHorizontal())
        picture = picture.mirrored(true, false);
    if (flipVertical())
        picture = picture.mirrored(false, true);
    return UIImage(picture);
}

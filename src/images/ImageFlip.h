#pragma once

#include "UIImage.h"

// Mirrors an image as flipHorizontal() and flipVertical() say. Neither is asked for in this
// program, so flipImage() makes an unflipped copy: the picture goes through its TIFF encoding
// and back, and the input itself comes back only when that round trip fails.
class ImageFlip
{
public:
    static bool flipHorizontal() { return false; }
    static bool flipVertical() { return false; }
    static UIImage flipImage(const UIImage &image);
};

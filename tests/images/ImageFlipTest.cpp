#include "support/TestImages.h"

#include "images/ImageFlip.h"

#include <gtest/gtest.h>

TEST(ImageFlip, NeitherFlipIsAskedSoTheCopyIsUnflipped)
{
    EXPECT_FALSE(ImageFlip::flipHorizontal());
    EXPECT_FALSE(ImageFlip::flipVertical());
    const UIImage image(testimages::gradient(64, 48));
    const UIImage copy = ImageFlip::flipImage(image);
    EXPECT_FALSE(copy.isSameImage(image));
    EXPECT_EQ(copy.pixelSize(), QSize(64, 48));
    EXPECT_EQ(testimages::meanDifference(copy.bestRepresentation(), image.bestRepresentation()), 0.0);
    // Nothing to encode: the input itself comes back.
    const UIImage empty;
    EXPECT_TRUE(ImageFlip::flipImage(empty).isSameImage(empty));
}

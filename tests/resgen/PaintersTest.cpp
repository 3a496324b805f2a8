// The catalogue of generated resources matches the names the application looks up.
#include "ResourceCatalog.h"

#include <QSet>

#include <gtest/gtest.h>


namespace {

TEST(ResourceCatalog, NamesEveryResourceTheApplicationLooksUpOnce)
{
    QSet<QString> expected;
    for (int i = 0; i < 49; ++i)
        expected.insert(QStringLiteral("images-%1.jpg").arg(i));
    for (int i = 0; i < 9; ++i)
        expected.insert(QStringLiteral("flower-%1.jpg").arg(i));
    for (const char *name : {"blank.png", "defaultImage.png", "ximage.png", "MatchingMarginWidth.tif",
                             "BlendingMarginWidth.tif", "InputImageScaling.tif", "HomographyScaling.tif",
                             "CropResult.tif", "UniformlyCrop.png", "xcircle.tiff", "harp.aif"})
        expected.insert(QString::fromLatin1(name));
    QSet<QString> names;
    for (const ResourceJob &job : ResourceCatalog::all()) {
        EXPECT_FALSE(names.contains(job.name)) << qPrintable(job.name) << " twice";
        EXPECT_TRUE(bool(job.make)) << qPrintable(job.name);
        EXPECT_GT(job.cost, 0) << qPrintable(job.name);
        names.insert(job.name);
    }
    EXPECT_EQ(names, expected);
}

} // namespace

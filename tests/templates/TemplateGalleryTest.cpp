#include "templates/TemplateGallery.h"

#include "foundation/UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

TEST(TemplateGallery, OnlyTheLinkPathMakesADownload)
{
    const struct {
        const char *link;
        bool download;
    } cases[] = {
        {"https://example.org/templates/Tessary-Template-Set-3.plist", true},
        {"file:///usr/share/tessary/resources/gallery/sets/Tessary-Template-Big-Hero.plist", true},
        {"http://127.0.0.1:8080/a/Tessary-Template/index.html", true},
        {"https://example.org/page.html?file=Tessary-Template-Set-3.plist", false},
        {"https://example.org/page.html#Tessary-Template", false},
        {"https://example.org/tessary-template-set.plist", false},
        {"https://Tessary-Template.example.org/set.plist", false},
        {"https://example.org/Tessary%2DTemplate-Set.plist", true},
    };
    for (const auto &c : cases)
        EXPECT_EQ(TemplateGallery::isTemplateLink(QUrl(QString::fromLatin1(c.link))), c.download) << c.link;
}

TEST(TemplateGallery, PreferenceChoosesThePage)
{
    QTemporaryDir dir;
    UserDefaults defaults(dir.filePath(QStringLiteral("d.sqlite")));
    const QString resources = dir.filePath(QStringLiteral("res"));
    const QUrl bundled = QUrl::fromLocalFile(resources + QStringLiteral("/gallery/index.html"));
    const struct {
        const char *name;
        QVariant stored;
        QUrl page;
    } cases[] = {
        {"absent: the shipped gallery", QVariant(), bundled},
        {"an address", QStringLiteral("https://example.org/templates/"), QUrl(QStringLiteral("https://example.org/templates/"))},
        {"spaces around it", QStringLiteral("  http://127.0.0.1:9/g.html "), QUrl(QStringLiteral("http://127.0.0.1:9/g.html"))},
        {"not an address", QStringLiteral("just words"), bundled},
        {"empty", QString(), bundled},
        {"not a string", QVariant(qint64(3)), bundled},
    };
    for (const auto &c : cases) {
        if (c.stored.isValid())
            ASSERT_TRUE(defaults.setObject(c.stored, TemplateGallery::kGalleryUrlKey));
        else
            defaults.removeObject(TemplateGallery::kGalleryUrlKey);
        EXPECT_EQ(TemplateGallery::galleryUrl(defaults, resources), c.page) << c.name;
    }
}

} // namespace

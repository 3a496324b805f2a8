// Checks the template gallery as the build ships it in the resources folder: a page whose every
// set is a templates file the store takes, with a picture, and templates of its own.

#include "foundation/Paths.h"
#include "foundation/UserDefaults.h"
#include "templates/TemplateGallery.h"
#include "templates/TemplateStore.h"
#include "templates/TemplatesFile.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString galleryFolder()
{
    return QDir(Paths::resourcesFolder()).filePath(QStringLiteral("gallery"));
}

QString readPage()
{
    QFile f(QDir(galleryFolder()).filePath(QStringLiteral("index.html")));
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// What makes a template a layout: everything but its picture and the modules' file names.
QVariantMap layoutOf(const QVariantMap &t)
{
    QVariantMap key = t;
    key.remove(QStringLiteral("thumbnail"));
    QVariantList modules;
    for (const QVariant &m : t.value(QStringLiteral("savedTessaryDataModules")).toList()) {
        QVariantMap module = m.toMap();
        module.remove(QStringLiteral("imageFilename"));
        modules.append(module);
    }
    key.insert(QStringLiteral("savedTessaryDataModules"), modules);
    return key;
}

TEST(GalleryResources, EverySetOnThePageIsATemplatesFileTheStoreTakes)
{
    const QString page = readPage();
    ASSERT_FALSE(page.isEmpty()) << "no gallery page in " << galleryFolder().toStdString();
    QStringList sets, pictures;
    for (const auto &m : QRegularExpression(QStringLiteral("href=\"([^\"]+)\"")).globalMatch(page))
        if (m.captured(1).endsWith(QLatin1String(".plist")))
            sets << m.captured(1);
    for (const auto &m : QRegularExpression(QStringLiteral("src=\"([^\"]+)\"")).globalMatch(page))
        pictures << m.captured(1);
    ASSERT_GE(sets.size(), 3);
    EXPECT_EQ(pictures.size(), sets.size());

    QTemporaryDir dir;
    UserDefaults defaults(dir.filePath(QStringLiteral("d.sqlite")));
    TemplateStore store(defaults);
    QList<QVariantMap> builtIn;
    for (const TemplateStore::Template &t : TemplateStore::readBuiltInTemplates(Paths::resourcesFolder()))
        builtIn.append(layoutOf(*t));
    ASSERT_FALSE(builtIn.isEmpty());

    for (const QString &set : sets) {
        SCOPED_TRACE(set.toStdString());
        const QUrl link = TemplateGallery::bundledGalleryUrl(Paths::resourcesFolder()).resolved(QUrl(set));
        EXPECT_TRUE(TemplateGallery::isTemplateLink(link));
        const TemplatesFile::ReadResult read = TemplatesFile::fromFile(link.toLocalFile());
        ASSERT_TRUE(read.ok()) << read.error.toStdString();
        ASSERT_GE(read.templates.size(), 3);
        for (const QVariant &t : read.templates) {
            EXPECT_FALSE(builtIn.contains(layoutOf(t.toMap()))) << "a set template is also built in";
            EXPECT_FALSE(QImage::fromData(t.toMap().value(QStringLiteral("thumbnail")).toByteArray()).isNull());
        }
        const qsizetype before = store.userTemplates().size();
        EXPECT_TRUE(store.insertTemplatesFromDictionary(TemplatesFile::makeTemplateDictionaryWithTemplates(read.templates), 0));
        EXPECT_EQ(store.userTemplates().size(), before + read.templates.size());
    }
    for (const QString &picture : pictures)
        EXPECT_FALSE(QImage(QDir(galleryFolder()).filePath(picture)).isNull()) << picture.toStdString();
}

} // namespace

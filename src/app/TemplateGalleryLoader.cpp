#include "app/TemplateGalleryLoader.h"

#include "app/TemplateGalleryFactory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QOpenGLContext>
#include <QPluginLoader>

// Qt Gui's global share context (declared in its private headers): the context the web engine
// shares its pictures with.
QOpenGLContext *qt_gl_global_share_context();
void qt_gl_set_global_share_context(QOpenGLContext *context);

namespace {

// What Qt::AA_ShareOpenGLContexts would make when the application starts, made here instead, when
// the gallery is first opened: it loads the OpenGL drivers (Mesa's llvmpipe on many machines,
// some 100 MB), which most starts never need. The web engine finds it when its library loads.
void makeGlobalShareContext()
{
    if (qt_gl_global_share_context())
        return;
    auto *context = new QOpenGLContext(QCoreApplication::instance());
    context->setFormat(QSurfaceFormat::defaultFormat());
    context->create();
    qt_gl_set_global_share_context(context);
}

} // namespace

QString TemplateGalleryLoader::pluginPath()
{
    const QString folder = qEnvironmentVariableIsSet("TESSARY_PLUGINS")
        ? qEnvironmentVariable("TESSARY_PLUGINS")
        : QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral(TESSARY_PLUGINS_FROM_PROGRAM));
    return QDir::cleanPath(QDir(folder).filePath(QStringLiteral(TESSARY_GALLERY_PLUGIN_FILE)));
}

bool TemplateGalleryLoader::isInstalled()
{
    const QPluginLoader loader(pluginPath());
    return loader.metaData().value(QLatin1String("IID")).toString() == QLatin1String(TemplateGalleryFactory_iid);
}

TemplateGalleryFactory *TemplateGalleryLoader::factory(QString *error)
{
    const QString path = pluginPath();
    QPluginLoader loader(path);
    if (!loader.isLoaded() && QFileInfo::exists(path))
        makeGlobalShareContext();
    auto *factory = qobject_cast<TemplateGalleryFactory *>(loader.instance());
    if (!factory && error)
        *error = QStringLiteral("%1: %2").arg(path, loader.errorString());
    return factory;
}

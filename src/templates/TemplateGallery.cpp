#include "templates/TemplateGallery.h"

#include "foundation/UserDefaults.h"

#include <QDir>

bool TemplateGallery::isTemplateLink(const QUrl &link)
{
    return link.path(QUrl::FullyDecoded).contains(kTemplateMarker, Qt::CaseSensitive);
}

QString TemplateGallery::zoomScript(double factor)
{
    // Six decimals and a point, whatever the locale.
    return QString::asprintf("document.documentElement.style.zoom = \"%f\"", factor);
}

QString TemplateGallery::failureLogLine(const QString &description)
{
    return QStringLiteral("Error loading web page: %1").arg(description);
}

QUrl TemplateGallery::galleryUrl(const UserDefaults &defaults, const QString &resourcesFolder)
{
    const QVariant stored = defaults.objectForKey(kGalleryUrlKey);
    if (stored.typeId() == QMetaType::QString) {
        const QUrl url(stored.toString().trimmed(), QUrl::StrictMode);
        if (url.isValid() && !url.scheme().isEmpty())
            return url;
    }
    return bundledGalleryUrl(resourcesFolder);
}

QUrl TemplateGallery::bundledGalleryUrl(const QString &resourcesFolder)
{
    return QUrl::fromLocalFile(QDir(resourcesFolder).filePath(kBundledPage));
}

#pragma once

#include <QString>
#include <QUrl>

class UserDefaults;

// The rules of the template gallery that are not about pixels: which page it shows, which links
// on it are template downloads, the script that zooms the page, and the lines and texts of a
// page that fails to load.
class TemplateGallery
{
public:
    // The marker in a link's path that makes it a template download.
    static inline const QString kTemplateMarker = QStringLiteral("Tessary-Template");
    // A string in the user defaults: the address of an online gallery to show instead of the
    // one shipped with the program.
    static inline const QString kGalleryUrlKey = QStringLiteral("TemplateGalleryURL");
    // The shipped gallery's page, relative to the resources folder.
    static inline const QString kBundledPage = QStringLiteral("gallery/index.html");
    // The message of the alert shown when something on the page failed to load.
    static inline const QString kLoadFailedMessage = QStringLiteral("Templates Could No Be Loaded");
    // Loading the page gives up after this long.
    static constexpr int kTimeoutMs = 5000;
    // The alert follows a failure after this long.
    static constexpr int kAlertDelayMs = 1000;

    // Whether following the link downloads templates: its path, and only its path, holds the
    // marker (case matters).
    static bool isTemplateLink(const QUrl &link);
    // The script that zooms the page to the factor (1.0 is natural size).
    static QString zoomScript(double factor);
    // The log line of a failed load.
    static QString failureLogLine(const QString &description);

    // The page to show: the "TemplateGalleryURL" preference when it holds an address, else the
    // shipped gallery in the resources folder.
    static QUrl galleryUrl(const UserDefaults &defaults, const QString &resourcesFolder);
    static QUrl bundledGalleryUrl(const QString &resourcesFolder);
};

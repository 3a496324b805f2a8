#include "app/gallery/TemplateGalleryPage.h"

#include "templates/TemplateGallery.h"

#include <QTimer>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>

namespace {

const QString kFailureMarker = QStringLiteral("tessary-gallery-resource-failed ");

// Resource errors do not bubble; a listener on the window in the capture phase sees them all.
QString failureListener()
{
    return QStringLiteral(
               "window.addEventListener('error', function (event) {"
               "  var target = event.target;"
               "  if (!target || target === window) return;"
               "  var address = target.currentSrc || target.src || target.href || '';"
               "  if (!address) return;"
               "  console.error('%1' + address);"
               "}, true);")
        .arg(kFailureMarker);
}

} // namespace

TemplateGalleryPage::TemplateGalleryPage(QWebEngineProfile *profile, QObject *parent)
    : QWebEnginePage(profile, parent)
{
    QWebEngineScript script;
    script.setName(QStringLiteral("tessary-resource-failures"));
    script.setInjectionPoint(QWebEngineScript::DocumentCreation);
    script.setWorldId(QWebEngineScript::ApplicationWorld);
    script.setRunsOnSubFrames(true);
    script.setSourceCode(failureListener());
    scripts().insert(script);
}

bool TemplateGalleryPage::acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame)
{
    Q_UNUSED(type);
    Q_UNUSED(isMainFrame);
    m_templateURL = url;
    if (TemplateGallery::isTemplateLink(url)) {
        // The decision returns at once; the download starts from the event loop.
        QTimer::singleShot(0, this, [this, url] { emit templateLinkRequested(url); });
        return false;
    }
    return true;
}

void TemplateGalleryPage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message,
                                                   int lineNumber, const QString &sourceID)
{
    if (level == ErrorMessageLevel && message.startsWith(kFailureMarker)) {
        const QString address = message.mid(kFailureMarker.size());
        emit resourceFailed(QStringLiteral("The file %1 could not be loaded.").arg(address));
        return;
    }
    QWebEnginePage::javaScriptConsoleMessage(level, message, lineNumber, sourceID);
}

#pragma once

#include <QUrl>
#include <QWebEnginePage>

class QWebEngineProfile;

// The gallery's web page. It decides every navigation: a link whose path carries the template
// marker is not followed (the page stays as it is) but reported, so its templates can be
// downloaded; everything else is followed. It also reports every resource of the page that
// fails to load: a small script, added to each document as it is created, listens for the
// "error" events of images, style sheets and scripts and names them on the console with a
// private marker, which only this page reads.
class TemplateGalleryPage : public QWebEnginePage
{
    Q_OBJECT
public:
    TemplateGalleryPage(QWebEngineProfile *profile, QObject *parent = nullptr);

    // The last link the page asked about.
    QUrl templateURL() const { return m_templateURL; }

signals:
    // A template link was clicked; emitted from the event loop, after the decision.
    void templateLinkRequested(const QUrl &link);
    // A resource of the page (an image, a style sheet, a script) could not be loaded.
    void resourceFailed(const QString &description);

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message, int lineNumber,
                                  const QString &sourceID) override;

private:
    QUrl m_templateURL;
};

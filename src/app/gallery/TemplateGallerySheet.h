#pragma once

#include "app/TemplateGalleryWindow.h"
#include "foundation/AlertPresenter.h"

#include <QDialog>
#include <QUrl>

class QLabel;
class QSlider;
class QTimer;
class QVBoxLayout;
class QWebEngineLoadingInfo;
class QWebEngineProfile;
class QWebEngineView;
class TemplateGalleryPage;
class UserDefaults;

// The template gallery: a window-modal sheet with the gallery page in a web view, a zoom slider
// and a Close button. Clicking a template link on the page asks for its templates to be added
// to "My Templates" (downloadTemplate); any other link is followed inside the sheet. Anything on
// the page that fails to load is logged at once and, a second later, ends the sheet and is told
// in an alert, once for each failure.
//
// The sheet lives in the gallery plugin, which alone links the web engine; within it the
// engine is started only when the gallery first opens.
class TemplateGallerySheet : public QDialog, public TemplateGalleryWindow
{
    Q_OBJECT
public:
    TemplateGallerySheet(UserDefaults &defaults, const QString &resourcesFolder, AlertPresenter &alerts,
                         QWidget *parent = nullptr);
    ~TemplateGallerySheet() override;

    QDialog *dialog() override { return this; }
    void showTemplateWebviewWindow() override;
    // Bypasses any cached copy of the page and gives up after five seconds.
    void reloadTemplateWebviewWindow() override;
    void zoomTemplateWebviewWindow() override;
    void endTemplateWebvieWindow() override;
    void showTemplatesAdded(qsizetype count) override;
    QLabel *statusLabel() const { return m_status; }

    // The slider's value as a zoom factor (1.0 is natural size).
    double zoomFactor() const;
    void setZoomFactor(double factor);

    // The web view and its page; null until the gallery first opens.
    QWebEngineView *templateWebview() const { return m_view; }
    TemplateGalleryPage *page() const { return m_page; }
    QSlider *templateWebviewSlider() const { return m_slider; }

signals:
    // A template link was clicked on the page.
    void downloadTemplate(const QUrl &link);

private:
    void ensureWebview();
    void onLoadingChanged(const QWebEngineLoadingInfo &info);
    void reportFailure(const QString &description);

    UserDefaults &m_defaults;
    QString m_resourcesFolder;
    AlertPresenter &m_alerts;
    QVBoxLayout *m_layout;
    QLabel *m_placeholder;
    QSlider *m_slider;
    QLabel *m_zoomLabel;
    QLabel *m_status;
    QTimer *m_timeout;
    QWebEngineProfile *m_profile = nullptr;
    QWebEngineView *m_view = nullptr;
    TemplateGalleryPage *m_page = nullptr;
    bool m_timedOut = false;
};

#include "app/gallery/TemplateGallerySheet.h"

#include "app/gallery/TemplateGalleryPage.h"
#include "foundation/Log.h"
#include "templates/TemplateGallery.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTimer>
#include <QVBoxLayout>
#include <QWebEngineLoadingInfo>
#include <QWebEngineProfile>
#include <QWebEngineSettings>
#include <QWebEngineView>

#include <cmath>

namespace {
// The slider works in hundredths of the zoom factor.
constexpr int kSliderScale = 100;
const char *const kHint = "Click a template set to add it to My Templates.";
} // namespace

TemplateGallerySheet::TemplateGallerySheet(UserDefaults &defaults, const QString &resourcesFolder,
                                           AlertPresenter &alerts, QWidget *parent)
    : QDialog(parent)
    , m_defaults(defaults)
    , m_resourcesFolder(resourcesFolder)
    , m_alerts(alerts)
    , m_layout(new QVBoxLayout(this))
    , m_placeholder(new QLabel(tr("Loading the template gallery…")))
    , m_slider(new QSlider(Qt::Horizontal))
    , m_zoomLabel(new QLabel)
    , m_status(new QLabel)
    , m_timeout(new QTimer(this))
{
    setObjectName(QStringLiteral("templateWebviewWindow"));
    setWindowTitle(tr("Template Gallery"));
    setWindowModality(Qt::WindowModal);
    resize(1040, 720);

    m_placeholder->setAlignment(Qt::AlignCenter);
    m_placeholder->setMinimumSize(640, 420);

    m_slider->setObjectName(QStringLiteral("templateWebviewSlider"));
    m_slider->setRange(50, 200);
    m_slider->setValue(kSliderScale);
    m_slider->setPageStep(25);
    m_slider->setFixedWidth(180);
    m_slider->setToolTip(tr("Zoom the gallery page"));
    m_zoomLabel->setMinimumWidth(40);
    auto *zoomTitle = new QLabel(tr("Zoom"));

    auto *reload = new QPushButton(tr("Reload"));
    reload->setObjectName(QStringLiteral("reloadTemplateWebviewWindow"));
    reload->setToolTip(tr("Load the gallery page again"));
    auto *close = new QPushButton(tr("Close"));
    close->setObjectName(QStringLiteral("endTemplateWebvieWindow"));
    close->setDefault(true);

    // The hint until a set is added; then what was added.
    m_status->setObjectName(QStringLiteral("templateWebviewStatus"));
    m_status->setMinimumWidth(m_status->fontMetrics().horizontalAdvance(tr("%1 templates were added to My Templates.").arg(999)));

    auto *bar = new QHBoxLayout;
    bar->setSpacing(8);
    bar->addWidget(zoomTitle);
    bar->addWidget(m_slider);
    bar->addWidget(m_zoomLabel);
    bar->addSpacing(12);
    bar->addWidget(m_status, 1);
    bar->addWidget(reload);
    bar->addWidget(close);

    m_layout->setContentsMargins(12, 12, 12, 12);
    m_layout->setSpacing(10);
    m_layout->addWidget(m_placeholder, 1);
    m_layout->addLayout(bar);

    const auto showZoom = [this] { m_zoomLabel->setText(QStringLiteral("%1%").arg(m_slider->value())); };
    showZoom();
    connect(m_slider, &QSlider::valueChanged, this, [this, showZoom] {
        showZoom();
        zoomTemplateWebviewWindow();
    });
    connect(reload, &QPushButton::clicked, this, &TemplateGallerySheet::reloadTemplateWebviewWindow);
    connect(close, &QPushButton::clicked, this, &TemplateGallerySheet::endTemplateWebvieWindow);

    // No request of the page may hang the sheet: a load still going after the time-out is
    // stopped and reported as a failure.
    m_timeout->setSingleShot(true);
    m_timeout->setInterval(TemplateGallery::kTimeoutMs);
    connect(m_timeout, &QTimer::timeout, this, [this] {
        if (!m_page)
            return;
        m_timedOut = true;
        m_page->triggerAction(QWebEnginePage::Stop);
    });
}

TemplateGallerySheet::~TemplateGallerySheet()
{
    // The page must go before the profile it was made with.
    delete m_view;
    delete m_profile;
}

void TemplateGallerySheet::ensureWebview()
{
    if (m_view)
        return;
    // A private profile in memory: nothing cached, nothing kept between runs.
    m_profile = new QWebEngineProfile(this);
    m_profile->setHttpCacheType(QWebEngineProfile::NoCache);
    m_profile->setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies);
    m_view = new QWebEngineView(this);
    m_view->setObjectName(QStringLiteral("templateWebview"));
    m_page = new TemplateGalleryPage(m_profile, m_view);
    // The shipped gallery is a file page whose template links are files too.
    m_page->settings()->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, true);
    m_view->setPage(m_page);
    m_view->setMinimumSize(640, 420);

    connect(m_page, &TemplateGalleryPage::templateLinkRequested, this, &TemplateGallerySheet::downloadTemplate);
    connect(m_page, &TemplateGalleryPage::resourceFailed, this, &TemplateGallerySheet::reportFailure);
    connect(m_page, &QWebEnginePage::loadingChanged, this, &TemplateGallerySheet::onLoadingChanged);
    connect(m_page, &QWebEnginePage::loadFinished, this, [this](bool ok) {
        if (ok)
            zoomTemplateWebviewWindow();
    });

    m_layout->replaceWidget(m_placeholder, m_view);
    m_placeholder->hide();
}

void TemplateGallerySheet::showTemplateWebviewWindow()
{
    m_status->setStyleSheet(QStringLiteral("color: #666;"));
    m_status->setText(tr(kHint));
    ensureWebview();
    reloadTemplateWebviewWindow();
    open();
}

void TemplateGallerySheet::reloadTemplateWebviewWindow()
{
    ensureWebview();
    m_timedOut = false;
    m_timeout->start();
    m_page->load(TemplateGallery::galleryUrl(m_defaults, m_resourcesFolder));
}

void TemplateGallerySheet::zoomTemplateWebviewWindow()
{
    if (m_page)
        m_page->runJavaScript(TemplateGallery::zoomScript(zoomFactor()));
}

void TemplateGallerySheet::endTemplateWebvieWindow()
{
    m_timeout->stop();
    done(QDialog::Rejected);
}

void TemplateGallerySheet::showTemplatesAdded(qsizetype count)
{
    m_status->setStyleSheet(QString());
    m_status->setText(count == 1 ? tr("1 template was added to My Templates.")
                                 : tr("%1 templates were added to My Templates.").arg(count));
}

double TemplateGallerySheet::zoomFactor() const
{
    return double(m_slider->value()) / kSliderScale;
}

void TemplateGallerySheet::setZoomFactor(double factor)
{
    m_slider->setValue(int(std::lround(factor * kSliderScale)));
}

void TemplateGallerySheet::onLoadingChanged(const QWebEngineLoadingInfo &info)
{
    switch (info.status()) {
    case QWebEngineLoadingInfo::LoadStartedStatus:
        return;
    case QWebEngineLoadingInfo::LoadSucceededStatus:
        m_timeout->stop();
        return;
    case QWebEngineLoadingInfo::LoadStoppedStatus:
        m_timeout->stop();
        if (m_timedOut)
            reportFailure(tr("The request timed out."));
        m_timedOut = false;
        return;
    case QWebEngineLoadingInfo::LoadFailedStatus:
        m_timeout->stop();
        reportFailure(m_timedOut ? tr("The request timed out.") : info.errorString());
        m_timedOut = false;
        return;
    }
}

void TemplateGallerySheet::reportFailure(const QString &description)
{
    qCInfo(lcTessary).noquote() << TemplateGallery::failureLogLine(description);
    QTimer::singleShot(TemplateGallery::kAlertDelayMs, this, [this, description] {
        endTemplateWebvieWindow();
        m_alerts.beep();
        AlertPresenter::Alert alert;
        alert.messageText = TemplateGallery::kLoadFailedMessage;
        alert.informativeText = description;
        alert.style = AlertPresenter::Style::Critical;
        m_alerts.presentAlert(alert, {});
    });
}

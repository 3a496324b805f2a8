#include "app/WindowProbe.h"

#include "app/templates/TemplateGalleryLoader.h"
#include "app/collage/TessaryView.h"
#include "app/photos/ImageBrowserListView.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScrollBar>
#include <QTimer>
#include <QWidget>

#include <unistd.h>

namespace {

// A number of /proc/self/stat, counted from 1 after the command's closing parenthesis.
QByteArray statField(int field)
{
    QFile file(QStringLiteral("/proc/self/stat"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray line = file.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    // Fields after the name start at the third of the whole line.
    return field - 3 < fields.size() ? fields.at(field - 3) : QByteArray();
}

double uptimeSeconds()
{
    QFile file(QStringLiteral("/proc/uptime"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(0).toDouble();
}

} // namespace

double WindowProbe::msSinceProcessStart()
{
    const double startTicks = statField(22).toDouble();
    return (uptimeSeconds() - startTicks / double(::sysconf(_SC_CLK_TCK))) * 1000.0;
}

namespace {

// The peak resident memory of this process, in megabytes.
double peakResidentMegabytes()
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
    }
    return 0;
}

} // namespace

double WindowProbe::residentMegabytes()
{
    return statField(24).toDouble() * double(::sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

WindowProbe *WindowProbe::createIfRequested(QWidget *mainWindow, TessaryView *collageView, QObject *parent)
{
    const QString output = qEnvironmentVariable("TESSARY_PROBE");
    if (output.isEmpty())
        return nullptr;
    return new WindowProbe(mainWindow, collageView, output, parent);
}

WindowProbe::WindowProbe(QWidget *mainWindow, TessaryView *collageView, const QString &outputPath, QObject *parent)
    : QObject(parent)
    , m_window(mainWindow)
    , m_output(outputPath)
{
    m_stalls.start();
    mainWindow->installEventFilter(this);
    // A layout of no tiles (before the first template is chosen) is trivially filled.
    connect(collageView, &TessaryView::tilesFilled, this, [this, collageView] {
        if (!collageView->currentLayout().tiles.empty())
            tilesFilled();
    });
    // A start that never fills its tiles still reports, after a generous limit.
    QTimer::singleShot(qEnvironmentVariable("TESSARY_PROBE_SCROLL") == QLatin1String("1") ? 300000 : 60000, this, &WindowProbe::finish);
}

bool WindowProbe::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window && event->type() == QEvent::Paint && m_firstPaintMs < 0)
        m_firstPaintMs = msSinceProcessStart();
    return QObject::eventFilter(watched, event);
}

void WindowProbe::tilesFilled()
{
    if (m_tilesFilledMs >= 0)
        return;
    m_tilesFilledMs = msSinceProcessStart();
    m_scroll = qEnvironmentVariable("TESSARY_PROBE_SCROLL") == QLatin1String("1");
    // Let the last pictures be painted before the figures are taken.
    QTimer::singleShot(200, this, [this] {
        if (!m_scroll)
            return finish();
        m_startStallMs = double(m_stalls.longestGapMs());
        m_filledResidentMB = residentMegabytes();
        m_stalls.start();
        scrollStep();
    });
}

void WindowProbe::scrollStep()
{
    auto *grid = m_window ? m_window->findChild<ImageBrowserListView *>() : nullptr;
    if (!grid)
        return finish();
    QScrollBar *bar = grid->verticalScrollBar();
    if (m_scrollDirection > 0 && bar->value() >= bar->maximum())
        m_scrollDirection = -1;
    if (m_scrollDirection < 0 && bar->value() <= bar->minimum()) {
        // Back at the top: let the last rows' thumbnails arrive before the figures are taken.
        QTimer::singleShot(2000, this, &WindowProbe::finish);
        return;
    }
    bar->setValue(bar->value() + m_scrollDirection * bar->pageStep());
    // A page every fifth of a second: each stays in view long enough to ask for its thumbnails.
    QTimer::singleShot(200, this, &WindowProbe::scrollStep);
}

void WindowProbe::finish()
{
    if (m_finished)
        return;
    m_finished = true;
    m_stalls.stop();
    QJsonObject figures{
        {QStringLiteral("firstPaintMs"), m_firstPaintMs},
        {QStringLiteral("tilesFilledMs"), m_tilesFilledMs},
        {QStringLiteral("longestStallMs"), m_scroll ? m_startStallMs : double(m_stalls.longestGapMs())},
        {QStringLiteral("residentMB"), m_scroll ? m_filledResidentMB : residentMegabytes()},
        // When the probe asked the program to quit: what follows until the process ends is
        // the quit itself.
        {QStringLiteral("quitRequestedMs"), msSinceProcessStart()},
        // Whether the gallery plugin is where the program looks for it (read, not loaded).
        {QStringLiteral("galleryPlugin"), TemplateGalleryLoader::isInstalled()},
    };
    if (m_scroll) {
        figures.insert(QStringLiteral("scrolledResidentMB"), residentMegabytes());
        figures.insert(QStringLiteral("peakResidentMB"), peakResidentMegabytes());
        figures.insert(QStringLiteral("scrollStallMs"), double(m_stalls.longestGapMs()));
    }
    QFile file(m_output);
    if (file.open(QIODevice::WriteOnly | QIODevice::Append))
        file.write(QJsonDocument(figures).toJson(QJsonDocument::Compact) + '\n');
    QCoreApplication::quit();
}

#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "app/ProgramIdentity.h"
#include "app/ProgramOptions.h"
#include "app/blend/TileAndBlendActions.h"
#include "app/templates/WebEngineEnvironment.h"
#include "app/SingleInstance.h"
#include "app/WindowProbe.h"
#include "foundation/Log.h"
#include "foundation/Paths.h"
#include "foundation/UserDefaults.h"
#include "app/collage/TessaryView.h"

#include <QApplication>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QSocketNotifier>
#include <QStyle>
#include <QStyleFactory>

#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int g_termPipe[2] = {-1, -1};

void onTerminationSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t n = ::write(g_termPipe[1], &byte, 1);
}

// The session sends SIGTERM at logout: quit through the event loop so everything is saved as
// for Quit (quitting cancels running work). The handler only writes a byte; the event loop does
// the rest. A second signal ends the program the default way, should quitting ever stick.
void quitOnTerminationSignals(QApplication &app)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, g_termPipe) != 0)
        return;
    auto *notifier = new QSocketNotifier(g_termPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, [notifier] {
        notifier->setEnabled(false);
        char byte;
        [[maybe_unused]] const ssize_t n = ::read(g_termPipe[0], &byte, 1);
        for (const int sig : {SIGTERM, SIGINT, SIGHUP})
            ::signal(sig, SIG_DFL);
        QApplication::quit();
    });
    struct sigaction action = {};
    action.sa_handler = onTerminationSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGHUP, &action, nullptr);
}

bool hasDisplay()
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (!platform.isEmpty() && !platform.startsWith("xcb") && !platform.startsWith("wayland"))
        return true; // offscreen, vnc, ...: the platform plugin needs no display server
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

} // namespace

int main(int argc, char **argv)
{
    ProgramIdentity::apply();
    QApplication::setApplicationVersion(QStringLiteral(TESSARY_VERSION));
    // --help and --version answer without a window, and without a display.
    QStringList rawArguments;
    for (int i = 0; i < argc; ++i)
        rawArguments.append(QString::fromLocal8Bit(argv[i]));
    if (const ProgramOptions early(rawArguments); early.answersAndExits()) {
        const QCoreApplication core(argc, argv);
        std::fputs(qUtf8Printable(early.answer()), stdout);
        return 0;
    }
    if (!hasDisplay()) {
        std::fprintf(stderr, "tessary: no display to open a window on (DISPLAY and WAYLAND_DISPLAY are not set); "
                             "to make a collage without a window, use 'tessary-cli render'.\n");
        return 1;
    }
    WebEngineEnvironment::prepare();
    QApplication app(argc, argv);
    app.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    app.setPalette(app.style()->standardPalette());
    // Every window's icon, for window decorations that do not read the desktop entry.
    app.setWindowIcon(ProgramIdentity::icon());
    quitOnTerminationSignals(app);

    // Files to open: photos, templates files and collage documents (Qt's own options are gone).
    const ProgramOptions options(app.arguments());
    if (!options.errorText().isEmpty()) {
        std::fprintf(stderr, "tessary: %s\nTry 'tessary --help'.\n", qUtf8Printable(options.errorText()));
        return 2;
    }
    if (options.verbose())
        QLoggingCategory::setFilterRules(QString::fromLatin1(kVerboseLoggingRules));
    const QStringList files = options.files();
    const QString writeResult = options.writeResult();
    const QString blend = options.blend();
    // One window per user and store: a later start hands its files to the running window.
    SingleInstance instance(SingleInstance::serverNameForStore(UserDefaults::defaultFilePath()));
    if (instance.sendToRunningInstance(files))
        return 0;
    instance.listen();

    UserDefaults defaults;
    if (!defaults.isOpen()) {
        std::fprintf(stderr, "tessary: %s\n", qUtf8Printable(defaults.errorString()));
        return 1;
    }
    HalvernDesktopController controller(defaults, Paths::resourcesFolder());
    QObject::connect(&instance, &SingleInstance::filesReceived, &controller, &HalvernDesktopController::openFiles);
    controller.setPendingOutputPath(writeResult);
    WindowProbe::createIfRequested(&controller.mainWindow(), &controller.mainWindow().tessaryView(), &app);
    controller.launch(files);
    if (!blend.isEmpty())
        controller.tileAndBlendActions().stitchNamed(blend);
    return app.exec();
}

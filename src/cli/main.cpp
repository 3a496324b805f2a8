#include "CliArguments.h"
#include "CliContext.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <csignal>

int main(int argc, char *argv[])
{
    // Past a file-size limit a write fails with "File too large" and is reported like a full
    // disk, instead of the signal ending the program in silence.
    std::signal(SIGXFSZ, SIG_IGN);
    // The command line never opens a window; text and painting still need a GUI platform.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("tessary"));
    QGuiApplication::setApplicationVersion(QStringLiteral(TESSARY_VERSION));
    // Read after the application took its own options out, as its arguments() list would be.
    const CliArguments arguments(argc, argv);
    // Progress and debugging lines only on request (--verbose, or QT_LOGGING_RULES).
    if (const QString rules = arguments.loggingRules(); !rules.isEmpty())
        QLoggingCategory::setFilterRules(rules);
    CliContext context;
    const int code = arguments.dispatch(context);
    context.out.flush();
    context.err.flush();
    return code;
}

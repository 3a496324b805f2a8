#include "CliContext.h"
#include "CommandTable.h"

#include <QGuiApplication>

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
    CliContext context;
    const int code = CommandTable::dispatch(QGuiApplication::arguments().mid(1), context);
    context.out.flush();
    context.err.flush();
    return code;
}

#include "app/WebEngineEnvironment.h"

#include <QCoreApplication>
#include <QList>

#include <unistd.h>

void WebEngineEnvironment::prepare()
{
    if (::geteuid() == 0 && !qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");

    QByteArray flags = qgetenv("QTWEBENGINE_CHROMIUM_FLAGS").trimmed();
    const QList<QByteArray> quiet = {"--disable-background-networking", "--disable-component-update",
                                     "--disable-sync", "--no-first-run"};
    for (const QByteArray &flag : quiet) {
        if (flags.split(' ').contains(flag))
            continue;
        if (!flags.isEmpty())
            flags += ' ';
        flags += flag;
    }
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", flags);
}

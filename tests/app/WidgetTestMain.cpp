#include "app/templates/WebEngineEnvironment.h"

#include <QApplication>

#include <gtest/gtest.h>

namespace {

QtMessageHandler qtHandler = nullptr;

// The off-screen platform says of every window hint it ignores that it cannot follow it; those
// lines are the platform's, not warnings about Tessary, and would hide real ones.
void dropPlatformNotes(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg && message.startsWith(QLatin1String("This plugin does not support")))
        return;
    qtHandler(type, context, message);
}

} // namespace

// Widget tests need a QApplication (not the GUI-only application of the other test programs).
int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    WebEngineEnvironment::prepare();
    qtHandler = qInstallMessageHandler(dropPlatformNotes);
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

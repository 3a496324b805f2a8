#include "app/templates/WebEngineEnvironment.h"

#include <QApplication>

#include <gtest/gtest.h>

// Widget tests need a QApplication (not the GUI-only application of the other test programs).
int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    WebEngineEnvironment::prepare();
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

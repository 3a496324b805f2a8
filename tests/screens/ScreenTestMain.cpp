#include "app/templates/WebEngineEnvironment.h"

#include <QApplication>

#include <gtest/gtest.h>

// Screenshot tests run against a real X server (xvfb-run starts a virtual one), so windows are
// mapped, composed and grabbed as a person would see them.
int main(int argc, char **argv)
{
    WebEngineEnvironment::prepare();
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

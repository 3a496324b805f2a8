#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "foundation/Paths.h"
#include "AppFixture.h"

#include <QAction>
#include <QKeySequence>

namespace {

using MainWindowTest = AppFixture;

// The menus carry the keys listed in the README.
TEST_F(MainWindowTest, MenuActionsHaveTheirKeys)
{
    HalvernDesktopController controller(*defaults, Paths::resourcesFolder());
    const struct {
        const char *action;
        QKeySequence keys;
    } cases[] = {
        {"addPhotos", QKeySequence(QStringLiteral("Ctrl+O"))},
        {"quit", QKeySequence(QStringLiteral("Ctrl+Q"))},
        {"paste", QKeySequence(QStringLiteral("Ctrl+V"))},
        {"removePhoto", QKeySequence(QStringLiteral("Del"))},
        {"jumble", QKeySequence(QStringLiteral("Ctrl+J"))},
        {"undoJumble", QKeySequence(QStringLiteral("Ctrl+Z"))},
        {"unjumble", QKeySequence(QStringLiteral("Ctrl+Shift+J"))},
        {"preferences", QKeySequence(QStringLiteral("Ctrl+,"))},
        {"help", QKeySequence(QStringLiteral("F1"))},
    };
    for (const auto &c : cases) {
        QAction *action = controller.mainWindow().action(QString::fromLatin1(c.action));
        ASSERT_NE(action, nullptr) << c.action;
        EXPECT_EQ(action->shortcut(), c.keys) << c.action;
    }
}

} // namespace

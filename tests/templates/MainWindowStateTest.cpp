#include "templates/MainWindowState.h"

#include "foundation/UserDefaults.h"
#include "templates/TemplateSelection.h"
#include "templates/TemplateStore.h"
#include "TemplateTestData.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace TemplateTestData;

namespace {

class MainWindowStateTest : public ::testing::Test
{
protected:
    void SetUp() override { store.addTemplatesFromDictionary(file({makeTemplate(2, 1), makeTemplate(3, 2)})); }
    QTemporaryDir dir;
    UserDefaults defaults{dir.filePath(QStringLiteral("defaults.sqlite"))};
    TemplateStore store{defaults};
    TemplateSelection selection{store, defaults};
    MainWindowState state{defaults};
};

// The collage's controls come back as left; whatever no longer makes sense falls back to the
// first start's value.
TEST_F(MainWindowStateTest, CollageControlsComeBackOrFallBack)
{
    using C = MainWindowState::Collage;
    struct Case {
        const char *name;
        QVariantMap stored;
        C expected;
    } cases[] = {
        {"nothing stored", {}, C{}},
        {"as left", {{MainWindowState::TemplateTab, 1}, {MainWindowState::CoordinateTransform, 4},
                     {MainWindowState::SpacingType, 1}, {MainWindowState::ImageFrameStyle, 3}},
         C{TemplateTable::User, 4, 1, 3}},
        {"out of range", {{MainWindowState::TemplateTab, 7}, {MainWindowState::CoordinateTransform, 5},
                          {MainWindowState::SpacingType, -1}, {MainWindowState::ImageFrameStyle, 5}},
         C{}},
        {"not numbers", {{MainWindowState::TemplateTab, QStringLiteral("1")}, {MainWindowState::ImageFrameStyle, 2.0}}, C{}},
        // "My Templates" in front, but its saved row is gone: the built-in tab.
        {"user row gone", {{MainWindowState::TemplateTab, 1}, {QStringLiteral("SelectedUserTemplateTableRow"), 2}}, C{}},
        {"user row cleared", {{MainWindowState::TemplateTab, 1}, {QStringLiteral("SelectedUserTemplateTableRow"), -1}}, C{}},
        {"user row kept", {{MainWindowState::TemplateTab, 1}, {QStringLiteral("SelectedUserTemplateTableRow"), 1}},
         C{TemplateTable::User, 0, 0, 0}},
    };
    for (const Case &c : cases) {
        for (const QString &key : {MainWindowState::TemplateTab, MainWindowState::CoordinateTransform,
                                   MainWindowState::SpacingType, MainWindowState::ImageFrameStyle,
                                   QStringLiteral("SelectedUserTemplateTableRow")})
            defaults.removeObject(key);
        for (auto it = c.stored.begin(); it != c.stored.end(); ++it)
            ASSERT_TRUE(defaults.setObject(it.value().typeId() == QMetaType::Int ? QVariant(qint64(it.value().toInt())) : it.value(),
                                           it.key()));
        EXPECT_EQ(state.collage(selection), c.expected) << c.name;
    }
    // What the setters write is what is read back.
    ASSERT_TRUE(state.setTemplateTab(TemplateTable::User));
    ASSERT_TRUE(state.setCoordinateTransform(3));
    ASSERT_TRUE(state.setSpacingType(1));
    ASSERT_TRUE(state.setImageFrameStyle(4));
    EXPECT_EQ(state.collage(selection), (C{TemplateTable::User, 3, 1, 4}));
}

// The window opens where it was left when that is still on a screen, always wholly on one
// screen and never below its minimum; otherwise at its preferred size, centred.
TEST_F(MainWindowStateTest, WindowFrameFitsTheScreens)
{
    const QRect laptop(0, 0, 1024, 600);
    const QRect monitor(1024, 0, 1920, 1080);
    const QSize preferred(1280, 800);
    const QSize minimum(900, 560);
    struct Case {
        const char *name;
        QList<QRect> screens;
        QVariant saved;
        QRect expected;
    } cases[] = {
        {"first start, small screen", {laptop}, {}, QRect(0, 0, 1024, 600)},
        {"first start, large screen", {monitor}, {}, QRect(1024 + 320, 140, 1280, 800)},
        {"as left", {laptop, monitor}, QVariantList{1100, 50, 1000, 700}, QRect(1100, 50, 1000, 700)},
        {"half off the right edge", {monitor}, QVariantList{2500, 100, 1000, 700}, QRect(1024 + 920, 100, 1000, 700)},
        {"larger than its screen now", {laptop, monitor}, QVariantList{-50, 10, 1400, 900}, QRect(0, 0, 1024, 600)},
        {"below the minimum", {monitor}, QVariantList{1200, 100, 300, 200}, QRect(1200, 100, 900, 560)},
        {"on a screen that is gone", {laptop}, QVariantList{3000, 100, 1000, 700}, QRect(0, 0, 1024, 600)},
        {"not a frame", {monitor}, QVariantList{1200, 100, 1000}, QRect(1024 + 320, 140, 1280, 800)},
        {"no size", {monitor}, QVariantList{1200, 100, 0, 0}, QRect(1024 + 320, 140, 1280, 800)},
    };
    for (const Case &c : cases) {
        if (c.saved.isValid()) {
            QVariantList values;
            for (const QVariant &v : c.saved.toList())
                values.append(qint64(v.toInt()));
            ASSERT_TRUE(defaults.setObject(values, MainWindowState::WindowFrame));
        } else {
            defaults.removeObject(MainWindowState::WindowFrame);
        }
        EXPECT_EQ(state.windowFrame(c.screens, preferred, minimum), c.expected) << c.name;
    }
    ASSERT_TRUE(state.setWindowFrame(QRect(1100, 60, 1000, 700), true));
    EXPECT_EQ(state.windowFrame({monitor}, preferred, minimum), QRect(1100, 60, 1000, 700));
    EXPECT_TRUE(state.windowMaximized());
}

} // namespace

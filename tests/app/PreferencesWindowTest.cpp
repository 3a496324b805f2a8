#include "app/PreferencesWindow.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "AppFixture.h"
#include "ScreenshotFolder.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QTest>

namespace {

using PreferencesWindowTest = AppFixture;

// Every control writes its own key the moment it changes; showing values writes nothing.
TEST_F(PreferencesWindowTest, EachControlWritesItsKey)
{
    PreferencesWindow window(*defaults, Paths::resourcesFolder());
    for (const QString &key : {Preferences::MatchingMarginWidth, Preferences::BlendingMarginWidth,
                               Preferences::InputImageScaling, Preferences::MegapixelLimit})
        EXPECT_FALSE(defaults->hasObject(key)) << qPrintable(key);

    const struct {
        QSlider *slider;
        const QString &key;
        int value;
    } sliders[] = {
        {window.matchingMarginWidthSlider(), Preferences::MatchingMarginWidth, 12},
        {window.blendingMarginWidthSlider(), Preferences::BlendingMarginWidth, 80},
        {window.inputImageScalingSlider(), Preferences::InputImageScaling, 60},
    };
    for (const auto &c : sliders) {
        c.slider->setValue(c.value);
        EXPECT_EQ(defaults->integerForKey(c.key), c.value) << qPrintable(c.key);
    }
    // Check boxes are clicked, as a person does.
    const struct {
        QCheckBox *box;
        const QString &key;
        bool startsOn;
    } boxes[] = {
        {window.uniformlyCropCheckbox(), Preferences::UniformlyCrop, true},
        {window.megapixelLimitCheckbox(), Preferences::MegapixelLimit, true},
        {window.insetByCroppingCheckbox(), Preferences::InsetByCropping, true},
        {window.uniformlyCropFitCheckbox(), Preferences::UniformlyCropFit, true},
    };
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    // A step from the keyboard is written at once too.
    QTest::keyClick(window.blendingMarginWidthSlider(), Qt::Key_Right);
    EXPECT_EQ(defaults->integerForKey(Preferences::BlendingMarginWidth), 81);
    for (const auto &c : boxes) {
        EXPECT_EQ(c.box->isChecked(), c.startsOn) << qPrintable(c.key);
        if (!c.box->isEnabled()) // the fit variant waits for uniform cropping
            window.uniformlyCropCheckbox()->click();
        QTest::mouseClick(c.box, Qt::LeftButton, {}, QPoint(8, c.box->height() / 2));
        ASSERT_TRUE(defaults->hasObject(c.key)) << qPrintable(c.key);
        EXPECT_EQ(defaults->boolForKey(c.key), !c.startsOn) << qPrintable(c.key);
    }
    // The gallery address is typed; an emptied field removes the key (the shipped gallery).
    auto *address = window.findChild<QLineEdit *>(QStringLiteral("TemplateGalleryURL"));
    ASSERT_TRUE(address);
    for (const char *typed : {" https://example.org/gallery/ ", ""}) {
        address->selectAll();
        QTest::keyClicks(address, QString::fromLatin1(typed));
        if (!*typed)
            QTest::keyClick(address, Qt::Key_Backspace);
        QTest::keyClick(address, Qt::Key_Return);
        EXPECT_EQ(defaults->objectForKey(QStringLiteral("TemplateGalleryURL")),
                  *typed ? QVariant(QStringLiteral("https://example.org/gallery/")) : QVariant()) << typed;
    }
}

// Reset reaches the store (which values it writes is the preferences' own test) and the
// controls show the reset values.
TEST_F(PreferencesWindowTest, ResetWritesAndShowsTheResetValues)
{
    PreferencesWindow window(*defaults, Paths::resourcesFolder());
    window.matchingMarginWidthSlider()->setValue(30);
    window.blendingMarginWidthSlider()->setValue(120);
    window.inputImageScalingSlider()->setValue(20);
    for (QCheckBox *box : {window.megapixelLimitCheckbox(), window.insetByCroppingCheckbox(),
                           window.uniformlyCropFitCheckbox(), window.uniformlyCropCheckbox()})
        box->setChecked(false);

    window.findChild<QPushButton *>(QStringLiteral("resetPreferences"))->click();
    EXPECT_EQ(defaults->integerForKey(Preferences::BlendingMarginWidth), 50);
    const struct {
        QSlider *slider;
        int shown;
    } sliders[] = {{window.matchingMarginWidthSlider(), 0}, {window.blendingMarginWidthSlider(), 50},
                   {window.inputImageScalingSlider(), 100}};
    for (const auto &c : sliders)
        EXPECT_EQ(c.slider->value(), c.shown) << qPrintable(c.slider->objectName());
    for (QCheckBox *box : {window.megapixelLimitCheckbox(), window.insetByCroppingCheckbox(), window.uniformlyCropCheckbox(),
                           window.uniformlyCropFitCheckbox()})
        EXPECT_TRUE(box->isChecked()) << qPrintable(box->objectName());
}

// The help pictures are beside their controls (none beside the line that only informs); the
// window is a top-level window, not modal, written "FirstRunPreferences" at its first showing
// and closed by Escape.
TEST_F(PreferencesWindowTest, PicturesFirstShowingAndEscape)
{
    PreferencesWindow window(*defaults, Paths::resourcesFolder());
    for (const char *name : {"matchingMarginScalingIcon", "blendingMarginScalingIcon", "inputImageScalingIcon",
                             "uniformlyCropIcon"}) {
        auto *picture = window.findChild<QLabel *>(QString::fromLatin1(name));
        ASSERT_NE(picture, nullptr) << name;
        EXPECT_FALSE(picture->pixmap().isNull()) << name;
    }
    EXPECT_EQ(window.findChild<QLabel *>(QStringLiteral("autoOpenIcon")), nullptr);
    EXPECT_FALSE(defaults->hasObject(Preferences::FirstRunPreferences));
    window.showPreferences();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_TRUE(window.isWindow());
    EXPECT_FALSE(window.isModal());
    EXPECT_TRUE(defaults->hasObject(Preferences::FirstRunPreferences));
    EXPECT_FALSE(defaults->boolForKey(Preferences::FirstRunPreferences));
    saveScreenshot(window, "preferences-window");
    QTest::keyClick(window.blendingMarginWidthSlider(), Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

} // namespace

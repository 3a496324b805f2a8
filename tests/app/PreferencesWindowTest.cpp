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

// Reset writes the eight reset values (also "CropResult", which has no control) and shows them;
// "AlwaysZoomToFit" keeps its value.
TEST_F(PreferencesWindowTest, ResetWritesAndShowsTheResetValues)
{
    defaults->setBool(false, Preferences::AlwaysZoomToFit);
    PreferencesWindow window(*defaults, Paths::resourcesFolder());
    window.matchingMarginWidthSlider()->setValue(30);
    window.blendingMarginWidthSlider()->setValue(120);
    window.inputImageScalingSlider()->setValue(20);
    for (QCheckBox *box : {window.megapixelLimitCheckbox(), window.insetByCroppingCheckbox(),
                           window.uniformlyCropFitCheckbox(), window.uniformlyCropCheckbox()})
        box->setChecked(false);
    defaults->setBool(true, Preferences::CropResult);

    window.findChild<QPushButton *>(QStringLiteral("resetPreferences"))->click();
    Preferences prefs(*defaults);
    const struct {
        QSlider *slider;
        const QString &key;
        int shown;
    } sliders[] = {
        {window.matchingMarginWidthSlider(), Preferences::MatchingMarginWidth, 0},
        {window.blendingMarginWidthSlider(), Preferences::BlendingMarginWidth, 50},
        {window.inputImageScalingSlider(), Preferences::InputImageScaling, 100},
    };
    for (const auto &c : sliders) {
        EXPECT_EQ(c.slider->value(), c.shown) << qPrintable(c.key);
        EXPECT_EQ(defaults->integerForKey(c.key), c.shown) << qPrintable(c.key);
    }
    EXPECT_EQ(prefs.matchingMarginWidth(), 0.0f);
    const struct {
        QCheckBox *box;
        bool stored;
        bool on;
    } boxes[] = {
        {window.megapixelLimitCheckbox(), prefs.megapixelLimit(), true},
        {window.insetByCroppingCheckbox(), prefs.insetByCropping(), true},
        {window.uniformlyCropCheckbox(), prefs.uniformlyCrop(), true},
        {window.uniformlyCropFitCheckbox(), prefs.uniformlyCropFit(), true},
    };
    for (const auto &c : boxes) {
        EXPECT_EQ(c.box->isChecked(), c.on) << qPrintable(c.box->objectName());
        EXPECT_EQ(c.stored, c.on) << qPrintable(c.box->objectName());
    }
    EXPECT_FALSE(prefs.cropResult());
    EXPECT_TRUE(defaults->hasObject(Preferences::AlwaysZoomToFit));
    EXPECT_FALSE(prefs.alwaysZoomToFit());
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

#include "app/editor/AdjustmentsPanel.h"
#include "support/TestImages.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class AdjustmentsPanelTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        panel.setPreviewSource(source);
        panel.show();
    }
    void TearDown() override
    {
        // A preview still on a worker finishes before the next test starts.
        EXPECT_TRUE(QTest::qWaitFor([&] { return !panel.isPreviewing(); }, 5000));
    }

    QSlider *slider(const char *name) { return panel.findChild<QSlider *>(QLatin1String(name)); }
    QPushButton *button(const char *name) { return panel.findChild<QPushButton *>(QLatin1String(name)); }
    // The adjustments of the last preview, once the panel is idle and it shows `expected`.
    bool waitForPreviewOf(const QSignalSpy &spy, const PhotoAdjustments &expected)
    {
        return QTest::qWaitFor([&] {
            return !panel.isPreviewing() && !spy.isEmpty() && spy.last().at(1).value<PhotoAdjustments>() == expected;
        }, 5000);
    }

    const QImage source = testimages::gradient(480, 320);
    AdjustmentsPanel panel;
};

// Each slider, moved by a page with the keyboard, previews its own adjustment (and only it)
// and shows its value.
TEST_F(AdjustmentsPanelTest, EachSliderPreviewsItsAdjustment)
{
    const struct {
        const char *slider;
        double PhotoAdjustments::*field;
        double expected;
        const char *shown;
    } cases[] = {
        {"exposure", &PhotoAdjustments::exposure, 0.5, "+0.50 EV"},
        {"brightness", &PhotoAdjustments::brightness, 0.1, "+10"},
        {"contrast", &PhotoAdjustments::contrast, 0.1, "+10"},
        {"highlights", &PhotoAdjustments::highlights, 0.1, "+10"},
        {"shadows", &PhotoAdjustments::shadows, 0.1, "+10"},
        {"saturation", &PhotoAdjustments::saturation, 0.1, "+10"},
        {"temperature", &PhotoAdjustments::temperature, 0.1, "+10"},
        {"tint", &PhotoAdjustments::tint, 0.1, "+10"},
        {"sharpness", &PhotoAdjustments::sharpness, 0.1, "10"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.slider);
        panel.reset();
        QSignalSpy spy(&panel, &AdjustmentsPanel::previewReady);
        QSlider *s = slider(c.slider);
        ASSERT_NE(s, nullptr);
        s->setFocus();
        QTest::keyClick(s, Qt::Key_PageUp);
        PhotoAdjustments expected;
        expected.*c.field = c.expected;
        ASSERT_TRUE(waitForPreviewOf(spy, expected));
        EXPECT_EQ(panel.adjustments(), expected);
        // (That each adjustment changes the pixels is the adjustments' own test.)
        EXPECT_EQ(spy.last().at(0).value<QImage>(), expected.applyTo(source));
        EXPECT_EQ(panel.findChild<QLabel *>(QLatin1String(c.slider) + QStringLiteral("Value"))->text(), QLatin1String(c.shown));
    }
}

// A fast drag asks for many previews; only the one running and the latest are computed.
TEST_F(AdjustmentsPanelTest, RapidMovesCoalesce)
{
    QSignalSpy spy(&panel, &AdjustmentsPanel::previewReady);
    QSlider *s = slider("contrast");
    for (int v = 1; v <= 40; ++v)
        s->setValue(v);
    PhotoAdjustments last;
    last.contrast = 0.4;
    ASSERT_TRUE(waitForPreviewOf(spy, last));
    EXPECT_LE(spy.count(), 2);
    EXPECT_EQ(spy.last().at(0).value<QImage>(), last.applyTo(source));
}

// Reset, double-clicks and closing put sliders back; a preview still running when the panel
// went back to neutral (or got a new photo) is not shown after it.
TEST_F(AdjustmentsPanelTest, ResetAndNewSourcesWinOverRunningPreviews)
{
    QSignalSpy spy(&panel, &AdjustmentsPanel::previewReady);
    slider("saturation")->setValue(60);
    slider("sharpness")->setValue(40);
    QTest::mouseDClick(slider("saturation"), Qt::LeftButton);
    EXPECT_EQ(slider("saturation")->value(), 0);
    EXPECT_DOUBLE_EQ(panel.adjustments().saturation, 0);
    EXPECT_DOUBLE_EQ(panel.adjustments().sharpness, 0.4);

    ASSERT_TRUE(button("resetAdjustments")->isEnabled());
    QTest::mouseClick(button("resetAdjustments"), Qt::LeftButton);
    EXPECT_TRUE(panel.adjustments().isNeutral());
    for (QSlider *s : panel.findChildren<QSlider *>())
        EXPECT_EQ(s->value(), 0) << s->objectName().toStdString();
    ASSERT_TRUE(waitForPreviewOf(spy, PhotoAdjustments{}));
    EXPECT_EQ(spy.last().at(0).value<QImage>(), source);
    EXPECT_FALSE(button("resetAdjustments")->isEnabled());

    // A new photo while a preview of the old one runs: the old one never shows.
    slider("exposure")->setValue(100);
    QImage other(200, 100, QImage::Format_RGB32);
    other.fill(Qt::darkCyan);
    panel.setPreviewSource(other);
    ASSERT_TRUE(waitForPreviewOf(spy, PhotoAdjustments{}));
    EXPECT_EQ(spy.last().at(0).value<QImage>(), other);
    EXPECT_EQ(slider("exposure")->value(), 0);

    // Closing with Escape drops what was not applied.
    slider("tint")->setValue(50);
    QTest::keyClick(&panel, Qt::Key_Escape);
    EXPECT_FALSE(panel.isVisible());
    EXPECT_EQ(slider("tint")->value(), 0);
    ASSERT_TRUE(waitForPreviewOf(spy, PhotoAdjustments{}));
    EXPECT_EQ(spy.last().at(0).value<QImage>(), other);
}

// Apply hands the adjustments over; it is offered only when there is something to apply, and
// not while the editor is applying.
TEST_F(AdjustmentsPanelTest, ApplyEmitsTheAdjustments)
{
    QSignalSpy spy(&panel, &AdjustmentsPanel::applyRequested);
    QPushButton *apply = button("applyAdjustments");
    EXPECT_FALSE(apply->isEnabled());
    slider("temperature")->setValue(-30);
    slider("exposure")->setValue(25);
    ASSERT_TRUE(apply->isEnabled());
    QTest::mouseClick(apply, Qt::LeftButton);
    ASSERT_EQ(spy.count(), 1);
    PhotoAdjustments expected;
    expected.temperature = -0.3;
    expected.exposure = 0.25;
    EXPECT_EQ(spy.first().at(0).value<PhotoAdjustments>(), expected);

    panel.setApplying(true);
    EXPECT_FALSE(apply->isEnabled());
    EXPECT_FALSE(slider("exposure")->isEnabled());
    EXPECT_TRUE(panel.findChild<QProgressBar *>(QStringLiteral("applyingProgress"))->isVisible());
    panel.setApplying(false);
    EXPECT_TRUE(apply->isEnabled());
    EXPECT_TRUE(slider("exposure")->isEnabled());
}

} // namespace

#include "ScreenGrab.h"
#include "foundation/Paths.h"
#include "app/editor/AdjustmentsPanel.h"

#include <QDir>
#include <QImageReader>
#include <QPainter>
#include <QScreen>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// A factory photo when the resources are built, else a painted stand-in.
QImage samplePhoto()
{
    QImageReader reader(QDir(Paths::resourcesFolder()).filePath(QStringLiteral("images-3.jpg")));
    reader.setAutoTransform(true);
    QImage photo = reader.read();
    if (photo.isNull()) {
        photo = QImage(900, 600, QImage::Format_RGB32);
        QPainter p(&photo);
        QLinearGradient sky(0, 0, 0, 600);
        sky.setColorAt(0, QColor(70, 120, 190));
        sky.setColorAt(0.6, QColor(200, 210, 220));
        sky.setColorAt(1, QColor(60, 80, 50));
        p.fillRect(photo.rect(), sky);
        p.setBrush(QColor(40, 60, 35));
        p.drawEllipse(QPoint(300, 650), 500, 220);
    }
    return photo.scaled(900, 600, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

// The panel as the X server shows it, with a few sliders moved, and the photo before and after
// those adjustments, for people to look at.
TEST(AdjustmentsPanelScreenshot, PanelAndItsPreview)
{
    const QImage photo = samplePhoto();
    AdjustmentsPanel panel;
    panel.setPreviewSource(photo);
    QSignalSpy spy(&panel, &AdjustmentsPanel::previewReady);
    panel.move(80, 60);
    panel.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel, 10000));

    PhotoAdjustments wanted;
    wanted.exposure = 0.35;
    wanted.contrast = 0.2;
    wanted.highlights = -0.45;
    wanted.shadows = 0.3;
    wanted.saturation = 0.15;
    wanted.temperature = 0.12;
    wanted.sharpness = 0.3;
    panel.setAdjustments(wanted);
    panel.findChild<QSlider *>(QStringLiteral("highlights"))->setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] {
        return !panel.isPreviewing() && !spy.isEmpty() && spy.last().at(1).value<PhotoAdjustments>() == wanted;
    }, 10000));
    const QImage shot = grabScreenArea(panel.frameGeometry());
    ASSERT_FALSE(shot.isNull());
    saveScreenshotImage(shot, "adjustments-panel");

    const QImage after = spy.last().at(0).value<QImage>();
    ASSERT_EQ(after.size(), photo.size());
    QImage strip(photo.width() * 2 + 12, photo.height(), QImage::Format_RGB32);
    strip.fill(Qt::white);
    QPainter p(&strip);
    p.drawImage(0, 0, photo);
    p.drawImage(photo.width() + 12, 0, after);
    p.end();
    saveScreenshotImage(strip, "adjustments-before-after");
}

} // namespace

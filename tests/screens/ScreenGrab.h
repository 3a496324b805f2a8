#pragma once

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QRect>
#include <QScreen>
#include <QString>
#include <QTest>

#include <gtest/gtest.h>

// What the screen shows of an area (window frames included), once the last paints have
// reached the X server.
inline QImage grabScreenArea(const QRect &area)
{
    QTest::qWait(300);
    return QGuiApplication::primaryScreen()->grabWindow(0, area.x(), area.y(), area.width(), area.height()).toImage();
}

// Saves a picture for people to look at, into $TESSARY_SCREENSHOTS or the build folder's
// "screenshots"; returns its path.
inline QString saveScreenshotImage(const QImage &image, const char *name)
{
    const QString folder = qEnvironmentVariable("TESSARY_SCREENSHOTS", QStringLiteral(TESSARY_BINARY_DIR "/screenshots"));
    QDir().mkpath(folder);
    const QString path = QDir(folder).filePath(QLatin1String(name) + QStringLiteral(".png"));
    EXPECT_TRUE(image.save(path)) << path.toStdString();
    return path;
}

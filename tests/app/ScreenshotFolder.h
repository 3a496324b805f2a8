#pragma once

#include <QDir>
#include <QString>
#include <QWidget>

#include <gtest/gtest.h>

// Widget tests save pictures of what they show into the build folder, for people to look at.
inline void saveScreenshot(QWidget &widget, const char *name)
{
    QDir().mkpath(QStringLiteral(TESSARY_BINARY_DIR "/screenshots"));
    EXPECT_TRUE(widget.grab().save(QStringLiteral(TESSARY_BINARY_DIR "/screenshots/%1.png").arg(QLatin1String(name))));
}

#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

#include <functional>

// One generated resource: its file name, a rough cost (to start the slow ones first), and the
// work that makes its bytes. Pictures also hand back themselves for the contact sheet.
struct ResourceJob
{
    QString name;
    double cost = 1.0;
    std::function<QByteArray(QImage *picture)> make;
};

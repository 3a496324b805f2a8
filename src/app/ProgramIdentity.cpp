#include "app/ProgramIdentity.h"

#include "IconPainter.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPixmap>

void ProgramIdentity::apply()
{
    QCoreApplication::setApplicationName(kName);
    QCoreApplication::setOrganizationName(kName);
    QGuiApplication::setDesktopFileName(kDesktopEntry);
}

QIcon ProgramIdentity::icon()
{
    const QIcon installed = QIcon::fromTheme(kDesktopEntry);
    if (!installed.isNull())
        return installed;
    QIcon drawn;
    for (const int size : {16, 24, 32, 48, 64, 128})
        drawn.addPixmap(QPixmap::fromImage(IconPainter::paint(size)));
    return drawn;
}

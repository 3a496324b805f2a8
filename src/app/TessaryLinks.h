#pragma once

#include <QUrl>

// The addresses Tessary opens, kept in one place: the project's website (the website, store
// and help-page links of the menus all lead there) and the help page shipped with the program.
class TessaryLinks
{
public:
    static QUrl website() { return QUrl(QStringLiteral("https://tessary.org/")); }
    // The public page of shared templates, opened from the load-file sheet.
    static QUrl templatesPage() { return QUrl(QStringLiteral("https://tessary.org/templates/")); }
    // The help page in the resources folder.
    static QUrl helpPage(const QString &resourcesFolder);
};

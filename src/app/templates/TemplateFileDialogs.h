#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

// The file dialogs of the template tables: Qt's own dialogs (so they look alike everywhere and
// tests can answer them), window-modal on the given window and opened with open(), so nothing
// waits for the answer. Each calls back only when the user accepted; the dialog deletes itself.
class TemplateFileDialogs
{
public:
    // Several existing "plist" files: "Choose Template File", with the message shown inside.
    static void chooseTemplateFiles(QWidget *parent, const std::function<void(const QStringList &)> &chosen);
    // One folder, which may be created there: "Choose Destination:".
    static void chooseDestinationFolder(QWidget *parent, const std::function<void(const QString &)> &chosen);
    // A file to save, of the type given by its extension ("plist", "png"), proposing a name.
    static void saveFile(QWidget *parent, const QString &proposedName, const QString &extension,
                         const std::function<void(const QString &)> &chosen);
};

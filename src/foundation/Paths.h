#pragma once

#include <QString>

// The folders Tessary reads and writes. Each can be redirected by an environment variable, so
// tests and scripts never touch a user's real folders.
class Paths
{
public:
    // $TESSARY_DOCUMENTS, else the user's Documents folder.
    static QString documentsFolder();
    // "Images" inside the Documents folder: files Tessary makes itself live there.
    static QString imagesFolder();
    // Creates the images folder when it is missing; returns false when it cannot.
    static bool ensureImagesFolder();
    // A file name appended to the Documents folder.
    static QString documentsPathForFileName(const QString &fileName);
    // $TESSARY_RESOURCES, else the resources found from the running program's folder.
    static QString resourcesFolder();
    // The resources of a program in programFolder: "../share/tessary" when installed under a
    // prefix, "../resources" in a build folder; the one holding the built-in templates wins.
    static QString resourcesFolderBeside(const QString &programFolder);
};

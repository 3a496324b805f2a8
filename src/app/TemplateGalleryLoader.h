#pragma once

#include <QString>

class TemplateGalleryFactory;

// Finds and loads the gallery plugin. It is looked for in $TESSARY_PLUGINS when that is set,
// otherwise in the plugin folder beside the program: lib/tessary/plugins next to bin/, both in
// the build folder and where the program is installed.
class TemplateGalleryLoader
{
public:
    // The plugin's file.
    static QString pluginPath();
    // Whether a gallery plugin is there, read from its metadata without loading it.
    static bool isInstalled();
    // Loads the plugin on first use (it stays loaded); null when it is missing or does not
    // load, with the file and the reason in *error.
    static TemplateGalleryFactory *factory(QString *error = nullptr);
};

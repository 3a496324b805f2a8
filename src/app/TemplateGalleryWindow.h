#pragma once

#include <QtGlobal>

class QDialog;

// The template gallery sheet as the rest of the program sees it. The sheet itself shows a web
// page and lives in the gallery plugin (see TemplateGalleryFactory), so that the web engine is
// loaded only when the gallery is first opened.
class TemplateGalleryWindow
{
public:
    virtual ~TemplateGalleryWindow() = default;

    // The sheet's dialog, owned by its parent window.
    virtual QDialog *dialog() = 0;
    // Loads the gallery page afresh and opens the sheet.
    virtual void showTemplateWebviewWindow() = 0;
    // Loads the gallery page (the preference's address or the shipped gallery).
    virtual void reloadTemplateWebviewWindow() = 0;
    // Applies the zoom slider's factor to the page.
    virtual void zoomTemplateWebviewWindow() = 0;
    virtual void endTemplateWebvieWindow() = 0;
    // Says on the sheet's bar that a set put this many templates into "My Templates".
    virtual void showTemplatesAdded(qsizetype count) = 0;
};

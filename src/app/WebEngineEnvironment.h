#pragma once

// What the web engine needs settled before the application object exists: no sandbox when
// running as root (Chromium refuses to start its sandbox then), and no background networking,
// component updates or first-run work, added to any flags the user gave. The engine itself is
// loaded later, with the gallery plugin; the OpenGL context it shares is made then too
// (TemplateGalleryLoader), not at start as Qt::AA_ShareOpenGLContexts would.
class WebEngineEnvironment
{
public:
    // Call before constructing the QApplication.
    static void prepare();
};

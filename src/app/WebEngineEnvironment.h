#pragma once

// What the web engine needs settled before the application object exists: shared OpenGL
// contexts, no sandbox when running as root (Chromium refuses to start its sandbox then), and
// no background networking, component updates or first-run work, added to any flags the user
// gave. The engine itself starts later, when a web page is first shown.
class WebEngineEnvironment
{
public:
    // Call before constructing the QApplication.
    static void prepare();
};

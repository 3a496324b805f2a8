// Acts on a program's window as a person at the keyboard would, on an X server of the test's
// own (no window manager): tool_x11_input DISPLAY TITLE ACTION
//   ACTION "ctrl+q", "9 Tab 9 Return", ...: gives the window the keyboard focus and types the
//                               keys in turn (X key names), each with Control held where it
//                               says ctrl+;
//   close:                      asks the window to close, as its title bar's close button does
//                               (WM_DELETE_WINDOW).
// The window is the shown top-level window whose title is TITLE; it is waited for up to ten
// seconds, and looked for again when the one found went away before the keys reached it (a
// window replaced by another of the same title). Exits 0 when done, 1 when there was no such
// window, 2 on bad arguments.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <string>
#include <thread>

namespace {

// Set when the server refused a request because its window is gone (instead of Xlib's default,
// which ends the program).
bool windowWentAway = false;

int noteGoneWindow(Display *, XErrorEvent *error)
{
    if (error->error_code == BadWindow)
        windowWentAway = true;
    return 0;
}

std::string titleOf(Display *display, Window window)
{
    const Atom utf8 = XInternAtom(display, "UTF8_STRING", False);
    const Atom netName = XInternAtom(display, "_NET_WM_NAME", False);
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char *data = nullptr;
    std::string title;
    if (XGetWindowProperty(display, window, netName, 0, 1024, False, utf8, &type, &format, &count, &after, &data) == Success
        && data) {
        title.assign(reinterpret_cast<const char *>(data), count);
        XFree(data);
        return title;
    }
    char *name = nullptr;
    if (XFetchName(display, window, &name) && name) {
        title = name;
        XFree(name);
    }
    return title;
}

Window findWindow(Display *display, const std::string &wanted)
{
    Window root = 0, parent = 0, *children = nullptr;
    unsigned int count = 0;
    if (!XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count))
        return None;
    Window found = None;
    for (unsigned int i = 0; i < count && found == None; ++i) {
        XWindowAttributes attributes;
        if (XGetWindowAttributes(display, children[i], &attributes) && attributes.map_state == IsViewable
            && titleOf(display, children[i]) == wanted)
            found = children[i];
    }
    if (children)
        XFree(children);
    return found;
}

// One key, "ctrl+" before its X name for Control held; false for a name X does not know.
bool typeKey(Display *display, Window window, std::string key)
{
    unsigned int state = 0;
    if (key.rfind("ctrl+", 0) == 0) {
        state = ControlMask;
        key = key.substr(5);
    }
    const KeySym symbol = XStringToKeysym(key.c_str());
    if (symbol == NoSymbol)
        return false;
    XEvent event{};
    event.xkey.display = display;
    event.xkey.window = window;
    event.xkey.root = DefaultRootWindow(display);
    event.xkey.subwindow = None;
    event.xkey.time = CurrentTime;
    event.xkey.x = event.xkey.y = event.xkey.x_root = event.xkey.y_root = 1;
    event.xkey.same_screen = True;
    event.xkey.state = state;
    event.xkey.keycode = XKeysymToKeycode(display, symbol);
    event.type = KeyPress;
    XSendEvent(display, window, True, KeyPressMask, &event);
    event.type = KeyRelease;
    XSendEvent(display, window, True, KeyReleaseMask, &event);
    XSync(display, False);
    return true;
}

// The keys of ACTION, separated by spaces, typed in turn into the window given the focus.
bool typeKeys(Display *display, Window window, const std::string &keys)
{
    XSetInputFocus(display, window, RevertToParent, CurrentTime);
    XSync(display, False);
    // The program takes the focus in before the first key comes.
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    std::istringstream words(keys);
    std::string key;
    while (words >> key) {
        if (!typeKey(display, window, key))
            return false;
        // Each key is handled before the next comes (a pop-up's search, a focus move).
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

void askToClose(Display *display, Window window)
{
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.display = display;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = long(XInternAtom(display, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(display, window, False, NoEventMask, &event);
    XSync(display, False);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4 || !*argv[3]) {
        std::fprintf(stderr, "usage: %s DISPLAY TITLE \"[ctrl+]KEY...\"|close\n", argv[0]);
        return 2;
    }
    const std::string action = argv[3];
    Display *display = XOpenDisplay(argv[1]);
    if (!display) {
        std::fprintf(stderr, "%s: cannot open display %s\n", argv[0], argv[1]);
        return 1;
    }
    XSetErrorHandler(noteGoneWindow);
    bool done = false;
    bool typed = true;
    for (int i = 0; i < 200 && !done; ++i) {
        const Window window = findWindow(display, argv[2]);
        if (window == None) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            continue;
        }
        windowWentAway = false;
        if (action == "close")
            askToClose(display, window);
        else
            typed = typeKeys(display, window, action);
        XSync(display, False);
        done = !windowWentAway || !typed;
    }
    if (!done) {
        std::fprintf(stderr, "%s: no shown window titled \"%s\"\n", argv[0], argv[2]);
        XCloseDisplay(display);
        return 1;
    }
    XCloseDisplay(display);
    if (!typed) {
        std::fprintf(stderr, "%s: unknown key in %s\n", argv[0], argv[3]);
        return 2;
    }
    return 0;
}

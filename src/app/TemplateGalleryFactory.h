#pragma once

#include <QtPlugin>

#include <functional>

class AlertPresenter;
class QString;
class QUrl;
class QWidget;
class TemplateGalleryWindow;
class UserDefaults;

// What the gallery plugin offers: it makes the template gallery sheet. The plugin links the web
// engine; the program does not, and loads the plugin (TemplateGalleryLoader) only when the
// gallery is first opened.
class TemplateGalleryFactory
{
public:
    virtual ~TemplateGalleryFactory() = default;

    // A window-modal gallery sheet over parent, which owns it. downloadTemplate is called, from
    // the event loop, with each template link clicked on the page.
    virtual TemplateGalleryWindow *createTemplateWebviewWindow(UserDefaults &defaults, const QString &resourcesFolder,
                                                               AlertPresenter &alerts,
                                                               std::function<void(const QUrl &)> downloadTemplate,
                                                               QWidget *parent) = 0;
};

#define TemplateGalleryFactory_iid "org.tessary.Tessary.TemplateGalleryFactory/1"
Q_DECLARE_INTERFACE(TemplateGalleryFactory, TemplateGalleryFactory_iid)

#pragma once

#include "app/TemplateGalleryFactory.h"

#include <QObject>

// The gallery plugin's entry: makes TemplateGallerySheet, the sheet with the web engine.
class TemplateGalleryPlugin : public QObject, public TemplateGalleryFactory
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TemplateGalleryFactory_iid)
    Q_INTERFACES(TemplateGalleryFactory)
public:
    TemplateGalleryWindow *createTemplateWebviewWindow(UserDefaults &defaults, const QString &resourcesFolder,
                                                       AlertPresenter &alerts,
                                                       std::function<void(const QUrl &)> downloadTemplate,
                                                       QWidget *parent) override;
};

#include "app/gallery/TemplateGalleryPlugin.h"

#include "app/gallery/TemplateGallerySheet.h"

TemplateGalleryWindow *TemplateGalleryPlugin::createTemplateWebviewWindow(UserDefaults &defaults,
                                                                          const QString &resourcesFolder,
                                                                          AlertPresenter &alerts,
                                                                          std::function<void(const QUrl &)> downloadTemplate,
                                                                          QWidget *parent)
{
    auto *sheet = new TemplateGallerySheet(defaults, resourcesFolder, alerts, parent);
    QObject::connect(sheet, &TemplateGallerySheet::downloadTemplate, sheet, std::move(downloadTemplate));
    return sheet;
}

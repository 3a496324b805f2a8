#pragma once

#include "model/CollageLayout.h"
#include "templates/TemplateTable.h"

#include <QColor>
#include <QScrollArea>

#include <functional>
#include <memory>
#include <utility>

class AlertPresenter;
class ImageBrowserController;
class ImageCache;
class ImageCacheLoader;
class LayoutEngine;
class TemplateSelection;
class TemplateStore;
class UserDefaults;

// The scrolling collage view of the main window. It holds the layout engine, the image cache
// (with its asynchronous face) and the template stores, lays the collage out whenever the
// template, its own size, the transform or the photo list changes, and shows one tile per
// placed module. Photos are never decoded on the main thread: a tile shows a neutral loading
// look until its photo arrives from the cache.
class TessaryView : public QScrollArea
{
    Q_OBJECT
public:
    TessaryView(UserDefaults &defaults, ImageBrowserController &delegate, AlertPresenter &alerts,
                const QString &resourcesFolder, QWidget *parent = nullptr);
    ~TessaryView() override;

    LayoutEngine &layoutEngine() const;
    ImageCache &imageCache() const;
    ImageCacheLoader &imageCacheLoader() const;
    TemplateStore &templateStore() const;
    TemplateSelection &templateSelection() const;

    // Grid and scaling from the chosen template for the current size, then a new layout.
    void setup();
    void reloadData();
    // Applies the template at row of the table and lays the collage out again.
    void doChooseTemplate(TemplateTable table, qsizetype row);
    bool saveImageCacheToUserDefaults();

    // The last layout shown.
    const CollageLayout &currentLayout() const;

    // Where unjumble finds the current table and its selected row (-1: none).
    void setTemplateRowProvider(std::function<std::pair<TemplateTable, qsizetype>()> provider);

    QColor tessaryBackgroundColor() const;
    void setTessaryBackgroundColor(const QColor &color);

signals:
    // A new layout is on screen.
    void layoutChanged();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

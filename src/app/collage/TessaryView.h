#pragma once

#include "model/CollageLayout.h"
#include "templates/TemplateTable.h"

#include <QColor>
#include <QList>
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
class TessaryDataView;
class TileJumble;
class UserDefaults;

// The scrolling collage view of the main window. It holds the layout engine, the image cache
// (with its asynchronous face) and the template stores, lays the collage out whenever the
// template, its own size, the transform or the photo list changes, and shows one tile per
// placed module on a flipped document view that paints the collage background colour.
//
// Photos are never decoded on the main thread, and a relayout never waits for one: geometry is
// applied at once; a cached photo is fitted to its tile on a thread pool (the tile keeps the
// previous picture of that photo, scaled, meanwhile); an uncached one shows a neutral loading
// look until the image cache loader has decoded it. tilesFilled() says when every tile shows
// its photo.
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
    ImageBrowserController &tessaryViewDelegate() const;
    const TileJumble &tileJumble() const;

    // Grid and scaling from the chosen template for the current size, then a new layout.
    void setup();
    void reloadData();
    // Applies the template at row of the table and lays the collage out again.
    void doChooseTemplate(TemplateTable table, qsizetype row);
    bool saveImageCacheToUserDefaults();

    // The last layout shown (tile frames follow a jumble).
    const CollageLayout &currentLayout() const;
    // The flipped document view holding the tiles, and the tiles in layout order.
    QWidget *documentView() const;
    QList<TessaryDataView *> tiles() const;
    // The tile showing photo `tag`, or null.
    TessaryDataView *tileWithTag(qint64 tag) const;
    // Tool-tip texts of the tiles, in tile order.
    QStringList toolTipStrings() const;
    // Every tile of the current layout shows its photo (or its photo failed to load).
    bool allTilesFilled() const;
    // Number of layouts applied so far (a frame change with an unchanged size adds none).
    quint64 layoutGeneration() const;

    // The size laid out for: the view's frame, scrollers not counted.
    QSizeF availableSize() const;

    // Where unjumble finds the current table and its selected row (-1: none).
    void setTemplateRowProvider(std::function<std::pair<TemplateTable, qsizetype>()> provider);

    QColor tessaryBackgroundColor() const;
    void setTessaryBackgroundColor(const QColor &color);

    int coordinateTransform() const;
    int spacingType() const;
    int imageFrameStyle() const;
    bool isJumbled() const;

    // Asks the photo list to exchange the two photos (the list then relays the collage out).
    void swapDataViewTagged(qint64 a, qint64 b);
    // Rebuilds the tiles' tool tips and index labels.
    void updateToolTips();

    // --- Framing a photo by hand, forwarded by the tiles' image views. The geometry is
    // PhotoFraming's; the tile previews the reduced photo until the framing is stored with the
    // photo and the collage is laid out again.
    // Starts panning the tile's photo; false when it cannot be framed now (its photo is not
    // decoded yet, or the collage is jumbled).
    bool beginFraming(TessaryDataView *tile);
    // The pointer is `delta` points from where the pan began.
    void panFraming(const QPointF &delta);
    // The pan ended: the framing is stored with the photo.
    void endFraming();
    // Zooms the tile's photo by `factor` about `position` (points of its image view); stored
    // once the wheel has rested for a moment.
    void zoomFraming(TessaryDataView *tile, const QPointF &position, double factor);
    // The photo goes back to its alignment.
    void resetFraming(TessaryDataView *tile);
    // The framing being changed, if any (none otherwise).
    PhotoFraming framingInProgress() const;

public slots:
    // The controls: each sets the value and relays out.
    void setCoordinateTransform(int transform);
    void setSpacingType(int index);
    void setImageFrameStyle(int index);
    // The three controls as a start brings them back, before anything is laid out (no relayout).
    void restoreControls(int transform, int spacingType, int imageFrameStyle);
    // Scatters the tiles (from any state), swaps scattered and previous places, and ends the
    // jumble by choosing the current template row again.
    void jumble();
    void undojumble();
    void unjumble();
    // Enters the jumbled state with the tiles at the given frames (tile order), as a saved
    // collage left them; Undo Jumble then returns them to their laid-out places.
    void jumbleTo(const QList<QRectF> &frames);
    // The view's frame changed: a new size is laid out, an unchanged one is not.
    void frameDidChangeNotification();

signals:
    // A new layout is on screen.
    void layoutChanged();
    // Every tile of the current layout shows its photo.
    void tilesFilled();
    // Entered or left the jumbled state (Undo Jumble and Unjumble are enabled while jumbled).
    void jumbledChanged(bool jumbled);
    // The transform changed; name is what the label beside the control shows.
    void coordinateTransformChanged(int transform, const QString &name);
    void tessaryBackgroundColorChanged(const QColor &color);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void applyLayout(CollageLayout layout);
    void startFitting();
    void photoReady(const QString &path);
    // One tile's picture fitted on the view's pool and shown when it comes.
    struct FitJob;
    void startFit(const FitJob &job);
    void photoFailed(const QString &path);
    // The photo's file changed on disk: its tiles show it afresh, or that it cannot be read,
    // without a new layout (which a jumbled collage would refuse).
    void photoChanged(const QString &path);
    void showFitted(qsizetype index, const QString &key, const QImage &image);
    void tileFilled(qsizetype index);
    void moveTiles(const std::vector<QRectF> &frames);
    std::vector<QRectF> tileFrames() const;

    struct Private;
    std::unique_ptr<Private> d;
};

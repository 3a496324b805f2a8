#pragma once

#include "model/CollageLayout.h"
#include "model/TessaryData.h"
#include "model/TwoDimentionalArray.h"

#include <QSizeF>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include <memory>
#include <optional>
#include <vector>

class TessaryViewDelegate;
class UserDefaults;

// Turns the current template (its values written into the user defaults) into a collage layout:
// a grid of square cells taken from the unscaled template, the template's modules placed one
// after another at the first free place where they fit (row by row from the top-left cell), one
// tile per placed module showing photo i in module i, or the placeholder picture.
//
// The engine knows nothing of widgets. The collage view owns one, calls setup() when a template
// is chosen or its size changes and reloadData() for every relayout, and applies the returned
// CollageLayout to its tiles; the renderer and the command line consume the same value.
//
// The coordinate transform is an input: the two rotations (3 and 4) swap each tile's image size
// and the content size. Moving the tiles for a transform is left to the caller, which gets the
// untransformed frames and the extent they were laid out in.
class LayoutEngine
{
public:
    using Module = std::shared_ptr<TessaryData>;
    using Modules = std::vector<Module>;

    // A grid larger than this (a template with a tiny module size on a huge collage) is treated
    // like a grid of no cells: nothing is placed, and the process is not taken down.
    static constexpr quint64 kMaxGridCells = quint64(1) << 20;

    // defaultImage: path of the placeholder picture shown by modules without a photo.
    explicit LayoutEngine(QString defaultImage = QString());

    // The path of the placeholder picture inside a resources folder.
    static QString defaultImagePathInFolder(const QString &resourcesFolder);
    QString defaultImage() const { return m_defaultImage; }
    void setDefaultImage(const QString &path) { m_defaultImage = path; }

    // Inputs from the collage window's controls.
    // 0 none, 1 flipped horizontally, 2 flipped vertically, 3 rotated left, 4 rotated right.
    void setCoordinateTransform(int transform) { m_coordinateTransform = transform; }
    int coordinateTransform() const { return m_coordinateTransform; }
    // Index 0 insets the tiles (gaps between them); any other index outsets them (overlap).
    void setSpacingType(int index) { m_spacingType = index; }
    int spacingType() const { return m_spacingType; }
    // Carried through to the layout for whoever draws the tiles' image frames.
    void setImageFrameStyle(int index) { m_imageFrameStyle = index; }
    int imageFrameStyle() const { return m_imageFrameStyle; }
    // Tile spacing in percent ("CollageWidthIncrement", "CollageHeightIncrement"); 5 and 5 until set.
    void setIncrements(double widthPercent, double heightPercent);
    double widthIncrement() const { return m_widthIncrement; }
    double heightIncrement() const { return m_heightIncrement; }

    // Reads "moduleSizeInPoints", "borderWidth", "contentSizeWidth" and "contentSizeHeight"
    // from the defaults and sets up the grid and the scaling for the available size.
    void setup(UserDefaults &defaults, const QSizeF &available);
    // The same with the values given. The grid is that of the unscaled template; the sizes are
    // then fitted to the available width and, if still too tall, to the available height, the
    // module size and border width being truncated to whole points after each step.
    void setup(qint64 moduleSizeInPoints, qint64 borderWidth, double contentSizeWidth, double contentSizeHeight,
               const QSizeF &available);

    // Rebuilds the layout from the defaults: the modules from "savedTessaryDataModules" (each
    // marked empty), the spacing increments, then setupLayoutWithTessaryElements.
    CollageLayout reloadData(UserDefaults &defaults, const TessaryViewDelegate *delegate);

    // Replaces the module list with one module per dictionary of "savedTessaryDataModules".
    void loadTessaryDataModulesEmpty(UserDefaults &defaults, bool empty);
    void loadTessaryDataModules(const QVariantList &moduleDictionaries, bool empty);
    // Resets the size and look of every module (see TessaryData::resetModule).
    void resetDataModules();
    const Modules &tessaryDataModules() const { return m_tessaryDataModules; }

    // Places the modules and makes one tile per placed module. A delegate of nullptr stands for
    // an empty photo list.
    CollageLayout setupLayoutWithTessaryElements(const Modules &modules, const TessaryViewDelegate *delegate);

    // The first (column, row), row by row from the top-left cell, where a module of width x
    // height cells fits; nothing when it fits nowhere.
    std::optional<QPoint> coordArrayForCGSize(qint64 width, qint64 height) const;
    // Whether every cell the module would cover at (column, row) is inside the grid and free.
    // A module of no height fits anywhere; one of no width but some height fits at the first
    // coordinate tried.
    bool doesModuleWithCGSize(qint64 width, qint64 height, qint64 column, qint64 row) const;
    // Records the module in every cell it covers.
    void tessaryDataModules2DArraySetModule(const Module &module, qint64 width, qint64 height, qint64 column, qint64 row);
    // Whether b fits inside a: b's width and height are no larger than a's.
    static bool doesSize(const QSizeF &a, const QSizeF &b) { return b.width() <= a.width() && b.height() <= a.height(); }

    // Records the view's frame size; true when it differs from the last one, meaning the caller
    // should run setup and reloadData. An unchanged size needs no relayout.
    bool frameSizeChanged(const QSizeF &frameSize);

    // A complete pass for one template dictionary at the given size with the current inputs:
    // what choosing it and showing it at that size gives. Used to check templates.
    CollageLayout layoutTemplate(const QVariantMap &templateData, const QSizeF &available,
                                 const TessaryViewDelegate *delegate = nullptr);

    quint64 maxElementsX() const { return m_maxElementsX; }
    quint64 maxElementsY() const { return m_maxElementsY; }
    quint64 moduleSizeInPoints() const { return m_moduleSizeInPoints; }
    quint64 borderWidth() const { return m_borderWidth; }
    double contentSizeWidth() const { return m_contentSizeWidth; }
    double contentSizeHeight() const { return m_contentSizeHeight; }
    // The size of the collage as last laid out (kept when a layout had no modules).
    QSizeF contentSize() const { return m_contentSize; }
    const TwoDimentionalArray &tessaryDataModules2DArray() const { return m_grid; }

private:
    TileLayout makeTile(const Module &module, qsizetype index, const QPoint &cell, const QStringList &photos,
                        const TessaryViewDelegate *delegate) const;

    QString m_defaultImage;
    int m_coordinateTransform = 0;
    int m_spacingType = 0;
    int m_imageFrameStyle = 0;
    double m_widthIncrement = 5.0;
    double m_heightIncrement = 5.0;

    quint64 m_moduleSizeInPoints = 0;
    quint64 m_borderWidth = 0;
    double m_contentSizeWidth = 0.0;
    double m_contentSizeHeight = 0.0;
    quint64 m_maxElementsX = 0;
    quint64 m_maxElementsY = 0;

    // Whether the grid is the one the current grid size describes (setup may change the size
    // after a layout); the bookkeeping below is only used then.
    bool gridMatchesSize() const { return m_grid.columns() == m_maxElementsX && m_grid.rows() == m_maxElementsY; }
    void resetGrid(quint64 columns, quint64 rows);

    Modules m_tessaryDataModules;
    TwoDimentionalArray m_grid;
    // Occupied cells of the grid, and the first free cell in reading order (row-major index):
    // a module covering cells needs at least its area free and starts at a free cell, so the
    // search can begin there and give up early on a full grid.
    quint64 m_filledCells = 0;
    quint64 m_firstFree = 0;
    QSizeF m_contentSize;
    QSizeF m_frameSize;
};

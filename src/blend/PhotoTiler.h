#pragma once

#include "foundation/BackgroundJob.h"

#include <QList>
#include <QObject>
#include <QRect>
#include <QSize>
#include <QSizeF>
#include <QString>

#include <atomic>
#include <chrono>
#include <functional>

// Cuts one photo into a grid of tile photos, written as TIFF files into the images folder.
//
// The grid never cuts a direction into tiles narrower than a fiftieth of the picture: such a
// direction is left whole. Tiles are cut row by row from the bottom row upward, each row from
// its last column to its first, with a fixed pause before every tile (a deliberate pacing; a
// test may set it to zero). Each tile is named "<folder>/<uuid>_<row>_<column>.tiff".
//
// tilePhotoFiles() runs the cut as a background job and reports each written tile and the end
// by signal, on the thread that owns the tiler; cancel() stops it after the tile being cut. tilingInProgress() is set when a cut is
// asked for and cleared only when a cut that had a photo to read ends: a request without an
// images folder or without a photo leaves it set, so the tile sheet stays refused until the
// next start of the program.
class PhotoTiler : public QObject
{
    Q_OBJECT
public:
    struct Grid {
        int rows = 1;
        int columns = 1;
        int tileWidth = 0;
        int tileHeight = 0;
        int count() const { return rows * columns; }
    };
    struct Tile {
        int row = 0;
        int column = 0;
        QRect rect; // in pixels, origin at the lower left of the photo
    };

    static constexpr std::chrono::milliseconds DefaultPause{250};

    // The tile size and the counts for a picture of `size` asked to be cut rows x columns.
    static Grid gridFor(const QSizeF &size, int rows, int columns);
    // The tiles in the order they are cut.
    static QList<Tile> cuttingOrder(const Grid &grid);
    // "%@/%@_%d_%d.tiff" from the folder, the uuid, the row and the column.
    static QString tilePath(const QString &folder, const QString &uuid, int row, int column);

    // The whole cut, on the calling thread: reads the photo, then for every tile waits `pause`,
    // cuts it and writes it; onTile(path, done, total) follows each written tile. A tile that
    // cannot be encoded or written is skipped. Returns false when the photo could not be read.
    // `stop` (may be null) ends the cut early when it becomes true.
    static bool cutPhoto(const QString &photoPath, const QString &folder, int rows, int columns,
                         std::chrono::milliseconds pause,
                         const std::function<void(const QString &path, int done, int total)> &onTile,
                         const std::atomic<bool> *stop = nullptr);

    explicit PhotoTiler(QObject *parent = nullptr);
    ~PhotoTiler() override = default; // ends a running cut after its current tile

    void setPauseBeforeEachTile(std::chrono::milliseconds pause) { m_pause = pause; }
    std::chrono::milliseconds pauseBeforeEachTile() const { return m_pause; }
    bool tilingInProgress() const { return m_inProgress.load(); }

    // Starts cutting `photoPath` (the selected photo; empty when nothing is selected) into
    // rows x columns tiles in `imagesPath` (empty when there is no images folder).
    void tilePhotoFiles(const QString &imagesPath, const QString &photoPath, int rows, int columns);
    // Stops a running cut after its current tile; the end is reported as for a whole cut.
    void cancel() { m_job.cancel(); }
    // Waits for a running cut to end (for tests and the command line).
    void waitForFinished() { m_job.waitForDone(); }

signals:
    // A tile was written; done of total tiles are written.
    void tileWritten(const QString &path, int done, int total);
    // The cut ended (every tile done, or the photo could not be read).
    void tilingFinished();

private:
    std::chrono::milliseconds m_pause = DefaultPause;
    std::atomic<bool> m_inProgress{false};
    BackgroundJob m_job;
};

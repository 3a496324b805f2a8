#include "PhotoTiler.h"

#include "foundation/ImagesFolder.h"
#include "images/BottomLeftCoordinates.h"
#include "images/UIImage.h"
#include "foundation/Log.h"

#include <QFile>

#include <cmath>
#include <thread>

PhotoTiler::Grid PhotoTiler::gridFor(const QSizeF &size, int rows, int columns)
{
    const double w = size.width(), h = size.height();
    Grid grid;
    grid.rows = qMax(1, rows);
    grid.columns = qMax(1, columns);
    grid.tileWidth = int(std::trunc(w / grid.columns));
    grid.tileHeight = int(std::trunc(h / grid.rows));
    // A direction whose tiles would be narrower than a fiftieth of the picture is not divided.
    if (grid.tileWidth < w / 50) {
        grid.tileWidth = int(std::trunc(w));
        grid.columns = grid.tileWidth > 0 ? int(std::trunc(w / grid.tileWidth)) : 1;
    }
    if (grid.tileHeight < h / 50) {
        grid.tileHeight = int(std::trunc(h));
        grid.rows = grid.tileHeight > 0 ? int(std::trunc(h / grid.tileHeight)) : 1;
    }
    return grid;
}

QList<PhotoTiler::Tile> PhotoTiler::cuttingOrder(const Grid &grid)
{
    QList<Tile> tiles;
    tiles.reserve(grid.count());
    for (int r = 0; r < grid.rows; ++r) {
        for (int c = grid.columns - 1; c >= 0; --c)
            tiles.append({r, c, QRect(grid.tileWidth * c, grid.tileHeight * r, grid.tileWidth, grid.tileHeight)});
    }
    return tiles;
}

QString PhotoTiler::tilePath(const QString &folder, const QString &uuid, int row, int column)
{
    return QStringLiteral("%1/%2_%3_%4.tiff").arg(folder, uuid).arg(row).arg(column);
}

bool PhotoTiler::cutPhoto(const QString &photoPath, const QString &folder, int rows, int columns,
                          std::chrono::milliseconds pause,
                          const std::function<void(const QString &, int, int)> &onTile,
                          const std::atomic<bool> *stop)
{
    const UIImage image = UIImage::initWithContentsOfFile(photoPath);
    if (!image.isValid())
        return false;
    // One point is one pixel: the frame that is drawn, at its own size.
    const QImage picture = image.bestRepresentation();
    const Grid grid = gridFor(QSizeF(picture.size()), rows, columns);
    const int total = grid.count();
    int done = 0;
    for (const Tile &tile : cuttingOrder(grid)) {
        if (stop && stop->load())
            break;
        if (pause.count() > 0)
            std::this_thread::sleep_for(pause);
        const QRect region = BottomLeftCoordinates::toTopLeft(QRectF(tile.rect), picture.height()).toRect();
        const QByteArray tiff = UIImage(picture.copy(region)).TIFFRepresentation();
        if (tiff.isEmpty())
            continue;
        const QString path = tilePath(folder, ImagesFolder::newUuid().toUpper(), tile.row, tile.column);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(tiff) != tiff.size())
            continue;
        file.close();
        if (file.error() != QFileDevice::NoError)
            continue;
        ++done;
        if (onTile)
            onTile(path, done, total);
    }
    return true;
}

PhotoTiler::PhotoTiler(QObject *parent)
    : QObject(parent)
{
    connect(&m_job, &BackgroundJob::partialResult, this, [this](const QVariant &tile) {
        const QVariantList t = tile.toList();
        emit tileWritten(t.value(0).toString(), t.value(1).toInt(), t.value(2).toInt());
    });
    connect(&m_job, &BackgroundJob::finished, this, [this] {
        m_inProgress = false;
        emit tilingFinished();
    });
}

void PhotoTiler::tilePhotoFiles(const QString &imagesPath, const QString &photoPath, int rows, int columns)
{
    m_inProgress = true;
    // Nowhere to write or nothing to cut: the flag stays set (see the class comment).
    if (imagesPath.isEmpty() || photoPath.isEmpty())
        return;
    const auto pause = m_pause;
    m_job.start([imagesPath, photoPath, rows, columns, pause](BackgroundJob::Control &control) {
        int made = 0, total = -1;
        cutPhoto(photoPath, imagesPath, rows, columns, pause,
                 [&](const QString &path, int done, int all) {
                     made = done;
                     total = all;
                     control.post(QVariantList{path, done, total});
                 },
                 control.canceledFlag());
        if (control.isCanceled() && made != total)
            qCInfo(lcTessary, "The cut was stopped before it was done");
        return QVariant();
    });
}

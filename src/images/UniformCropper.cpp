#include "UniformCropper.h"

#include "ImageFileReader.h"
#include "ImageOperations.h"
#include "UIImage.h"
#include "foundation/AtomicFileWriter.h"
#include "foundation/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>

#include <limits>
#include <numeric>
#include <vector>

QSizeF UniformCropper::commonSize(const QStringList &files)
{
    double w = std::numeric_limits<float>::max();
    double h = std::numeric_limits<float>::max();
    for (const QString &path : files) {
        if (!QFileInfo::exists(path))
            continue;
        // The header's upright size is the size the decoded photo has.
        const ImageFileReader::Header header = ImageFileReader::readHeaderOfFile(path);
        const QSize size = header.ok() ? header.size : QSize(0, 0);
        w = std::min(w, double(size.width()));
        h = std::min(h, double(size.height()));
    }
    return QSizeF(w, h);
}

QStringList UniformCropper::uniformlyCropImages(const QStringList &files, bool uniformlyCrop, bool fit,
                                                const QString &tempFolder)
{
    if (!uniformlyCrop)
        return files;
    QStringList existing;
    for (const QString &path : files) {
        if (QFileInfo::exists(path))
            existing.append(path);
    }
    const QSizeF common = commonSize(existing);

    // Two photos at a time, each decoded, fitted, encoded and written on its own, on a pool of
    // this call's own (the global pool serves the window's painting).
    QStringList out;
    for (const QString &path : existing)
        out.append(QDir(tempFolder).filePath(QFileInfo(path).fileName()));
    std::vector<int> order(existing.size());
    std::iota(order.begin(), order.end(), 0);
    QThreadPool pool;
    pool.setMaxThreadCount(2);
    QtConcurrent::blockingMap(&pool, order, [&](int i) {
        const UIImage image = UIImage::initWithContentsOfFile(existing[i]).fixOrientation();
        // A photo already of the common size fits it unchanged.
        const UIImage fitted = image.size() == common ? image
            : fit ? ImageOperations::imageScaledToFitSize(image, common)
                  : ImageOperations::imageCroppedToFitSize(image, common);
        const QString &target = out[i];
        if (QFileInfo::exists(target)) {
            QFile old(target);
            if (!old.remove())
                qCInfo(lcTessary, "Error removing file at path: %s", qUtf8Printable(old.errorString()));
        }
        AtomicFileWriter::write(target, fitted.TIFFRepresentation());
    });
    return out;
}

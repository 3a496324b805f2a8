#include "UniformCropper.h"

#include "images/ImageFileReader.h"
#include "images/ImageOperations.h"
#include "images/UIImage.h"
#include "foundation/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QThreadPool>
#include <QUuid>
#include <QtConcurrent/QtConcurrentMap>

#include <filesystem>
#include <limits>
#include <numeric>
#include <vector>

namespace {

// Writes the picture as TIFF, whole or not at all: into a file of its own beside the target,
// renamed over it. Encoded straight into the file and not forced to the disk: the copies only
// live until the blend has read them. A picture without transparency is written as plain RGB.
bool writeTiffReplacing(const QString &target, const UIImage &image)
{
    QImage frame = image.bestRepresentation();
    if (frame.isNull())
        return false;
    if (!frame.hasAlphaChannel())
        frame.convertTo(QImage::Format_RGB888);
    const QString part = target + QStringLiteral(".%1.part").arg(QUuid::createUuid().toString(QUuid::Id128));
    QFile file(part);
    bool written = false;
    if (file.open(QIODevice::WriteOnly)) {
        QImageWriter writer(&file, "tiff");
        written = writer.write(frame);
        file.close();
        written = written && file.error() == QFileDevice::NoError;
    }
    std::error_code error;
    if (written) {
        std::filesystem::rename(QFile::encodeName(part).toStdString(), QFile::encodeName(target).toStdString(), error);
        if (!error)
            return true;
    }
    QFile::remove(part);
    return false;
}

} // namespace

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
        writeTiffReplacing(target, fitted);
    });
    return out;
}

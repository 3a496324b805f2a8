// The blend benchmark's two halves:
//   tessary-blend-photos --make FOLDER    writes four 12-megapixel JPEGs (4000 x 3000) of
//                                         different synthetic scenes, photo-0.jpg .. photo-3.jpg
//   tessary-blend-photos [--fixed] [--crop] FILE... blends the files left to right as the Blend Left to
//                                         Right command does (a 50-pixel blending margin, joins
//                                         looked for; --crop first brings them to one size as
//                                         "UniformlyCrop" does; --fixed joins at the margin
//                                         without looking) and prints the time taken and the
//                                         picture's size
#include "images/PhotoBlender.h"
#include "images/UniformCropper.h"

#include <QDir>
#include <QElapsedTimer>
#include <QCoreApplication>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QTemporaryDir>
#include <QtConcurrent/QtConcurrentMap>

#include <cstdio>

namespace {

QImage makePhoto(int index)
{
    const int w = 4000, h = 3000;
    QImage image(w, h, QImage::Format_RGB32);
    const QColor a = QColor::fromHsv(index * 83 % 360, 150, 225).toRgb();
    const QColor b = QColor::fromHsv((index * 83 + 140) % 360, 200, 80).toRgb();
    quint32 seed = 2166136261u ^ quint32(index * 16777619u);
    for (int y = 0; y < h; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < w; ++x) {
            seed = seed * 1664525u + 1013904223u;
            const int grain = int((seed >> 24) & 15) - 8;
            const int s = (x * 512 / w + y * 512 / h); // 0..1023
            const auto mix = [&](int p, int q) { return qBound(0, p + (q - p) * s / 1024 + grain, 255); };
            line[x] = qRgb(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()));
        }
    }
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    for (int k = 0; k < 14; ++k) {
        p.setBrush(QColor::fromHsv((index * 83 + 25 * k) % 360, 170, 210, 180));
        p.setPen(QPen(Qt::black, 8));
        const int d = 3000 / (3 + k % 4);
        p.drawEllipse(QRect((k * 977 + index * 331) % (w - d), (k * 613 + index * 171) % (h - d), d, d));
    }
    return image;
}

} // namespace

int main(int argc, char *argv[])
{
    // Pictures need no window system: a core application is enough and starts quicker.
    QCoreApplication app(argc, argv);
    QStringList args = QCoreApplication::arguments().mid(1);
    if (args.size() == 2 && args[0] == QStringLiteral("--make")) {
        const QDir folder(args[1]);
        QDir().mkpath(folder.path());
        const QList<int> indexes{0, 1, 2, 3};
        QtConcurrent::blockingMap(indexes, [&](int i) {
            const QString path = folder.filePath(QStringLiteral("photo-%1.jpg").arg(i));
            if (QImage(path).size() == QSize(4000, 3000))
                return; // made by an earlier run
            QImageWriter writer(path, "jpeg");
            writer.setQuality(90);
            writer.write(makePhoto(i));
        });
        return 0;
    }
    const bool fixed = !args.isEmpty() && args[0] == QStringLiteral("--fixed");
    if (fixed)
        args.removeFirst();
    const bool crop = !args.isEmpty() && args[0] == QStringLiteral("--crop");
    if (crop)
        args.removeFirst();
    if (args.isEmpty()) {
        std::fprintf(stderr, "Usage: tessary-blend-photos --make FOLDER | tessary-blend-photos [--fixed] [--crop] FILE...\n");
        return 2;
    }
    QTemporaryDir temp;
    QElapsedTimer timer;
    timer.start();
    const QStringList files = crop ? UniformCropper::uniformlyCropImages(args, true, true, temp.path()) : args;
    const qint64 cropMs = timer.elapsed();
    PhotoBlender::Options options;
    options.blendingMarginWidth = 50;
    options.findJoins = !fixed;
    const QImage picture = PhotoBlender::blend(files, PhotoBlender::Arrangement::LeftToRight, options);
    const qint64 totalMs = timer.elapsed();
    if (picture.isNull()) {
        std::fprintf(stderr, "tessary-blend-photos: nothing could be blended\n");
        return 1;
    }
    std::printf("%lld ms (uniform cropping %lld ms), %d x %d\n", static_cast<long long>(totalMs),
                static_cast<long long>(cropMs), picture.width(), picture.height());
    return 0;
}

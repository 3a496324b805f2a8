// The blend benchmarks' two halves:
//   tessary-blend-photos --make FOLDER [N [W H]]  writes N (default 4) JPEGs of W x H (default
//                                         4000 x 3000, 12 megapixels) of different synthetic
//                                         scenes, photo-0.jpg .. photo-<N-1>.jpg
//   tessary-blend-photos [OPTIONS] FILE... blends the files left to right as the Blend Left to
//                                         Right command does (a 50-pixel blending margin, joins
//                                         looked for) and prints the time taken and the
//                                         picture's size. Options:
//       --fixed        join at the margin without looking
//       --crop         first bring the photos to one size ("UniformlyCrop", scaled to fit)
//       --limit        keep the picture within the megapixel limit ("MegapixelLimit")
//       --abort MS     cancel the blend MS milliseconds after it started and print how long
//                      it took to stop
#include "blend/PhotoBlender.h"

#include <QDir>
#include <QElapsedTimer>
#include <QCoreApplication>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>

#include <atomic>
#include <thread>

#include <cstdio>

namespace {

QImage makePhoto(int index, int w, int h)
{
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
        const int d = h / (3 + k % 4);
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
    if (args.size() >= 2 && args[0] == QStringLiteral("--make")) {
        const QDir folder(args[1]);
        const int count = args.size() > 2 ? args[2].toInt() : 4;
        const QSize size = args.size() > 4 ? QSize(args[3].toInt(), args[4].toInt()) : QSize(4000, 3000);
        QDir().mkpath(folder.path());
        QList<int> indexes;
        for (int i = 0; i < count; ++i)
            indexes.append(i);
        QThreadPool pool;
        pool.setMaxThreadCount(2);
        QtConcurrent::blockingMap(&pool, indexes, [&](int i) {
            const QString path = folder.filePath(QStringLiteral("photo-%1.jpg").arg(i));
            if (QImageReader(path).size() == size)
                return; // made by an earlier run
            QImageWriter writer(path, "jpeg");
            writer.setQuality(90);
            writer.write(makePhoto(i, size.width(), size.height()));
        });
        return 0;
    }
    PhotoBlender::Options options;
    options.blendingMarginWidth = 50;
    int abortMs = -1;
    while (!args.isEmpty() && args[0].startsWith(QStringLiteral("--"))) {
        const QString option = args.takeFirst();
        if (option == QStringLiteral("--fixed"))
            options.findJoins = false;
        else if (option == QStringLiteral("--crop"))
            options.uniformSize = PhotoBlender::UniformSize::Fit;
        else if (option == QStringLiteral("--limit"))
            options.megapixelLimit = PhotoBlender::kMegapixelLimit;
        else if (option == QStringLiteral("--abort") && !args.isEmpty())
            abortMs = args.takeFirst().toInt();
    }
    if (args.isEmpty()) {
        std::fprintf(stderr, "Usage: tessary-blend-photos --make FOLDER [N [W H]] | tessary-blend-photos "
                             "[--fixed] [--crop] [--limit] [--abort MS] FILE...\n");
        return 2;
    }
    QElapsedTimer timer;
    timer.start();
    std::atomic<bool> cancel{false};
    std::atomic<qint64> canceledAt{-1};
    PhotoBlender::Progress progress;
    progress.canceled = [&] { return cancel.load(); };
    std::thread aborter;
    if (abortMs >= 0) {
        aborter = std::thread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(abortMs));
            canceledAt = timer.elapsed();
            cancel = true;
        });
    }
    const PhotoBlender::Outcome outcome = PhotoBlender::blend(args, PhotoBlender::Arrangement::LeftToRight, options, progress);
    const qint64 totalMs = timer.elapsed();
    if (aborter.joinable())
        aborter.join();
    if (outcome.canceled) {
        std::printf("cancelled after %lld ms, stopped %lld ms later\n", static_cast<long long>(canceledAt.load()),
                    static_cast<long long>(totalMs - canceledAt.load()));
        return 0;
    }
    if (outcome.picture.isNull()) {
        std::fprintf(stderr, "tessary-blend-photos: %s\n", qPrintable(outcome.error));
        return 1;
    }
    std::printf("%lld ms, %d x %d%s\n", static_cast<long long>(totalMs), outcome.picture.width(),
                outcome.picture.height(),
                outcome.scaledToLimit ? qPrintable(QStringLiteral(" (scaled from %1 megapixels)").arg(outcome.wholeMegapixels, 0, 'f', 0)) : "");
    return 0;
}

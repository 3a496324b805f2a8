// Writes the race's synthetic photos: deterministic JPEGs of 12 to 24 megapixels, landscape and
// portrait, with gradients, shapes and fine grain, so that they compress and decode like camera
// pictures rather than like flat colour. Usage: tessary-race-photos FOLDER [COUNT]
#include <QColor>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QtConcurrent/QtConcurrentMap>

#include <atomic>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

struct PhotoPlan {
    int index;
    QSize size;
};

// Photo i: 12 + (7 i mod 13) megapixels, 4:3 or 3:2, every third one portrait.
PhotoPlan planFor(int i)
{
    const double megapixels = 12.0 + (7 * i) % 13;
    const double aspect = i % 2 ? 1.5 : 4.0 / 3.0;
    int w = int(std::lround(std::sqrt(megapixels * 1e6 * aspect)));
    int h = int(std::lround(megapixels * 1e6 / w));
    if (i % 3 == 1)
        std::swap(w, h);
    return {i, QSize(w, h)};
}

QImage makePhoto(const PhotoPlan &plan)
{
    QImage image(plan.size, QImage::Format_RGB32);
    const int w = plan.size.width(), h = plan.size.height();
    const int hue = (plan.index * 47) % 360;
    const QColor a = QColor::fromHsv(hue, 160, 230).toRgb(), b = QColor::fromHsv((hue + 120) % 360, 200, 90).toRgb();
    const int ar = a.red(), ag = a.green(), ab = a.blue();
    const int dr = b.red() - ar, dg = b.green() - ag, db = b.blue() - ab;
    // A diagonal gradient from a to b in 1/1024 steps, plus grain of +-8 from a fixed sequence.
    quint32 seed = 2166136261u ^ quint32(plan.index * 16777619u);
    for (int y = 0; y < h; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        const qint64 ty = qint64(y) * 512 / h;
        for (int x = 0; x < w; ++x) {
            seed = seed * 1664525u + 1013904223u;
            const int grain = int((seed >> 24) & 15) - 8;
            const int s = int(qint64(x) * 512 / w + ty); // 0..1023
            const int r = ar + dr * s / 1024 + grain;
            const int g = ag + dg * s / 1024 + grain;
            const int bl = ab + db * s / 1024 + grain;
            line[x] = qRgb(qBound(0, r, 255), qBound(0, g, 255), qBound(0, bl, 255));
        }
    }
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    for (int k = 0; k < 12; ++k) {
        p.setBrush(QColor::fromHsv((hue + 30 * k) % 360, 180, 200, 170));
        p.setPen(QPen(Qt::black, std::max(2, w / 400)));
        const int d = std::min(w, h) / (3 + k % 4);
        p.drawEllipse(QRect((k * 977 + plan.index * 131) % (w - d), (k * 613 + plan.index * 71) % (h - d), d, d));
    }
    QFont font;
    font.setPixelSize(std::min(w, h) / 4);
    p.setFont(font);
    p.setPen(Qt::white);
    p.drawText(image.rect(), Qt::AlignCenter, QString::number(plan.index));
    p.end();
    return image;
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = QGuiApplication::arguments();
    if (args.size() < 2) {
        std::fprintf(stderr, "Usage: tessary-race-photos FOLDER [COUNT]\n");
        return 2;
    }
    const QDir folder(args[1]);
    const int count = args.size() > 2 ? args[2].toInt() : 49;
    if (!QDir().mkpath(folder.path()) || count <= 0) {
        std::fprintf(stderr, "tessary-race-photos: cannot use folder %s\n", qPrintable(folder.path()));
        return 1;
    }
    std::vector<PhotoPlan> plans;
    for (int i = 0; i < count; ++i)
        plans.push_back(planFor(i));
    std::atomic<int> failures{0};
    QtConcurrent::blockingMap(plans, [&](const PhotoPlan &plan) {
        const QString path = folder.filePath(QStringLiteral("photo-%1.jpg").arg(plan.index, 2, 10, QLatin1Char('0')));
        if (QFileInfo::exists(path) && QImageReader(path).size() == plan.size)
            return; // made by an earlier run
        QImageWriter writer(path, "jpeg");
        writer.setQuality(88);
        if (!writer.write(makePhoto(plan))) {
            std::fprintf(stderr, "tessary-race-photos: %s: %s\n", qPrintable(path), qPrintable(writer.errorString()));
            ++failures;
        }
    });
    return failures ? 1 : 0;
}

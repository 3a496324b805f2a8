// How well the Smart alignment keeps a photo's subject, measured on generated photos: a plain or
// textured background with one subject (a face, a bright object or a person-like figure) placed
// off centre, in landscape and portrait photos, each cropped into a square, a tall and a wide
// tile. For the centred crop and for Smart it prints the share of subjects kept wholly inside the
// crop, by kind and in all, and the time Smart takes per photo on the reduced copy.
//
// Usage: tessary-framing-quality [--save FOLDER]   (--save writes every generated photo as PNG;
// FRAMING_DEBUG=1 names on stderr each subject that Smart cut, with where it looked)

#include "photos/ImageCache.h"
#include "images/PhotoFraming.h"
#include "images/ResizeGeometry.h"
#include "images/SmartCrop.h"
#include "images/UIImage.h"

#include <QDir>
#include <QElapsedTimer>
#include <QCoreApplication>
#include <QPainter>
#include <QRandomGenerator>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

enum class Subject { Face, BrightObject, Person };
const char *subjectName(Subject s)
{
    switch (s) {
    case Subject::Face: return "face";
    case Subject::BrightObject: return "bright object";
    case Subject::Person: return "person";
    }
    return "";
}

void paintBackground(QImage &img, bool textured, QRandomGenerator &random)
{
    const int w = img.width(), h = img.height();
    if (!textured) {
        // A plain, slightly graded field, as a wall or sky.
        QPainter p(&img);
        QLinearGradient g(0, 0, 0, h);
        g.setColorAt(0, QColor(168, 178, 186));
        g.setColorAt(1, QColor(138, 146, 150));
        p.fillRect(img.rect(), g);
        return;
    }
    // Foliage or gravel: muted blotches with fine grain.
    QPainter p(&img);
    p.fillRect(img.rect(), QColor(96, 110, 82));
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    for (int i = 0; i < 900; ++i) {
        const int v = random.bounded(-28, 28);
        p.setBrush(QColor(std::clamp(96 + v, 0, 255), std::clamp(110 + v, 0, 255), std::clamp(82 + v / 2, 0, 255)));
        const double r = 6.0 + random.bounded(34.0);
        p.drawEllipse(QPointF(random.bounded(double(w)), random.bounded(double(h))), r, r * (0.4 + random.bounded(0.6)));
    }
    p.end();
    for (int y = 0; y < h; ++y) {
        auto *line = reinterpret_cast<QRgb *>(img.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const int n = int(random.bounded(17u)) - 8;
            const QRgb c = line[x];
            line[x] = qRgb(std::clamp(qRed(c) + n, 0, 255), std::clamp(qGreen(c) + n, 0, 255), std::clamp(qBlue(c) + n, 0, 255));
        }
    }
}

// Half the width and height of the subject's bounding box in a photo whose shorter side is s.
QSizeF halfExtent(Subject kind, double s)
{
    switch (kind) {
    case Subject::Face: return QSizeF(0.09 * s, 0.115 * s);
    case Subject::BrightObject: return QSizeF(0.09 * s, 0.09 * s);
    case Subject::Person: return QSizeF(0.06 * s, 0.205 * s);
    }
    return {};
}

// Draws the subject with its centre at `at` and answers its bounding box.
QRectF paintSubject(QImage &img, Subject kind, const QPointF &at, QRandomGenerator &random)
{
    const double s = std::min(img.width(), img.height());
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    const QColor skin(224, 172, 140);
    switch (kind) {
    case Subject::Face: {
        const QRectF face(at.x() - s * 0.08, at.y() - s * 0.105, s * 0.16, s * 0.21);
        p.setBrush(QColor(70, 48, 30)); // hair
        p.drawEllipse(face.adjusted(-s * 0.01, -s * 0.02, s * 0.01, -face.height() * 0.5));
        p.setBrush(skin);
        p.drawEllipse(face);
        p.setBrush(QColor(35, 30, 30));
        const double eye = s * 0.014;
        p.drawEllipse(QPointF(face.left() + face.width() * 0.32, face.top() + face.height() * 0.42), eye, eye * 0.7);
        p.drawEllipse(QPointF(face.left() + face.width() * 0.68, face.top() + face.height() * 0.42), eye, eye * 0.7);
        p.setBrush(QColor(170, 70, 70));
        p.drawEllipse(QPointF(face.center().x(), face.top() + face.height() * 0.75), face.width() * 0.16, eye * 0.6);
        return face.adjusted(-s * 0.01, -s * 0.02, s * 0.01, 0);
    }
    case Subject::BrightObject: {
        static const QColor colours[] = {QColor(250, 200, 20), QColor(230, 40, 40), QColor(40, 120, 240)};
        p.setBrush(colours[random.bounded(3)]);
        const QRectF box(at.x() - s * 0.09, at.y() - s * 0.09, s * 0.18, s * 0.18);
        if (random.bounded(2))
            p.drawEllipse(box);
        else
            p.drawRoundedRect(box, s * 0.02, s * 0.02);
        return box;
    }
    case Subject::Person: {
        static const QColor shirts[] = {QColor(200, 40, 50), QColor(30, 90, 200), QColor(240, 200, 40)};
        const double head = s * 0.08, bodyW = s * 0.12, bodyH = s * 0.17, legH = s * 0.16;
        const double top = at.y() - (head + bodyH + legH) / 2;
        p.setBrush(skin);
        p.drawEllipse(QRectF(at.x() - head / 2, top, head, head));
        p.setBrush(shirts[random.bounded(3)]);
        p.drawRoundedRect(QRectF(at.x() - bodyW / 2, top + head, bodyW, bodyH), s * 0.015, s * 0.015);
        p.setBrush(QColor(40, 40, 60));
        p.drawRect(QRectF(at.x() - bodyW * 0.4, top + head + bodyH, bodyW * 0.35, legH));
        p.drawRect(QRectF(at.x() + bodyW * 0.05, top + head + bodyH, bodyW * 0.35, legH));
        return QRectF(at.x() - bodyW / 2, top, bodyW, head + bodyH + legH);
    }
    }
    return {};
}

struct Tally {
    int total = 0, centre = 0, smart = 0;
    void add(bool c, bool s)
    {
        ++total;
        centre += c;
        smart += s;
    }
};

QString share(int part, int total)
{
    return QStringLiteral("%1/%2 (%3%)").arg(part).arg(total).arg(total ? 100.0 * part / total : 0, 0, 'f', 1);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QString saveFolder;
    const QStringList args = app.arguments();
    if (args.size() == 3 && args[1] == QLatin1String("--save"))
        saveFolder = args[2];
    else if (args.size() != 1) {
        std::fprintf(stderr, "usage: tessary-framing-quality [--save FOLDER]\n");
        return 2;
    }
    if (!saveFolder.isEmpty())
        QDir().mkpath(saveFolder);

    QRandomGenerator random(20261125);
    const QSize landscape(1600, 1200), portrait(1200, 1600);
    const struct {
        const char *name;
        QSizeF size;
    } tiles[] = {{"square", {300, 300}}, {"tall", {200, 400}}, {"wide", {400, 200}}};
    // Off-centre places of the subject's centre, in fractions of the photo.
    const QPointF places[] = {{0.22, 0.3}, {0.78, 0.35}, {0.28, 0.72}, {0.74, 0.68}, {0.5, 0.2}, {0.5, 0.8}};

    Tally all;
    std::vector<std::pair<QString, Tally>> byKind;
    auto tallyFor = [&](const QString &key) -> Tally & {
        for (auto &[name, tally] : byKind)
            if (name == key)
                return tally;
        byKind.emplace_back(key, Tally());
        return byKind.back().second;
    };
    // Wall-clock time, and the processor time of the whole process (libvips' threads included),
    // which a machine busy with other work does not inflate.
    std::vector<double> times;
    std::vector<double> cpuTimes;
    const auto cpuNow = [] {
        timespec t{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
        return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
    };
    bool warmed = false;
    int photoNumber = 0;

    for (const bool textured : {false, true}) {
        for (const Subject kind : {Subject::Face, Subject::BrightObject, Subject::Person}) {
            for (const QSize &size : {landscape, portrait}) {
                for (const QPointF &place : places) {
                    QImage photo(size, QImage::Format_RGB32);
                    paintBackground(photo, textured, random);
                    // Off centre, but wholly inside the photo (with a small margin), so a crop can keep it.
                    const QSizeF half = halfExtent(kind, std::min(size.width(), size.height()));
                    const double margin = 0.02 * std::min(size.width(), size.height());
                    const QPointF at(std::clamp(place.x() * size.width(), half.width() + margin, size.width() - half.width() - margin),
                                     std::clamp(place.y() * size.height(), half.height() + margin, size.height() - half.height() - margin));
                    const QRectF subject = paintSubject(photo, kind, at, random);
                    if (!saveFolder.isEmpty())
                        photo.save(QDir(saveFolder).filePath(QStringLiteral("photo-%1.png").arg(photoNumber, 3, 10, QLatin1Char('0'))));
                    ++photoNumber;

                    // As the image cache holds it: at most half a megapixel.
                    const QImage reduced = UIImage(photo).scaleToUnderMegaPixels(ImageCache::kMegaPixels).bestRepresentation();
                    if (!warmed) {
                        SmartCrop::subjectOf(reduced); // libvips starts up once
                        warmed = true;
                    }
                    QElapsedTimer timer;
                    const double cpuStart = cpuNow();
                    timer.start();
                    const QPointF found = SmartCrop::subjectOf(reduced);
                    times.push_back(timer.nsecsElapsed() / 1e6);
                    cpuTimes.push_back(cpuNow() - cpuStart);

                    const QSizeF full(size);
                    for (const auto &tile : tiles) {
                        const QRectF target(QPointF(0, 0), tile.size);
                        const ResizeGeometry::Plan centred = ResizeGeometry::plan(full, target, ResizeGeometry::ResizeCrop);
                        const QRectF centreCrop(centred.source.x(), full.height() - centred.source.bottom(),
                                                centred.source.width(), centred.source.height());
                        const QRectF smartCrop = PhotoFraming::forAlignment(ResizeGeometry::ResizeSmart, PhotoFraming(), found)
                                                     .cropRect(full, tile.size);
                        const bool c = centreCrop.contains(subject);
                        const bool s = smartCrop.contains(subject);
                        if (!s && qEnvironmentVariableIsSet("FRAMING_DEBUG"))
                            std::fprintf(stderr, "%s %s %s tile: subject %.0f,%.0f %.0fx%.0f found %.0f,%.0f crop %.0f,%.0f %.0fx%.0f\n",
                                         subjectName(kind), textured ? "textured" : "plain", tile.name, subject.x(), subject.y(),
                                         subject.width(), subject.height(), found.x() * full.width(), found.y() * full.height(),
                                         smartCrop.x(), smartCrop.y(), smartCrop.width(), smartCrop.height());
                        all.add(c, s);
                        const QString orientation = size == landscape ? QStringLiteral("landscape") : QStringLiteral("portrait");
                        tallyFor(QString::fromLatin1(subjectName(kind))).add(c, s);
                        tallyFor(textured ? QStringLiteral("textured background") : QStringLiteral("plain background")).add(c, s);
                        tallyFor(orientation + QStringLiteral(" photo")).add(c, s);
                        tallyFor(QString::fromLatin1(tile.name) + QStringLiteral(" tile")).add(c, s);
                    }
                }
            }
        }
    }

    QTextStream out(stdout);
    out << "Subjects kept wholly inside the crop (" << photoNumber << " photos x 3 tile shapes)\n";
    out << QStringLiteral("%1 %2 %3\n").arg(QStringLiteral("set"), -22).arg(QStringLiteral("centre"), -20).arg(QStringLiteral("Smart"));
    for (const auto &[name, t] : byKind)
        out << QStringLiteral("%1 %2 %3\n").arg(name, -22).arg(share(t.centre, t.total), -20).arg(share(t.smart, t.total));
    out << QStringLiteral("%1 %2 %3\n").arg(QStringLiteral("all"), -22).arg(share(all.centre, all.total), -20).arg(share(all.smart, all.total));
    const UIImage reducedSize = UIImage(QImage(landscape, QImage::Format_RGB32)).scaleToUnderMegaPixels(ImageCache::kMegaPixels);
    out << QStringLiteral("Smart per photo on the reduced copy (%1 x %2 and %2 x %1 pixels):\n")
               .arg(reducedSize.pixelsWide())
               .arg(reducedSize.pixelsHigh());
    for (auto [name, list] : {std::pair<const char *, std::vector<double> *>{"wall clock", &times}, {"processor", &cpuTimes}}) {
        std::sort(list->begin(), list->end());
        double sum = 0;
        for (double t : *list)
            sum += t;
        out << QStringLiteral("  %1: mean %2 ms, median %3 ms, max %4 ms\n")
                   .arg(QLatin1String(name))
                   .arg(sum / list->size(), 0, 'f', 2)
                   .arg((*list)[list->size() / 2], 0, 'f', 2)
                   .arg(list->back(), 0, 'f', 2);
    }
    return 0;
}

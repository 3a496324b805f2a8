// libvips (through glib) uses the word "signals", which Qt defines as a macro: it comes first.
#include <vips/vips8>

#include "PhotoBlender.h"

#include "ImageFileReader.h"

#include <QFile>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <mutex>
#include <vector>

using vips::VError;
using vips::VImage;

namespace {

// A correlation peak counts as a join only when it is this good, stands this far above every
// place more than a few pixels away (a smooth ramp or a flat field correlates about as well
// everywhere, so it cannot place a join), and the matched strip has this much texture.
// Thresholds found on synthetic panoramas and on unrelated photos (see the tests).
constexpr double kMinScore = 0.92;
constexpr double kMinDistinct = 0.02;
constexpr int kDistinctRadius = 3;
constexpr double kMinTexture = 4.0;
// The first search runs on copies this many pixels across; the join is then refined at full
// size near the place found.
constexpr int kCoarseSide = 128;

void ensureVips()
{
    static std::once_flag once;
    std::call_once(once, [] {
        VIPS_INIT("tessary");
        // Every blend works on new pictures: keeping finished operations around only holds
        // memory.
        vips_cache_set_max(0);
    });
}

// Pictures with transparency travel as four bands (RGBA, not premultiplied), others as three.
// Transparent pixels are all zero, which the feathered join treats as no picture: where a
// photo is transparent its neighbour shows, and what no photo covers stays transparent.
VImage fromQImage(const QImage &image)
{
    const bool alpha = image.hasAlphaChannel();
    const QImage rgb = image.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    const int w = rgb.width(), h = rgb.height(), bands = alpha ? 4 : 3;
    const qsizetype row = qsizetype(w) * bands;
    QByteArray packed(row * h, Qt::Uninitialized);
    for (int y = 0; y < h; ++y)
        memcpy(packed.data() + y * row, rgb.constScanLine(y), size_t(row));
    VipsImage *copy = vips_image_new_from_memory_copy(packed.constData(), size_t(packed.size()), w, h, bands, VIPS_FORMAT_UCHAR);
    if (!copy)
        throw VError();
    return VImage(copy).copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

QImage toQImage(const VImage &image)
{
    size_t size = 0;
    void *data = image.write_to_memory(&size);
    if (!data)
        return {};
    const bool alpha = image.bands() == 4;
    return QImage(static_cast<uchar *>(data), image.width(), image.height(), qsizetype(image.width()) * image.bands(),
                  alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888, [](void *p) { g_free(p); }, data);
}

// Three 8-bit bands of sRGB, upright, plus the alpha band when the picture has one.
VImage normalised(VImage in)
{
    in = in.autorot();
    if (in.interpretation() != VIPS_INTERPRETATION_sRGB || in.format() != VIPS_FORMAT_UCHAR)
        in = in.colourspace(VIPS_INTERPRETATION_sRGB);
    const int bands = in.has_alpha() ? 4 : 3;
    if (in.bands() > bands)
        in = in.extract_band(0, VImage::option()->set("n", bands));
    if (in.format() != VIPS_FORMAT_UCHAR)
        in = in.cast(VIPS_FORMAT_UCHAR);
    return in;
}

// When any photo has transparency, every photo gets an alpha band (opaque where it had none).
void matchBands(std::vector<VImage> &photos)
{
    const bool alpha = std::any_of(photos.begin(), photos.end(), [](const VImage &p) { return p.bands() == 4; });
    if (!alpha)
        return;
    for (VImage &p : photos) {
        if (p.bands() == 3)
            p = p.bandjoin_const({255});
    }
}

VImage scaled(const VImage &in, int percent)
{
    const int p = std::clamp(percent, 1, 400);
    return p == 100 ? in : in.resize(p / 100.0);
}

// The green band stands for brightness in the search: close to it, and free to take.
VImage grey(const VImage &in)
{
    return in.bands() >= 3 ? in.extract_band(1) : in;
}

// Rows become columns: a join below becomes a join to the right.
VImage transposed(const VImage &in)
{
    return in.rot(VIPS_ANGLE_D90).flip(VIPS_DIRECTION_HORIZONTAL);
}

QImage preview(const VImage &in)
{
    return toQImage(in.thumbnail_image(320, VImage::option()->set("height", 320)));
}

// Where `patch` fits best inside `region`: its top-left corner, the correlation there and
// the best correlation farther than `distinctRadius` pixels from it.
struct Peak {
    int x = 0, y = 0;
    double score = -1, runnerUp = -1;
};

Peak bestPlace(const VImage &region, const VImage &patch, int distinctRadius)
{
    const int pw = patch.width(), ph = patch.height();
    const int vw = region.width() - pw + 1, vh = region.height() - ph + 1;
    Peak peak;
    if (vw <= 0 || vh <= 0)
        return peak;
    // The correlation image is centred on the patch; keep the places where all of it lies
    // inside the region.
    const VImage corr = region.spcor(patch).extract_area(pw / 2, ph / 2, vw, vh).cast(VIPS_FORMAT_FLOAT);
    size_t size = 0;
    auto *c = static_cast<float *>(corr.write_to_memory(&size));
    const auto at = [&](int x, int y) {
        const float v = c[size_t(y) * vw + x];
        return std::isfinite(v) ? double(v) : -1.0;
    };
    for (int y = 0; y < vh; ++y)
        for (int x = 0; x < vw; ++x)
            if (at(x, y) > peak.score)
                peak = {x, y, at(x, y), -1};
    for (int y = 0; y < vh; ++y)
        for (int x = 0; x < vw; ++x)
            if (std::abs(x - peak.x) > distinctRadius || std::abs(y - peak.y) > distinctRadius)
                peak.runnerUp = std::max(peak.runnerUp, at(x, y));
    g_free(c);
    return peak;
}

// A part of one of the two photos, grey: whether of the first, then x, y, width, height.
using AreaOf = std::function<VImage(bool first, int x, int y, int w, int h)>;

// Moves `guess` (the second photo's top-left in the first's coordinates, good to within
// `reach` pixels) to where the most textured strip along the second's left edge fits best in
// the first. False, and the guess left, when there is nothing to fit or the fit is poor.
bool refineJoin(const AreaOf &area, QSize first, QSize second, QPoint *guess, int reach)
{
    const int wb = second.width(), hb = second.height();
    const int pw = std::min(wb, std::clamp(wb / 8, 16, 64));
    const int ph = std::min(hb, std::clamp(hb / 4, 16, 128));
    int py = -1;
    double texture = kMinTexture;
    for (int k = 1; k <= 9; ++k) {
        const int y = std::clamp(hb * k / 10 - ph / 2, 0, hb - ph);
        if (guess->y() + y - reach < 0 || guess->y() + y + ph + reach > first.height())
            continue;
        const double d = area(false, 0, y, pw, ph).deviate();
        if (d > texture) {
            texture = d;
            py = y;
        }
    }
    if (py < 0)
        return false;
    const int x0 = std::max(0, guess->x() - reach), y0 = std::max(0, guess->y() + py - reach);
    const int x1 = std::min(first.width() - pw, guess->x() + reach);
    const int y1 = std::min(first.height() - ph, guess->y() + py + reach);
    if (x1 < x0 || y1 < y0)
        return false;
    const Peak fit = bestPlace(area(true, x0, y0, x1 - x0 + pw, y1 - y0 + ph), area(false, 0, py, pw, ph), kDistinctRadius);
    if (fit.score < kMinScore)
        return false;
    *guess = QPoint(x0 + fit.x, y0 + fit.y - py);
    return true;
}

// How the search reaches a photo that is being read as a stream (once, in order, while the
// picture is made): a copy in memory, and a small copy of about a given size (decoded at a
// reduced scale where the format allows). Empty functions: the photo itself is in memory.
struct Source {
    std::function<VImage()> full;
    std::function<VImage(QSize)> shrunk;
};

// A photo as the join search sees it: a grey copy shrunk by a whole factor to the coarse
// search's size (rows as columns when the search runs downward), made once however many joins
// the photo takes part in; a copy eight times larger and the full photo are reached only when
// the coarse search found a join to refine.
struct SearchCopy {
    VImage photo;
    const Source *source = nullptr;
    VImage coarse;
    int shrink = 1;
    bool transpose = false;
    mutable VImage full;
    mutable VImage medium;
    mutable int mediumShrink = 0;

    QSize size() const { return transpose ? QSize(photo.height(), photo.width()) : QSize(photo.width(), photo.height()); }
    const VImage &fullPhoto() const
    {
        if (full.is_null())
            full = source && source->full ? source->full() : photo;
        return full;
    }
    VImage turned(const VImage &in) const { return transpose ? transposed(in) : in; }
    VImage shrunk(int factor) const
    {
        if (factor > 1 && source && source->shrunk)
            return turned(grey(source->shrunk(QSize(photo.width() / factor, photo.height() / factor)))).copy_memory();
        const VImage g = grey(fullPhoto());
        return turned(factor > 1 ? g.shrink(factor, factor) : g).copy_memory();
    }
    const VImage &mediumCopy() const
    {
        if (mediumShrink == 0) {
            mediumShrink = std::max(1, shrink / 8);
            medium = shrunk(mediumShrink);
        }
        return medium;
    }
    // A part of the full photo, grey, in the search's orientation.
    VImage cut(int x, int y, int w, int h) const
    {
        const VImage &f = fullPhoto();
        return grey(transpose ? transposed(f.extract_area(y, x, h, w)) : f.extract_area(x, y, w, h)).copy_memory();
    }
};

SearchCopy searchCopy(const VImage &photo, const Source *source, int shrink, bool transpose)
{
    SearchCopy copy{photo, source, VImage(), shrink, transpose, VImage(), VImage(), 0};
    copy.coarse = copy.shrunk(shrink);
    return copy;
}

// The whole factor that brings the longest side across a chain of photos (their heights, or
// their widths when the chain runs downward) to about the coarse search's size.
int searchShrink(const std::vector<VImage> &photos, bool vertical)
{
    int across = 1;
    for (const VImage &p : photos)
        across = std::max(across, vertical ? p.width() : p.height());
    return std::max(1, int(std::lround(double(across) / kCoarseSide)));
}

// Where `b` shows the right-hand part of `a` (in the search's orientation): b's top-left in
// a's coordinates. Looked for on the coarse copies, then refined on copies eight times larger
// and at full size near the place found.
bool matchToTheRight(const SearchCopy &a, const SearchCopy &b, QPoint *offset)
{
    const QSize sa = a.size(), sb = b.size();
    if (std::min({sa.width(), sa.height(), sb.width(), sb.height()}) < 32)
        return false;

    // Coarse: a strip of b's left edge searched in the right three quarters of a.
    const VImage &as = a.coarse, &bs = b.coarse;
    const int was = as.width(), has = as.height(), wbs = bs.width(), hbs = bs.height();
    const int pw = std::clamp(wbs / 5, 6, 64), ph = std::max(8, hbs * 4 / 5), py = (hbs - ph) / 2;
    if (pw > wbs || ph > hbs || ph > has || was < 8)
        return false;
    const VImage patch = bs.extract_area(0, py, pw, ph);
    if (patch.deviate() < kMinTexture)
        return false;
    const int rx = was / 4;
    const Peak coarse = bestPlace(as.extract_area(rx, 0, was - rx, has), patch, std::max(kDistinctRadius, pw / 4));
    if (coarse.score < kMinScore || coarse.score - coarse.runnerUp < kMinDistinct)
        return false;

    QPoint place(rx + coarse.x, coarse.y - py);
    int scale = a.shrink; // full-size pixels per pixel of `place`
    const int medium = std::max(1, a.shrink / 8);
    if (medium < scale) {
        const VImage &am = a.mediumCopy(), &bm = b.mediumCopy();
        const AreaOf area = [&](bool first, int x, int y, int w, int h) { return (first ? am : bm).extract_area(x, y, w, h); };
        place = place * scale / medium;
        refineJoin(area, QSize(am.width(), am.height()), QSize(bm.width(), bm.height()), &place, scale / medium + 2);
        scale = medium;
    }
    if (scale > 1) {
        const AreaOf area = [&](bool first, int x, int y, int w, int h) { return (first ? a : b).cut(x, y, w, h); };
        place *= scale;
        refineJoin(area, sa, sb, &place, scale + 2);
    }
    *offset = place;
    return true;
}

PhotoBlender::Join fixedJoin(const VImage &first, const VImage &second, bool vertical, int margin)
{
    PhotoBlender::Join join;
    if (vertical) {
        const int m = std::clamp(margin, 0, std::min(first.height(), second.height()) - 1);
        join.offset = QPoint((first.width() - second.width()) / 2, first.height() - m);
    } else {
        const int m = std::clamp(margin, 0, std::min(first.width(), second.width()) - 1);
        join.offset = QPoint(first.width() - m, (first.height() - second.height()) / 2);
    }
    return join;
}

PhotoBlender::Join joinOf(const SearchCopy *first, const SearchCopy *second, const VImage &a, const VImage &b,
                          bool vertical, int margin)
{
    QPoint found;
    if (first && second && matchToTheRight(*first, *second, &found))
        return {vertical ? QPoint(found.y(), found.x()) : found, true};
    return fixedJoin(a, b, vertical, margin);
}

// The photos placed at their positions (top-left corners, in one coordinate space, each to the
// right of or below the one before), feathered over at most `blend` pixels where they overlap.
VImage assemble(const std::vector<VImage> &photos, const std::vector<QPoint> &positions, bool vertical, int blend)
{
    VImage mosaic = photos[0];
    QPoint origin = positions[0];
    for (size_t i = 1; i < photos.size(); ++i) {
        const QPoint at = positions[i] - origin;
        const int overlap = vertical ? mosaic.height() - at.y() : mosaic.width() - at.x();
        if (overlap > 0) {
            mosaic = mosaic.merge(photos[i], vertical ? VIPS_DIRECTION_VERTICAL : VIPS_DIRECTION_HORIZONTAL,
                                  -at.x(), -at.y(), VImage::option()->set("mblend", std::max(blend, 1)));
        } else {
            // Side by side without overlap: a canvas holding both.
            const int left = std::min(0, at.x()), top = std::min(0, at.y());
            const int w = std::max(mosaic.width(), at.x() + photos[i].width()) - left;
            const int h = std::max(mosaic.height(), at.y() + photos[i].height()) - top;
            mosaic = mosaic.embed(-left, -top, w, h).insert(photos[i], at.x() - left, at.y() - top);
        }
        origin = QPoint(std::min(origin.x(), positions[i].x()), std::min(origin.y(), positions[i].y()));
    }
    return mosaic;
}

struct Stages {
    const PhotoBlender::Progress &progress;
    void message(const QString &m) const
    {
        if (progress.message)
            progress.message(m);
    }
    void fraction(double f) const
    {
        if (progress.fraction)
            progress.fraction(f);
    }
    void image(const VImage &in) const
    {
        if (progress.image)
            progress.image(preview(in));
    }
};

// One chain of photos joined in order, each to the right of (or below) the one before.
VImage chain(const std::vector<VImage> &photos, const std::vector<Source> *sources, bool vertical,
             const PhotoBlender::Options &options, const Stages &stages, int *pairsDone, int pairs)
{
    std::vector<QPoint> positions{QPoint(0, 0)};
    std::vector<SearchCopy> copies;
    if (options.findJoins && photos.size() > 1) {
        const int shrink = searchShrink(photos, vertical);
        for (size_t i = 0; i < photos.size(); ++i)
            copies.push_back(searchCopy(photos[i], sources ? &(*sources)[i] : nullptr, shrink, vertical));
    }
    for (size_t i = 1; i < photos.size(); ++i) {
        stages.message(QObject::tr("Matching photo %1 of %2…").arg(*pairsDone + 2).arg(pairs + 1));
        const bool search = !copies.empty();
        const PhotoBlender::Join join = joinOf(search ? &copies[i - 1] : nullptr, search ? &copies[i] : nullptr,
                                               photos[i - 1], photos[i], vertical, options.blendingMarginWidth);
        positions.push_back(positions.back() + join.offset);
        ++*pairsDone;
        stages.fraction(0.25 + 0.15 * *pairsDone / std::max(1, pairs));
    }
    return assemble(photos, positions, vertical, options.blendingMarginWidth);
}

struct EvalState {
    const Stages *stages;
    std::atomic<int> last{-1};
};

void onEval(VipsImage *, VipsProgress *progress, void *user)
{
    auto *state = static_cast<EvalState *>(user);
    if (state->last.exchange(progress->percent) != progress->percent)
        state->stages->fraction(0.4 + 0.59 * progress->percent / 100.0);
}

QImage blendLoaded(std::vector<VImage> photos, std::vector<Source> sources, PhotoBlender::Arrangement arrangement,
                   const PhotoBlender::Options &options, const Stages &stages)
{
    const std::vector<Source> *reach = sources.empty() ? nullptr : &sources;
    using A = PhotoBlender::Arrangement;
    VImage mosaic;
    int done = 0;
    if (arrangement == A::Square) {
        const int side = PhotoBlender::squareSide(qsizetype(photos.size()));
        if (side == 0)
            return {};
        const int pairs = side * (side - 1) + (side - 1);
        std::vector<VImage> rows;
        for (int r = 0; r < side; ++r) {
            const std::vector<VImage> row(photos.begin() + r * side, photos.begin() + (r + 1) * side);
            std::vector<Source> rowSources;
            if (reach)
                rowSources.assign(sources.begin() + r * side, sources.begin() + (r + 1) * side);
            // Each row is made once, then searched and joined with its neighbours.
            rows.push_back(chain(row, reach ? &rowSources : nullptr, false, options, stages, &done, pairs).copy_memory());
        }
        photos.clear();
        mosaic = chain(rows, nullptr, true, options, stages, &done, pairs);
    } else {
        const bool vertical = arrangement == A::BottomToTop;
        // Bottom to top: the first photo is the lowest, so the chain runs from the last down.
        if (vertical) {
            std::reverse(photos.begin(), photos.end());
            std::reverse(sources.begin(), sources.end());
        }
        mosaic = chain(photos, reach, vertical, options, stages, &done, int(photos.size()) - 1);
    }

    stages.message(QObject::tr("Blending…"));
    VImage out = mosaic.format() == VIPS_FORMAT_UCHAR ? mosaic.copy() : mosaic.cast(VIPS_FORMAT_UCHAR);
    EvalState state{&stages};
    vips_image_set_progress(out.get_image(), TRUE);
    g_signal_connect(out.get_image(), "eval", G_CALLBACK(onEval), &state);
    QImage picture = toQImage(out);
    stages.fraction(1.0);
    stages.message(QObject::tr("Done."));
    if (stages.progress.image && !picture.isNull())
        stages.progress.image(picture.scaled(320, 320, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    return picture;
}

} // namespace

qsizetype PhotoBlender::photosUsed(Arrangement arrangement, qsizetype count)
{
    if (arrangement != Arrangement::Square)
        return count;
    const int side = squareSide(count);
    return qsizetype(side) * side;
}

int PhotoBlender::squareSide(qsizetype count)
{
    return count >= 16 ? 4 : count >= 9 ? 3 : count >= 4 ? 2 : 0;
}

QImage PhotoBlender::blend(const QStringList &files, Arrangement arrangement, const Options &options,
                           const Progress &progress)
{
    ensureVips();
    const Stages stages{progress};
    const int percent = options.inputImageScaling;
    const auto open = [percent](const QString &path, VipsAccess access) {
        const VImage file = VImage::new_from_file(QFile::encodeName(path).constData(), VImage::option()->set("access", access));
        // Only the header is read so far: pictures claiming more pixels than any photo are
        // refused before a pixel is decoded, as everywhere else.
        if (qint64(file.width()) * file.height() > ImageFileReader::MaxPixels)
            throw VError("too many pixels");
        return scaled(normalised(file), percent);
    };
    const auto shrunkCopy = [](const QString &path, QSize size) {
        return normalised(VImage::thumbnail(QFile::encodeName(path).constData(), std::max(1, size.width()),
                                            VImage::option()->set("height", std::max(1, size.height()))->set("size", VIPS_SIZE_FORCE)));
    };

    // Each photo is opened as a stream: it is decoded while the picture is made, all of them
    // at once on libvips' threads, and never held whole in memory. A photo that must be turned
    // upright cannot be streamed and is read whole. The search reaches the photos through
    // reduced copies and, only when it refines a join, a whole copy.
    std::vector<VImage> photos;
    std::vector<Source> sources;
    QStringList paths;
    const qsizetype used = photosUsed(arrangement, files.size());
    for (qsizetype i = 0; i < used; ++i) {
        const QString path = files[i];
        stages.message(QObject::tr("Reading photo %1 of %2…").arg(i + 1).arg(used));
        try {
            VImage photo = open(path, VIPS_ACCESS_SEQUENTIAL);
            const VImage header = VImage::new_from_file(QFile::encodeName(path).constData());
            if (vips_image_get_orientation(header.get_image()) > 1)
                photo = open(path, VIPS_ACCESS_RANDOM).copy_memory();
            photos.push_back(photo);
            paths.append(path);
            sources.push_back({[open, path] { return open(path, VIPS_ACCESS_RANDOM).copy_memory(); },
                               [shrunkCopy, path](QSize size) { return shrunkCopy(path, size); }});
            if (progress.image)
                progress.image(toQImage(shrunkCopy(path, QSize(photo.width(), photo.height()) * (320.0 / std::max(photo.width(), photo.height())))));
        } catch (const VError &) {
            // A photo that cannot be read is left out.
        }
        stages.fraction(0.25 * double(i + 1) / double(used));
    }
    const qsizetype usable = photosUsed(arrangement, qsizetype(photos.size()));
    if (usable == 0)
        return {};
    photos.resize(size_t(usable));
    sources.resize(size_t(usable));
    try {
        matchBands(photos);
        return blendLoaded(photos, sources, arrangement, options, stages);
    } catch (const VError &) {
        // A stream read out of order: read every photo whole and blend again.
    }
    try {
        std::vector<VImage> whole;
        for (qsizetype i = 0; i < usable; ++i)
            whole.push_back(open(paths[i], VIPS_ACCESS_RANDOM).copy_memory());
        matchBands(whole);
        return blendLoaded(std::move(whole), {}, arrangement, options, stages);
    } catch (const VError &) {
        return {};
    }
}

QImage PhotoBlender::blendImages(const QList<QImage> &pictures, Arrangement arrangement, const Options &options,
                                 const Progress &progress)
{
    ensureVips();
    const Stages stages{progress};
    try {
        std::vector<VImage> photos;
        for (const QImage &picture : pictures) {
            if (!picture.isNull())
                photos.push_back(scaled(fromQImage(picture), options.inputImageScaling).copy_memory());
        }
        const qsizetype used = photosUsed(arrangement, qsizetype(photos.size()));
        if (used == 0)
            return {};
        photos.resize(size_t(used));
        matchBands(photos);
        return blendLoaded(std::move(photos), {}, arrangement, options, stages);
    } catch (const VError &) {
        return {};
    }
}

PhotoBlender::Join PhotoBlender::findJoin(const QImage &first, const QImage &second, bool vertical, int margin)
{
    ensureVips();
    try {
        const std::vector<VImage> pair{fromQImage(first), fromQImage(second)};
        const int shrink = searchShrink(pair, vertical);
        const SearchCopy a = searchCopy(pair[0], nullptr, shrink, vertical), b = searchCopy(pair[1], nullptr, shrink, vertical);
        return joinOf(&a, &b, pair[0], pair[1], vertical, margin);
    } catch (const VError &) {
        return {};
    }
}

PhotoBlender::PhotoBlender(QObject *parent)
    : QObject(parent)
{
    m_pool.setMaxThreadCount(1);
}

PhotoBlender::~PhotoBlender()
{
    waitForFinished();
}

void PhotoBlender::start(const QStringList &files, Arrangement arrangement, const Options &options,
                         std::function<QStringList(const QStringList &)> prepare)
{
    m_running = QtConcurrent::run(&m_pool, [this, files, arrangement, options, prepare] {
        const Progress progress{
            [this](const QString &m) { emit progressMessage(m); },
            [this](double f) { emit progressFraction(f); },
            [this](const QImage &i) { emit progressImage(i); },
        };
        QStringList toBlend = files;
        if (prepare) {
            emit progressMessage(tr("Bringing the photos to one size…"));
            toBlend = prepare(files);
        }
        emit finished(blend(toBlend, arrangement, options, progress));
    });
}

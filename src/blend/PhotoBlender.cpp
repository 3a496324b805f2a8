// libvips (through glib) uses the word "signals", which Qt defines as a macro: it comes first.
#include <vips/vips8>

#include "PhotoBlender.h"

#include "images/ImageFileReader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>
#include <QRect>
#include <QTemporaryDir>
#include <QUuid>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cmath>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
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
// The side of the previews shown while the work goes on.
constexpr int kPreviewSide = 320;

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

// The blend was cancelled between two steps.
struct Canceled {};

// The cancel check of the blend running on this thread. Every picture the blend computes is
// watched through it, so a cancel stops libvips in the middle of a computation too.
thread_local const std::function<bool()> *tCanceled = nullptr;

void killWhenCanceled(VipsImage *image, VipsProgress *, void *user)
{
    if ((*static_cast<const std::function<bool()> *>(user))())
        vips_image_set_kill(image, TRUE);
}

// `in` as a new picture whose computation stops (with an error) once the blend is cancelled.
VImage watched(const VImage &in)
{
    VImage out = in.copy();
    if (tCanceled && *tCanceled) {
        vips_image_set_progress(out.get_image(), TRUE);
        g_signal_connect(out.get_image(), "eval", G_CALLBACK(killWhenCanceled),
                         const_cast<std::function<bool()> *>(tCanceled));
    }
    return out;
}

VImage materialised(const VImage &in)
{
    return watched(in).copy_memory();
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
VImage normalised(VImage in, bool upright = false)
{
    if (!upright)
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


// `in` at exactly `target` pixels (both directions scaled on their own).
VImage resizedTo(const VImage &in, QSize target)
{
    if (in.width() == target.width() && in.height() == target.height())
        return in;
    const bool alpha = in.bands() == 4;
    VImage out = alpha ? in.premultiply() : in;
    out = out.resize(double(target.width()) / in.width(),
                     VImage::option()->set("vscale", double(target.height()) / in.height()));
    if (alpha)
        out = out.unpremultiply();
    if (out.format() != VIPS_FORMAT_UCHAR)
        out = out.cast(VIPS_FORMAT_UCHAR);
    if (out.width() != target.width() || out.height() != target.height())
        out = out.embed(0, 0, target.width(), target.height(), VImage::option()->set("extend", VIPS_EXTEND_COPY));
    return out;
}

// When any picture has transparency, every one gets an alpha band (opaque where it had none).
void matchBands(std::vector<VImage> &pictures)
{
    if (std::none_of(pictures.begin(), pictures.end(), [](const VImage &p) { return p.bands() == 4; }))
        return;
    for (VImage &p : pictures) {
        if (p.bands() == 3)
            p = p.bandjoin_const({255});
    }
}

// One photo as the blend reads it: its upright size, the part of it that is used (all of it
// less fully transparent borders) and how to read a part of it at a given size.
struct Photo {
    QSize upright;
    QRect used;
    bool alpha = false;
    // The part `source` (upright pixels) at `target` pixels; `random` when it will be read
    // more than once.
    std::function<VImage(const QRect &source, QSize target, bool random)> load;
};

// A photo with an alpha band: the part inside its fully transparent borders, and whether
// that part is all opaque (its alpha band can then be dropped).
void trimTransparentBorders(Photo &photo)
{
    const VImage alpha = materialised(photo.load(photo.used, photo.upright, true).extract_band(3));
    int top = 0, width = 0, height = 0;
    const int left = alpha.find_trim(&top, &width, &height,
                                     VImage::option()->set("background", std::vector<double>{0})->set("threshold", 0.5));
    photo.used = width > 0 && height > 0 ? QRect(left, top, width, height) : QRect();
    if (!photo.used.isEmpty())
        photo.alpha = alpha.extract_area(left, top, width, height).min() < 255;
}

VImage withBands(VImage in, bool alpha)
{
    return !alpha && in.bands() == 4 ? in.extract_band(0, VImage::option()->set("n", 3)) : in;
}

VImage loadFile(const QByteArray &name, QSize upright, bool rotated, bool alpha, const QRect &source, QSize target,
                bool random)
{
    const bool whole = source == QRect(QPoint(0, 0), upright);
    if (whole && target.width() * 2 <= upright.width() && target.height() * 2 <= upright.height()) {
        // Much smaller than the photo: decoded at a reduced scale where the format allows.
        const VImage small = VImage::thumbnail(name.constData(), target.width(),
                                               VImage::option()->set("height", target.height())->set("size", VIPS_SIZE_FORCE));
        return withBands(resizedTo(normalised(small, true), target), alpha);
    }
    // A photo that must be turned upright cannot be read as a stream.
    const VImage file = VImage::new_from_file(
        name.constData(), VImage::option()->set("access", random || rotated ? VIPS_ACCESS_RANDOM : VIPS_ACCESS_SEQUENTIAL));
    VImage in = normalised(file);
    if (!whole)
        in = in.extract_area(source.x(), source.y(), source.width(), source.height());
    return withBands(resizedTo(in, target), alpha);
}

// Only the header is read here. Pictures claiming more pixels than any photo are refused
// before a pixel is decoded, as everywhere else.
Photo filePhoto(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    const VImage header = VImage::new_from_file(name.constData());
    if (qint64(header.width()) * header.height() > ImageFileReader::MaxPixels)
        throw VError("too many pixels");
    const int orientation = vips_image_get_orientation(header.get_image());
    Photo photo;
    photo.upright = orientation >= 5 ? QSize(header.height(), header.width()) : QSize(header.width(), header.height());
    photo.used = QRect(QPoint(0, 0), photo.upright);
    photo.alpha = header.has_alpha();
    const auto loader = [name, upright = photo.upright, rotated = orientation > 1](bool alpha) {
        return [=](const QRect &source, QSize target, bool random) {
            return loadFile(name, upright, rotated, alpha, source, target, random);
        };
    };
    photo.load = loader(true);
    if (photo.alpha) {
        trimTransparentBorders(photo);
        photo.load = loader(photo.alpha);
    }
    return photo;
}

Photo imagePhoto(const QImage &image)
{
    const VImage picture = fromQImage(image).copy_memory();
    Photo photo;
    photo.upright = image.size();
    photo.used = QRect(QPoint(0, 0), photo.upright);
    photo.alpha = picture.bands() == 4;
    const auto loader = [picture](bool alpha) {
        return [=](const QRect &source, QSize target, bool) {
            return withBands(resizedTo(picture.extract_area(source.x(), source.y(), source.width(), source.height()), target), alpha);
        };
    };
    photo.load = loader(true);
    if (photo.alpha) {
        trimTransparentBorders(photo);
        photo.load = loader(photo.alpha);
    }
    return photo;
}

QImage previewOf(const Photo &photo)
{
    const QSize size = photo.used.size().scaled(kPreviewSide, kPreviewSide, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    return toQImage(materialised(photo.load(photo.used, size, false)));
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
            return materialised(turned(grey(source->shrunk(QSize(photo.width() / factor, photo.height() / factor)))));
        const VImage g = grey(fullPhoto());
        return materialised(turned(factor > 1 ? g.shrink(factor, factor) : g));
    }
    const VImage &mediumCopy() const
    {
        if (mediumShrink == 0) {
            mediumShrink = std::max(1, shrink / 8);
            medium = shrunk(mediumShrink);
        }
        return medium;
    }
    // The large copies are only needed while this photo's joins are looked for.
    void release() const
    {
        full = VImage();
        medium = VImage();
        mediumShrink = 0;
    }
    // A part of the full photo, grey, in the search's orientation.
    VImage cut(int x, int y, int w, int h) const
    {
        const VImage &f = fullPhoto();
        return materialised(grey(transpose ? transposed(f.extract_area(y, x, h, w)) : f.extract_area(x, y, w, h)));
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


PhotoBlender::Join fixedJoin(QSize first, QSize second, bool vertical, int margin)
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

QSize sizeOf(const VImage &in)
{
    return QSize(in.width(), in.height());
}

PhotoBlender::Join joinOf(const SearchCopy *first, const SearchCopy *second, QSize a, QSize b, bool vertical, int margin)
{
    QPoint found;
    if (first && second && matchToTheRight(*first, *second, &found))
        return {vertical ? QPoint(found.y(), found.x()) : found, true};
    return fixedJoin(a, b, vertical, margin);
}

// The pictures placed at their positions (top-left corners, in one coordinate space, each to
// the right of or below the one before), feathered across the whole of each overlap, then cut
// to the band that every picture covers, so a join found a little higher or lower leaves no
// empty corner.
VImage assemble(std::vector<VImage> pictures, const std::vector<QPoint> &positions, bool vertical)
{
    matchBands(pictures);
    VImage mosaic = pictures[0];
    QPoint origin = positions[0];
    int bandStart = vertical ? positions[0].x() : positions[0].y();
    int bandEnd = bandStart + (vertical ? pictures[0].width() : pictures[0].height());
    for (size_t i = 1; i < pictures.size(); ++i) {
        const QPoint at = positions[i] - origin;
        const int overlap = vertical ? mosaic.height() - at.y() : mosaic.width() - at.x();
        if (overlap > 0) {
            mosaic = mosaic.merge(pictures[i], vertical ? VIPS_DIRECTION_VERTICAL : VIPS_DIRECTION_HORIZONTAL,
                                  -at.x(), -at.y(), VImage::option()->set("mblend", overlap));
        } else {
            // Side by side without overlap: a canvas holding both.
            const int left = std::min(0, at.x()), top = std::min(0, at.y());
            const int w = std::max(mosaic.width(), at.x() + pictures[i].width()) - left;
            const int h = std::max(mosaic.height(), at.y() + pictures[i].height()) - top;
            mosaic = mosaic.embed(-left, -top, w, h).insert(pictures[i], at.x() - left, at.y() - top);
        }
        origin = QPoint(std::min(origin.x(), positions[i].x()), std::min(origin.y(), positions[i].y()));
        const int start = vertical ? positions[i].x() : positions[i].y();
        bandStart = std::max(bandStart, start);
        bandEnd = std::min(bandEnd, start + (vertical ? pictures[i].width() : pictures[i].height()));
    }
    const int from = bandStart - (vertical ? origin.x() : origin.y());
    const int across = bandEnd - bandStart;
    if (across <= 0 || (from == 0 && across == (vertical ? mosaic.width() : mosaic.height())))
        return mosaic;
    return vertical ? mosaic.extract_area(from, 0, across, mosaic.height())
                    : mosaic.extract_area(0, from, mosaic.width(), across);
}

struct Stages {
    const PhotoBlender::Progress &progress;
    // A second line kept under every message (that the picture was scaled to the limit).
    QString note;

    void message(const QString &m) const
    {
        if (progress.message)
            progress.message(note.isEmpty() ? m : m + QLatin1Char('\n') + note);
    }
    void fraction(double f) const
    {
        if (progress.fraction)
            progress.fraction(f);
    }
    void image(const QImage &preview) const
    {
        if (progress.image && !preview.isNull())
            progress.image(preview);
    }
    bool canceled() const { return progress.canceled && progress.canceled(); }
    void check() const
    {
        if (canceled())
            throw Canceled();
    }
};

// Stages of the work on the bar: reading the photos, then joining them, then making the
// picture.
constexpr double kReadEnd = 0.15;
constexpr double kJoinEnd = 0.4;

// How the search reaches each picture of a chain; empty when it is in memory.
using Sources = std::vector<Source>;

// One chain of pictures joined in order, each to the right of (or below) the one before.
VImage chain(const std::vector<VImage> &pictures, const Sources *sources, bool vertical, int margin, bool findJoins,
             const Stages &stages, int *joinsDone, int joins)
{
    std::vector<QPoint> positions{QPoint(0, 0)};
    std::vector<SearchCopy> copies;
    if (findJoins && pictures.size() > 1) {
        const int shrink = searchShrink(pictures, vertical);
        for (size_t i = 0; i < pictures.size(); ++i) {
            stages.check();
            copies.push_back(searchCopy(pictures[i], sources ? &(*sources)[i] : nullptr, shrink, vertical));
        }
    }
    for (size_t i = 1; i < pictures.size(); ++i) {
        stages.check();
        stages.message(QObject::tr("Joining photo %1 of %2…").arg(*joinsDone + 2).arg(joins + 1));
        const bool search = !copies.empty();
        const PhotoBlender::Join join = joinOf(search ? &copies[i - 1] : nullptr, search ? &copies[i] : nullptr,
                                               sizeOf(pictures[i - 1]), sizeOf(pictures[i]), vertical, margin);
        if (search)
            copies[i - 1].release();
        positions.push_back(positions.back() + join.offset);
        ++*joinsDone;
        stages.fraction(kReadEnd + (kJoinEnd - kReadEnd) * *joinsDone / std::max(1, joins));
    }
    return assemble(pictures, positions, vertical);
}

// Where each photo goes: the part of it used and the size it is read at.
struct Placed {
    size_t photo = 0;
    QRect source;
    QSizeF size; // before the chain's common height or width
    QSize target;
};

// The geometry of the whole picture, from the photos' sizes alone.
struct Plan {
    // One chain (side by side, or stacked from the top down), or the rows of a square from
    // the top down.
    std::vector<std::vector<Placed>> chains;
    bool square = false;
    bool vertical = false;
    int margin = 0;
    int rowWidth = 0;           // a square's rows are brought to this width
    QSize size;                 // of the picture, with fixed joins
    double wholeMegapixels = 0; // without the limit
    bool scaled = false;
};

// Uniform sizing and the input scaling.
std::vector<Placed> sizedPhotos(const std::vector<Photo> &photos, const PhotoBlender::Options &options)
{
    QSize common(INT_MAX, INT_MAX);
    for (const Photo &p : photos)
        common = common.boundedTo(p.used.size());
    const double percent = std::clamp(options.inputImageScaling, 1, 400) / 100.0;
    std::vector<Placed> placed;
    for (size_t i = 0; i < photos.size(); ++i) {
        const QRect used = photos[i].used;
        Placed p{i, used, QSizeF(used.size()), QSize()};
        const double sx = double(common.width()) / used.width(), sy = double(common.height()) / used.height();
        if (options.uniformSize == PhotoBlender::UniformSize::Fit) {
            p.size = QSizeF(used.size()) * std::min(sx, sy);
        } else if (options.uniformSize == PhotoBlender::UniformSize::Crop) {
            const double s = std::max(sx, sy);
            const QSize part(std::clamp(int(std::lround(common.width() / s)), 1, used.width()),
                             std::clamp(int(std::lround(common.height() / s)), 1, used.height()));
            p.source = QRect(used.topLeft() + QPoint((used.width() - part.width()) / 2, (used.height() - part.height()) / 2), part);
            p.size = QSizeF(common);
        }
        p.size *= percent;
        placed.push_back(p);
    }
    return placed;
}

int fixedOverlap(int a, int b, int margin)
{
    return std::clamp(margin, 0, std::min(a, b) - 1);
}

// Brings a chain's photos to the smallest height among them (side by side) or width
// (stacked), times k; returns the chain's length with fixed joins.
int fitChain(std::vector<Placed> &chain, bool vertical, double k, int margin)
{
    double across = 1e300;
    for (const Placed &p : chain)
        across = std::min(across, vertical ? p.size.width() : p.size.height());
    const int a = std::max(1, int(std::floor(across * k + 1e-6)));
    int length = 0;
    for (size_t i = 0; i < chain.size(); ++i) {
        Placed &p = chain[i];
        const double along = (vertical ? p.size.height() / p.size.width() : p.size.width() / p.size.height()) * a;
        const int l = std::max(1, int(std::lround(along)));
        p.target = vertical ? QSize(a, l) : QSize(l, a);
        length += l;
        if (i > 0) {
            const QSize prev = chain[i - 1].target;
            length -= vertical ? fixedOverlap(prev.height(), l, margin) : fixedOverlap(prev.width(), l, margin);
        }
    }
    return length;
}

void layOut(Plan &plan, double k, int margin)
{
    plan.margin = margin;
    if (!plan.square) {
        const int length = fitChain(plan.chains[0], plan.vertical, k, margin);
        const QSize t = plan.chains[0][0].target;
        plan.size = plan.vertical ? QSize(t.width(), length) : QSize(length, t.height());
        return;
    }
    std::vector<int> widths;
    for (auto &row : plan.chains)
        widths.push_back(fitChain(row, false, k, margin));
    plan.rowWidth = *std::min_element(widths.begin(), widths.end());
    int height = 0, previous = 0;
    for (size_t r = 0; r < plan.chains.size(); ++r) {
        const int h = std::max(1, int(std::lround(double(plan.chains[r][0].target.height()) * plan.rowWidth / widths[r])));
        height += h - (r > 0 ? fixedOverlap(previous, h, margin) : 0);
        previous = h;
    }
    plan.size = QSize(plan.rowWidth, height);
}

Plan planPicture(const std::vector<Photo> &photos, PhotoBlender::Arrangement arrangement,
                 const PhotoBlender::Options &options)
{
    using A = PhotoBlender::Arrangement;
    std::vector<Placed> placed = sizedPhotos(photos, options);
    Plan plan;
    plan.square = arrangement == A::Square;
    plan.vertical = arrangement == A::BottomToTop;
    if (plan.square) {
        const int side = PhotoBlender::squareSide(qsizetype(placed.size()));
        for (int r = 0; r < side; ++r)
            plan.chains.emplace_back(placed.begin() + r * side, placed.begin() + (r + 1) * side);
    } else {
        // Bottom to top: the first photo is the lowest, so the chain runs from the last down.
        if (plan.vertical)
            std::reverse(placed.begin(), placed.end());
        plan.chains.push_back(placed);
    }
    const int margin = std::max(0, options.blendingMarginWidth);
    layOut(plan, 1.0, margin);
    plan.wholeMegapixels = double(plan.size.width()) * plan.size.height() / 1e6;
    if (options.megapixelLimit > 0 && plan.wholeMegapixels > options.megapixelLimit) {
        // Every photo is scaled before it is joined, the joins with them: the picture is made
        // at the limit and never exists larger.
        const double k = std::sqrt(options.megapixelLimit / plan.wholeMegapixels);
        layOut(plan, k, margin > 0 ? std::max(1, int(std::lround(margin * k))) : 0);
        plan.scaled = true;
    }
    return plan;
}

// A square's finished row, kept until the rows are joined: in memory, or, when larger than
// the options allow, in an uncompressed tiled TIFF in a temporary folder of the blend's own,
// read back a few tiles at a time (rows of 24-megapixel photos are about 280 MB each).
VImage keptRow(const VImage &row, const PhotoBlender::Options &options, std::optional<QTemporaryDir> *aside)
{
    const qint64 bytes = qint64(row.width()) * row.height() * row.bands();
    if (bytes <= options.rowBytesInMemory)
        return materialised(row);
    if (!*aside) {
        const QString folder = options.temporaryFolder.isEmpty() ? QDir::tempPath() : options.temporaryFolder;
        aside->emplace(QDir(folder).filePath(QStringLiteral("tessary-blend-XXXXXX")));
        if (!(*aside)->isValid())
            throw VError("no temporary folder for the rows");
    }
    const QByteArray path = QFile::encodeName(
        (*aside)->filePath(QUuid::createUuid().toString(QUuid::WithoutBraces) + QStringLiteral(".tif")));
    watched(row).tiffsave(path.constData(), VImage::option()
                                                ->set("tile", true)
                                                ->set("tile_width", 512)
                                                ->set("tile_height", 512)
                                                ->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_NONE));
    return VImage::new_from_file(path.constData(), VImage::option()->set("access", VIPS_ACCESS_RANDOM));
}

// The picture as libvips will compute it: every step so far only describes it. `aside`: where
// a square's large rows wait (made when first needed, removed by the caller).
VImage describePicture(const std::vector<Photo> &photos, const Plan &plan, bool random, bool findJoins,
                       const Stages &stages, const PhotoBlender::Options &options, std::optional<QTemporaryDir> *aside)
{
    int done = 0;
    int joins = 0;
    for (const auto &c : plan.chains)
        joins += int(c.size()) - 1;
    if (plan.square)
        joins += int(plan.chains.size()) - 1;
    const auto picturesOf = [&](const std::vector<Placed> &chainPlan, Sources *sources) {
        std::vector<VImage> pictures;
        for (const Placed &p : chainPlan) {
            const Photo &photo = photos[p.photo];
            pictures.push_back(photo.load(p.source, p.target, random));
            const QRect source = p.source;
            const QSize target = p.target;
            sources->push_back({[&photo, source, target] { return materialised(photo.load(source, target, true)); },
                                [&photo, source](QSize size) { return photo.load(source, size.expandedTo(QSize(1, 1)), false); }});
        }
        return pictures;
    };
    if (!plan.square) {
        Sources sources;
        const std::vector<VImage> pictures = picturesOf(plan.chains[0], &sources);
        return chain(pictures, &sources, plan.vertical, plan.margin, findJoins, stages, &done, joins);
    }
    std::vector<VImage> rows;
    for (const auto &rowPlan : plan.chains) {
        Sources sources;
        const std::vector<VImage> pictures = picturesOf(rowPlan, &sources);
        // Each row is made once, brought to the common width, then searched and joined with
        // its neighbours.
        const VImage row = materialised(chain(pictures, &sources, false, plan.margin, findJoins, stages, &done, joins));
        const int height = std::max(1, int(std::lround(double(row.height()) * plan.rowWidth / row.width())));
        rows.push_back(keptRow(resizedTo(row, QSize(plan.rowWidth, height)), options, aside));
    }
    return chain(rows, nullptr, true, plan.margin, findJoins, stages, &done, joins);
}

VImage framed(const VImage &picture, const PhotoBlender::Options &options)
{
    if (options.border <= 0)
        return picture;
    const QColor c = options.background;
    VImage in = picture;
    if (c.alpha() < 255 && in.bands() == 3)
        in = in.bandjoin_const({255});
    std::vector<double> ink{double(c.red()), double(c.green()), double(c.blue())};
    if (in.bands() == 4)
        ink.push_back(c.alpha());
    const int b = options.border;
    return in.embed(b, b, in.width() + 2 * b, in.height() + 2 * b,
                    VImage::option()->set("extend", VIPS_EXTEND_BACKGROUND)->set("background", ink));
}

struct EvalState {
    const Stages *stages;
    std::atomic<int> last{-1};
};

void onEval(VipsImage *, VipsProgress *progress, void *user)
{
    auto *state = static_cast<EvalState *>(user);
    if (state->last.exchange(progress->percent) != progress->percent)
        state->stages->fraction(kJoinEnd + (0.99 - kJoinEnd) * progress->percent / 100.0);
}

// What is done with the picture once it is described: made into a QImage, or written.
using Finish = std::function<void(const VImage &picture, PhotoBlender::Outcome &outcome)>;

PhotoBlender::Outcome run(const std::function<std::vector<Photo>(const Stages &)> &read,
                          PhotoBlender::Arrangement arrangement, const PhotoBlender::Options &options,
                          const PhotoBlender::Progress &progress, const Finish &finish)
{
    ensureVips();
    Stages stages{progress, QString()};
    const std::function<bool()> canceled = [&stages] { return stages.canceled(); };
    tCanceled = &canceled;
    struct Reset {
        ~Reset() { tCanceled = nullptr; }
    } reset;
    PhotoBlender::Outcome outcome;
    try {
        std::vector<Photo> photos = read(stages);
        const qsizetype usable = PhotoBlender::photosUsed(arrangement, qsizetype(photos.size()));
        if (usable == 0) {
            outcome.error = QObject::tr("No photo could be read.");
            return outcome;
        }
        photos.resize(size_t(usable));
        const Plan plan = planPicture(photos, arrangement, options);
        outcome.wholeMegapixels = plan.wholeMegapixels;
        outcome.scaledToLimit = plan.scaled;
        if (plan.scaled)
            stages.note = QObject::tr("Scaled to the megapixel limit: %1 of %2 megapixels.")
                              .arg(options.megapixelLimit, 0, 'f', 0)
                              .arg(plan.wholeMegapixels, 0, 'f', 0);
        // Photos are read as streams; should libvips need one out of order, every photo is
        // read whole instead.
        std::optional<QTemporaryDir> aside; // goes after the picture that reads from it
        for (const bool random : {false, true}) {
            try {
                VImage picture = framed(describePicture(photos, plan, random, options.findJoins, stages, options, &aside),
                                        options);
                stages.check();
                stages.message(QObject::tr("Blending…"));
                picture = watched(picture);
                EvalState state{&stages};
                vips_image_set_progress(picture.get_image(), TRUE);
                g_signal_connect(picture.get_image(), "eval", G_CALLBACK(onEval), &state);
                outcome.size = sizeOf(picture);
                finish(picture, outcome);
                stages.check();
                break;
            } catch (const VError &) {
                if (random || stages.canceled())
                    throw;
            }
        }
        stages.fraction(1.0);
        stages.message(QObject::tr("Done."));
    } catch (const Canceled &) {
        outcome = PhotoBlender::Outcome();
        outcome.canceled = true;
    } catch (const VError &error) {
        outcome.picture = QImage();
        outcome.canceled = stages.canceled();
        if (!outcome.canceled)
            outcome.error = QString::fromUtf8(error.what()).trimmed();
    }
    vips_error_clear();
    return outcome;
}

std::function<std::vector<Photo>(const Stages &)> readFiles(const QStringList &files,
                                                           PhotoBlender::Arrangement arrangement)
{
    return [files, arrangement](const Stages &stages) {
        std::vector<Photo> photos;
        const qsizetype used = PhotoBlender::photosUsed(arrangement, files.size());
        for (qsizetype i = 0; i < used; ++i) {
            stages.check();
            stages.message(QObject::tr("Reading photo %1 of %2…").arg(i + 1).arg(used));
            try {
                Photo photo = filePhoto(files[i]);
                if (!photo.used.isEmpty()) {
                    if (stages.progress.image)
                        stages.image(previewOf(photo));
                    photos.push_back(std::move(photo));
                }
            } catch (const VError &) {
                // A photo that cannot be read is left out (unless the blend was cancelled).
                stages.check();
            }
            stages.fraction(kReadEnd * double(i + 1) / double(used));
        }
        return photos;
    };
}

void intoImage(const VImage &picture, PhotoBlender::Outcome &outcome, const Stages *stages)
{
    outcome.picture = toQImage(picture);
    if (outcome.picture.isNull())
        throw VError();
    // The last preview is the picture itself, made only for someone who shows it.
    if (stages && stages->progress.image)
        stages->image(outcome.picture.scaled(kPreviewSide, kPreviewSide, Qt::KeepAspectRatio, Qt::SmoothTransformation));
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

PhotoBlender::Outcome PhotoBlender::blend(const QStringList &files, Arrangement arrangement, const Options &options,
                                          const Progress &progress)
{
    return run(readFiles(files, arrangement), arrangement, options, progress,
               [&progress](const VImage &picture, Outcome &outcome) {
                   const Stages stages{progress, QString()};
                   intoImage(picture, outcome, &stages);
               });
}

PhotoBlender::Outcome PhotoBlender::blendToFile(const QStringList &files, Arrangement arrangement,
                                                const Options &options, const QString &output,
                                                const Progress &progress)
{
    const QFileInfo target(output);
    // Written beside the target under a name of its own with the same extension (libvips
    // picks the format by it), then renamed over the target.
    const QString part = target.dir().filePath(QStringLiteral(".%1.%2.part.%3")
                                                   .arg(target.completeBaseName(),
                                                        QUuid::createUuid().toString(QUuid::Id128), target.suffix()));
    const QString suffix = target.suffix().toLower();
    const bool jpeg = suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg");
    Outcome outcome = run(readFiles(files, arrangement), arrangement, options, progress,
                          [&](const VImage &picture, Outcome &) {
                              VImage out = picture;
                              if (jpeg && out.bands() == 4)
                                  out = out.flatten(VImage::option()->set(
                                      "background", std::vector<double>{double(options.background.red()),
                                                                        double(options.background.green()),
                                                                        double(options.background.blue())}));
                              if (jpeg || suffix == QLatin1String("webp"))
                                  out.write_to_file(QFile::encodeName(part).constData(), VImage::option()->set("Q", 90));
                              else
                                  out.write_to_file(QFile::encodeName(part).constData());
                          });
    std::error_code error;
    if (outcome.ok())
        std::filesystem::rename(QFile::encodeName(part).toStdString(), QFile::encodeName(output).toStdString(), error);
    if (!outcome.ok() || error) {
        QFile::remove(part);
        if (error)
            outcome.error = QString::fromStdString(error.message());
    }
    return outcome;
}

PhotoBlender::Outcome PhotoBlender::blendImages(const QList<QImage> &pictures, Arrangement arrangement,
                                                const Options &options, const Progress &progress)
{
    const auto read = [&pictures](const Stages &) {
        std::vector<Photo> photos;
        for (const QImage &picture : pictures) {
            if (picture.isNull())
                continue;
            Photo photo = imagePhoto(picture);
            if (!photo.used.isEmpty())
                photos.push_back(std::move(photo));
        }
        return photos;
    };
    return run(read, arrangement, options, progress, [](const VImage &picture, Outcome &outcome) {
        intoImage(picture, outcome, nullptr);
    });
}

PhotoBlender::Join PhotoBlender::findJoin(const QImage &first, const QImage &second, bool vertical, int margin)
{
    ensureVips();
    try {
        const std::vector<VImage> pair{fromQImage(first), fromQImage(second)};
        const int shrink = searchShrink(pair, vertical);
        const SearchCopy a = searchCopy(pair[0], nullptr, shrink, vertical), b = searchCopy(pair[1], nullptr, shrink, vertical);
        return joinOf(&a, &b, sizeOf(pair[0]), sizeOf(pair[1]), vertical, margin);
    } catch (const VError &) {
        return {};
    }
}

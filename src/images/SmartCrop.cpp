// libvips (through glib) uses the word "signals", which Qt defines as a macro: it comes first.
#include <vips/vips8>

#include "images/SmartCrop.h"

#include "images/UIImage.h"

#include <algorithm>
#include <mutex>

using vips::VError;
using vips::VImage;

namespace {

const QPointF kCentre(0.5, 0.5);
// The crop asked of smartcrop: attention centres its window on the most interesting point, so a
// window this small lands on the point itself.
constexpr int kWindow = 2;
// Attention is judged on a coarse map of the picture; a copy this large (the longer side) finds
// the same point as the reduced copy itself, several times faster.
constexpr int kSide = 256;

void ensureVips()
{
    static std::once_flag once;
    std::call_once(once, [] { VIPS_INIT("tessary"); });
}

} // namespace

QPointF SmartCrop::subjectOf(const QImage &image)
{
    if (image.isNull() || image.width() < kWindow || image.height() < kWindow)
        return kCentre;
    ensureVips();
    // Transparent parts count as what they are drawn over in a tile: nothing of interest.
    const QImage small = std::max(image.width(), image.height()) > kSide
                             ? image.scaled(kSide, kSide, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                             : image;
    const QImage rgb = small.convertToFormat(QImage::Format_RGB888);
    const int w = rgb.width(), h = rgb.height();
    const qsizetype row = qsizetype(w) * 3;
    QByteArray packed(row * h, Qt::Uninitialized);
    for (int y = 0; y < h; ++y)
        memcpy(packed.data() + y * row, rgb.constScanLine(y), size_t(row));
    try {
        // libvips keeps its own copy of the pixels: its operation cache may outlive this call.
        VipsImage *copy = vips_image_new_from_memory_copy(packed.constData(), size_t(packed.size()), w, h, 3, VIPS_FORMAT_UCHAR);
        if (!copy)
            throw VError();
        const VImage in = VImage(copy).copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
        const VImage crop = in.smartcrop(kWindow, kWindow, VImage::option()->set("interesting", VIPS_INTERESTING_ATTENTION));
        // The crop is a region of the input: its offsets are minus its top-left corner.
        const double left = -crop.xoffset();
        const double top = -crop.yoffset();
        return QPointF((left + kWindow / 2.0) / w, (top + kWindow / 2.0) / h);
    } catch (const VError &) {
        vips_error_clear();
        return kCentre;
    }
}

#include "images/ImageFileReader.h"
#include "images/UIImage.h"

#include <QGuiApplication>
#include <QImageReader>

#include <cstddef>
#include <cstdint>

namespace {

// Painting needs a GUI application; made once for the whole run.
void ensureApplication()
{
    static int argc = 1;
    static char name[] = "fuzz_image_loader";
    static char *argv[] = {name, nullptr};
    static QGuiApplication *app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QGuiApplication(argc, argv);
    }();
    (void)app;
    // Keep each input cheap: the loader's own limit is raised for real photos, the fuzzer
    // caps decoding at 64 MB per picture so that huge claims end quickly.
    ImageFileReader::raiseAllocationLimit();
    QImageReader::setAllocationLimit(64);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ensureApplication();
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const UIImage::LoadResult r = UIImage::loadData(bytes, QStringLiteral("fuzz"));
    if (!r.ok()) {
        // A refusal always comes with the empty image.
        if (r.image.isValid() || !r.image.size().isNull())
            __builtin_trap();
        return 0;
    }
    const UIImage &img = r.image;
    // Whatever loads must fit, shrink, encode and frame without trouble.
    for (int method = 0; method < 4; ++method)
        (void)img.imageToFitSize(QSizeF(7, 5), method);
    (void)UIImage::initWithTIFFRepresentation(img.TIFFRepresentation());
    (void)UIImage::rotate90(img, true);
    (void)img.imageWithInsetContent(2, true, Qt::white, false);
    (void)img.scaleToUnderMegaPixels(0.0001);
    return 0;
}

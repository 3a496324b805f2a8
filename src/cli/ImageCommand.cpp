#include "ImageCommand.h"


#include "images/ImageFileReader.h"
#include "output/ResultEncoder.h"
#include "output/ResultFormat.h"
#include "images/PhotoFraming.h"
#include "images/UIImage.h"
#include "model/CollageRenderer.h"
#include "model/TileLayout.h"

#include <QFileInfo>

namespace {

const char *kHelp =
    "Usage:\n"
    "  tessary-cli image info FILE\n"
    "      prints the picture's size in pixels (the largest width and height of its pages)\n"
    "      and its number of frames\n"
    "  tessary-cli image fit IN WIDTH HEIGHT METHOD OUT\n"
    "      fits IN into WIDTH x HEIGHT pixels and writes OUT in the format its extension names\n"
    "      (.png, .jpg/.jpeg, .tif/.tiff, .webp, .bmp). METHOD:\n"
    "        0  crop to fill, centred\n"
    "        1  crop to fill, keeping the start (left end, or top of a tall picture)\n"
    "        2  crop to fill, keeping the end (right end, or bottom of a tall picture)\n"
    "        3  scale to fit inside, centred, leaving transparent bands\n"
    "        4  crop to fill around the picture's subject (Smart), found from its content\n";

bool parseDimension(const QString &text, int *value)
{
    bool ok = false;
    *value = text.toInt(&ok);
    return ok && *value > 0;
}

int info(const QStringList &args, CliContext &context)
{
    if (args.size() != 1)
        return context.fail(QStringLiteral("image info: expected one FILE\n\n%1").arg(QLatin1String(kHelp)), 2);
    const UIImage::LoadResult r = UIImage::loadFile(args[0]);
    if (!r.ok())
        return context.fail(r.error);
    context.out << "size: " << r.image.width() << " x " << r.image.height() << '\n'
                << "frames: " << r.image.frameCount() << '\n';
    return 0;
}

int fit(const QStringList &args, CliContext &context)
{
    if (args.size() != 5)
        return context.fail(QStringLiteral("image fit: expected IN WIDTH HEIGHT METHOD OUT\n\n%1").arg(QLatin1String(kHelp)), 2);
    int width = 0, height = 0;
    if (!parseDimension(args[1], &width) || !parseDimension(args[2], &height))
        return context.fail(QStringLiteral("image fit: WIDTH and HEIGHT must be whole numbers above 0, not '%1' and '%2'").arg(args[1], args[2]), 2);
    if (qint64(width) * height > ImageFileReader::MaxPixels)
        return context.fail(QStringLiteral("image fit: %1 x %2 is more than the %3-megapixel limit")
                                .arg(width).arg(height).arg(ImageFileReader::MaxPixels / 1000000), 2);
    bool ok = false;
    const int method = args[3].toInt(&ok);
    if (!ok || method < 0 || method > 4)
        return context.fail(QStringLiteral("image fit: METHOD must be 0, 1, 2, 3 or 4, not '%1'").arg(args[3]), 2);
    const QString out = args[4];
    const QByteArray format = ResultFormat::formatForSuffix(QFileInfo(out).suffix());
    if (format.isEmpty())
        return context.fail(QStringLiteral("image fit: cannot tell the format of '%1' from its extension (use .png, .jpg, .tiff, .webp or .bmp)").arg(out), 2);

    const UIImage::LoadResult in = UIImage::loadFile(args[0]);
    if (!in.ok())
        return context.fail(in.error);
    // The Smart crop centres on the subject found on the picture's reduced copy, as the collage does.
    TileLayout tile;
    tile.imagePath = args[0];
    tile.imageAlignment = method;
    const UIImage fitted = in.image.imageToFitSize(QSizeF(width, height), method, CollageRenderer::framingForTile(tile));
    if (!fitted.isValid())
        return context.fail(QStringLiteral("image fit: cannot make a %1 x %2 picture").arg(width).arg(height));

    // Through the result encoder: a failed write leaves no half file, and says the system's reason.
    ResultEncoder::Settings settings;
    settings.format = format;
    QString error;
    if (!ResultEncoder::writeFile(fitted.bestRepresentation(), out, settings, &error))
        return context.fail(QStringLiteral("cannot write '%1': %2").arg(out, error));
    return 0;
}

} // namespace

int ImageCommand::run(const QStringList &args, CliContext &context)
{
    if (args.isEmpty() || CliContext::wantsHelp(args)) {
        (args.isEmpty() ? context.err : context.out) << kHelp;
        return args.isEmpty() ? 2 : 0;
    }
    const QString verb = args.first();
    if (verb == QLatin1String("info"))
        return info(args.mid(1), context);
    if (verb == QLatin1String("fit"))
        return fit(args.mid(1), context);
    return context.fail(QStringLiteral("image: unknown action '%1'\n\n%2").arg(verb, QLatin1String(kHelp)), 2);
}

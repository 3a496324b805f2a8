#include "BlendCommand.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "blend/BlendPreferences.h"
#include "blend/PhotoBlender.h"

#include <QColor>
#include <QFileInfo>

#include <atomic>
#include <cmath>
#include <csignal>
#include <optional>

#include <unistd.h>

namespace {

const char *kHelp =
    "Usage: tessary-cli blend [--direction left-to-right|bottom-to-top|square]\n"
    "                         [--feather PIXELS] [--border PIXELS] [--background COLOR]\n"
    "                         -o OUT PHOTO...\n"
    "\n"
    "Joins the photos into one seamless picture, as the window's Blend commands do: side by side\n"
    "(left-to-right, the default), stacked with the first photo at the bottom (bottom-to-top), or\n"
    "as a square of the first 4, 9 or 16 photos. Photos of different shapes are brought to one\n"
    "height (side by side) or width (stacked) first; where neighbours show the same scene the\n"
    "join is found in their content, else they overlap by the feather width.\n"
    "\n"
    "  --direction D       left-to-right, bottom-to-top or square\n"
    "  --feather PIXELS    the width of each join (default: the stored BlendingMarginWidth,\n"
    "                      else 50)\n"
    "  --border PIXELS     a margin around the picture, filled with the background (default:\n"
    "                      half the stored MatchingMarginWidth, else none)\n"
    "  --background COLOR  #rrggbb, #aarrggbb, a colour name or 'clear' (default: white)\n"
    "  -o, --output OUT    PNG, TIFF, JPEG or WebP, chosen by the extension; written whole or\n"
    "                      not at all\n"
    "\n"
    "The stored settings apply as in the window: InputImageScaling, UniformlyCrop and\n"
    "UniformlyCropFit, and MegapixelLimit (on unless stored as NO: the picture is scaled to\n"
    "8 megapixels). The store is $TESSARY_DEFAULTS when set. Unreadable photos are left out.\n"
    "\n"
    "Exit status: 0 written, 1 nothing could be blended or written, 2 a bad argument,\n"
    "130 interrupted (Ctrl+C; nothing is written).\n";

std::atomic<bool> g_interrupted{false};

void onInterrupt(int)
{
    g_interrupted.store(true);
}

std::optional<int> pixels(const QString &text)
{
    bool ok = false;
    const int v = text.toInt(&ok);
    return ok && v >= 0 && v <= 100000 ? std::optional<int>(v) : std::nullopt;
}

std::optional<QColor> color(const QString &text)
{
    const QString lower = text.toLower();
    if (lower == QLatin1String("clear") || lower == QLatin1String("none") || lower == QLatin1String("transparent"))
        return QColor(Qt::transparent);
    const QColor c = QColor::fromString(text);
    return c.isValid() ? std::optional<QColor>(c) : std::nullopt;
}

bool knownFormat(const QString &path)
{
    static const QStringList formats{"png", "tif", "tiff", "jpg", "jpeg", "webp"};
    return formats.contains(QFileInfo(path).suffix().toLower());
}

} // namespace

int BlendCommand::run(const QStringList &args, CliContext &context)
{
    if (CliContext::wantsHelp(args)) {
        context.out << kHelp;
        return 0;
    }
    using A = PhotoBlender::Arrangement;
    A arrangement = A::LeftToRight;
    std::optional<int> feather, border;
    QColor background = Qt::white;
    QString output;
    QStringList photos;
    const auto bad = [&context](const QString &message) {
        context.err << "tessary-cli: blend: " << message << "\n\n" << kHelp;
        return 2;
    };
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
        const bool takesValue = a == QLatin1String("--direction") || a == QLatin1String("--feather")
            || a == QLatin1String("--border") || a == QLatin1String("--background") || a == QLatin1String("-o")
            || a == QLatin1String("--output");
        if (takesValue && i + 1 >= args.size())
            return bad(QStringLiteral("%1 needs a value").arg(a));
        const QString value = takesValue ? args[++i] : QString();
        if (a == QLatin1String("--direction")) {
            if (value == QLatin1String("left-to-right"))
                arrangement = A::LeftToRight;
            else if (value == QLatin1String("bottom-to-top"))
                arrangement = A::BottomToTop;
            else if (value == QLatin1String("square"))
                arrangement = A::Square;
            else
                return bad(QStringLiteral("--direction: '%1' is not left-to-right, bottom-to-top or square").arg(value));
        } else if (a == QLatin1String("--feather") || a == QLatin1String("--border")) {
            const auto v = pixels(value);
            if (!v)
                return bad(QStringLiteral("%1: '%2' is not a number of pixels").arg(a, value));
            (a == QLatin1String("--feather") ? feather : border) = v;
        } else if (a == QLatin1String("--background")) {
            const auto c = color(value);
            if (!c)
                return bad(QStringLiteral("--background: '%1' is not a colour").arg(value));
            background = *c;
        } else if (a == QLatin1String("-o") || a == QLatin1String("--output")) {
            output = value;
        } else if (a == QLatin1String("--")) {
            photos += args.mid(i + 1);
            break;
        } else if (a.startsWith(QLatin1Char('-')) && a.size() > 1) {
            return bad(QStringLiteral("unknown option '%1'").arg(a));
        } else {
            photos << a;
        }
    }
    if (output.isEmpty())
        return bad(QStringLiteral("no output file (-o OUT)"));
    if (!knownFormat(output))
        return bad(QStringLiteral("'%1': the extension must be png, tif, tiff, jpg, jpeg or webp").arg(output));
    if (photos.isEmpty())
        return bad(QStringLiteral("no photos to blend"));
    if (arrangement == A::Square && PhotoBlender::squareSide(photos.size()) == 0)
        return bad(QStringLiteral("a square needs 4, 9 or 16 photos (4 = 2x2, 9 = 3x3 or 16 = 4x4)"));
    for (const QString &p : std::as_const(photos)) {
        if (!QFileInfo(p).isFile())
            return bad(QStringLiteral("photo '%1' is not a file").arg(p));
    }

    // The settings the window's blend commands read.
    UserDefaults defaults;
    const Preferences prefs(defaults);
    PhotoBlender::Options options = BlendPreferences::options(defaults);
    if (feather)
        options.blendingMarginWidth = *feather;
    const int matching = int(std::trunc(prefs.matchingMarginWidth()));
    options.border = border ? *border : (matching >= 2 ? matching / 2 : 0);
    options.background = background;

    // A progress line only for a person watching a terminal.
    const bool terminal = context.err.string() == nullptr && isatty(STDERR_FILENO);
    PhotoBlender::Progress progress;
    QString stage;
    int percent = -1;
    if (terminal) {
        const auto show = [&] {
            context.err << "\r\033[K" << stage << ' ' << std::max(0, percent) << '%' << Qt::flush;
        };
        progress.message = [&, show](const QString &m) {
            stage = m.section(QLatin1Char('\n'), 0, 0);
            show();
        };
        progress.fraction = [&, show](double f) {
            if (int(f * 100) != percent) {
                percent = int(f * 100);
                show();
            }
        };
    }
    g_interrupted = false;
    progress.canceled = [] { return g_interrupted.load(); };
    struct sigaction action = {}, previous = {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, &previous);
    const PhotoBlender::Outcome outcome = PhotoBlender::blendToFile(photos, arrangement, options, output, progress);
    ::sigaction(SIGINT, &previous, nullptr);
    if (terminal)
        context.err << "\r\033[K" << Qt::flush;
    if (outcome.canceled)
        return context.fail(QStringLiteral("blend: interrupted; nothing was written"), 130);
    if (!outcome.ok())
        return context.fail(QStringLiteral("blend: %1").arg(outcome.error));
    if (outcome.scaledToLimit) {
        context.err << "tessary-cli: blend: scaled to " << outcome.size.width() << " x " << outcome.size.height()
                    << " to keep within the megapixel limit (MegapixelLimit; the whole picture would be "
                    << QString::number(outcome.wholeMegapixels, 'f', 0) << " megapixels)\n";
    }
    return 0;
}

#include "RenderCommand.h"


#include "PrintingAlertPresenter.h"
#include "RenderPhotoList.h"

#include "foundation/Paths.h"
#include "foundation/PlistValue.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageBookmarks.h"
#include "output/PagePreset.h"
#include "output/ResultEncoder.h"
#include "output/ResultFormat.h"
#include "model/CollageDocument.h"
#include "model/CollageRenderer.h"
#include "model/CoordinateTransform.h"
#include "model/LayoutEngine.h"
#include "output/PageRenderer.h"
#include "model/PhotoSharpness.h"
#include "model/RenderScale.h"
#include "model/TileJumble.h"
#include "templates/TemplateStore.h"
#include "templates/TemplateTables.h"
#include "templates/TemplatesFile.h"

#include <QDir>
#include <QFileInfo>

#include <optional>

#include <unistd.h>

namespace {

const char *kHelp =
    "Usage: tessary-cli render [OPTIONS] [PHOTO...] -o OUT\n"
    "       tessary-cli render [OPTIONS] [PHOTO...] --layout-only\n"
    "\n"
    "Renders a collage into one picture. Without --template or --builtin it is the current\n"
    "collage of the user defaults store ($TESSARY_DEFAULTS when set): its layout and its photo\n"
    "list. PHOTO arguments replace the stored photo list: photo i goes into module i, modules\n"
    "without a photo show nothing (or the placeholder with --render-empty-tiles).\n"
    "\n"
    "Collage:\n"
    "  --collage FILE.tessary   a saved collage document: its template, photos, alignments,\n"
    "                           transform, spacing, background and jumbled tiles (photos that\n"
    "                           are missing are named and their tiles left empty: status 3)\n"
    "  --template FILE[:N]      template N of a templates file (numbered from 1, default 1)\n"
    "  --builtin N              built-in template N, as the window numbers it (298: the one shown\n"
    "                           at first start)\n"
    "  --align A                fit every photo by A: 0 center, 1 start, 2 end, 3 fit,\n"
    "                           4 smart (fill around each photo's subject); drops framings\n"
    "  --transform T            0 none, 1 flip horizontally, 2 flip vertically,\n"
    "                           3 rotate left, 4 rotate right\n"
    "  --spacing inset|outset   gaps between the tiles (default) or overlapping tiles\n"
    "  --increments W H         tile spacing in percent (default: the stored setting, else 5 5)\n"
    "  --jumble                 scatter the tiles at random places inside the collage\n"
    "  --seed N                 the same scatter for the same N (default: a new one each time)\n"
    "  --size W[xH]             the size the collage is shown at, in points (default: the\n"
    "                           template's own size); the height fits the width when omitted\n"
    "\n"
    "Picture:\n"
    "  -o, --output OUT         PNG, TIFF, JPEG or WebP, chosen by the extension (PDF with --page)\n"
    "  --scale auto|N           enlarge N times; auto (default) takes as much as the sharpest\n"
    "                           photo needs within a tenth of the free memory and 26 megapixels\n"
    "  --unscaled               the collage at its shown size as the window draws it, with the\n"
    "                           tiles' opacity, borders, corners, titles and numbers\n"
    "  --background COLOR       #rrggbb, #aarrggbb, a colour name or 'clear' (default: the stored\n"
    "                           collage background, else clear; JPEG flattens clear onto white)\n"
    "  --render-empty-tiles     show the placeholder picture in modules without a photo\n"
    "  --quality Q              0-100: JPEG and WebP quality (default 90); for PNG, 100\n"
    "                           stores and lower values compress harder (default: fast)\n"
    "  --threads N              decoding threads (default: one per core)\n"
    "  --layout-only            print the tile frames instead of rendering: a 'collage' line\n"
    "                           (width, height, transform) and one 'tile' line per tile (index,\n"
    "                           x, y, width, height, alignment, photo), tab-separated\n"
    "  --verbose                also print the layout, cache and render debugging lines\n"
    "\n"
    "Page:\n"
    "  --page NAME[,landscape]  put the collage on a page: A5 A4 A3 A2 A1 Letter Legal Tabloid\n"
    "                           10x15cm 13x18cm 20x30cm (any case), rendered afresh at the pixels\n"
    "                           the page needs; OUT ending in .pdf is a one-page PDF, any other\n"
    "                           a picture of the whole page (white paper around the collage)\n"
    "  --dpi N                  the page's resolution, 10-1200 (default 300)\n"
    "  --margin MM              the margin on every side in millimetres (default 10 for paper,\n"
    "                           0 for the photo sizes)\n"
    "  --fill                   fill the page inside the margins, cutting what overflows evenly\n"
    "                           from both ends (default: the whole collage fitted inside)\n"
    "\n"
    "Exit status: 0 done, 1 a file could not be read or written, 2 a bad argument,\n"
    "3 written, but some photos could not be read (their tiles are left empty).\n";

struct Request {
    std::optional<QString> collage;
    std::optional<QString> templateFile;
    int templateIndex = 0;
    std::optional<qint64> builtin;
    QStringList photos;
    std::optional<int> align;
    int transform = 0;
    int spacing = 0;
    std::optional<std::pair<double, double>> increments;
    std::optional<QColor> background;
    std::optional<QSizeF> size;
    qint64 scale = 0; // 0: automatic
    bool unscaled = false;
    bool renderEmptyTiles = false;
    bool layoutOnly = false;
    bool jumble = false;
    std::optional<quint32> seed;
    QString output;
    int quality = -1;
    int threads = 0;
    std::optional<PagePreset> page;
    std::optional<double> dpi;
    std::optional<double> margin;
    bool fill = false;
};

std::optional<qint64> parseInteger(const QString &text, qint64 min, qint64 max)
{
    bool ok = false;
    const qint64 v = text.toLongLong(&ok);
    if (!ok || v < min || v > max)
        return std::nullopt;
    return v;
}

std::optional<double> parseNumber(const QString &text, double min, double max)
{
    bool ok = false;
    const double v = text.toDouble(&ok);
    if (!ok || !(v >= min && v <= max))
        return std::nullopt;
    return v;
}

std::optional<int> parseAlignment(const QString &text)
{
    static const QStringList names{QStringLiteral("center"), QStringLiteral("start"), QStringLiteral("end"),
                                   QStringLiteral("fit"), QStringLiteral("smart")};
    const QString lower = text.toLower();
    if (lower == QLatin1String("centre"))
        return 0;
    if (names.contains(lower))
        return int(names.indexOf(lower));
    if (const auto v = parseInteger(text, 0, 4))
        return int(*v);
    return std::nullopt;
}

std::optional<QColor> parseColor(const QString &text)
{
    const QString lower = text.toLower();
    if (lower == QLatin1String("clear") || lower == QLatin1String("none") || lower == QLatin1String("transparent"))
        return QColor(Qt::transparent);
    const QColor c = QColor::fromString(text);
    if (!c.isValid())
        return std::nullopt;
    return c;
}

std::optional<QSizeF> parseSize(const QString &text)
{
    const QStringList parts = text.toLower().split(QLatin1Char('x'));
    if (parts.size() > 2)
        return std::nullopt;
    const auto w = parseNumber(parts[0], 1, 1.0e6);
    if (!w)
        return std::nullopt;
    if (parts.size() == 1)
        return QSizeF(*w, 1.0e9); // only the width limits
    const auto h = parseNumber(parts[1], 1, 1.0e6);
    if (!h)
        return std::nullopt;
    return QSizeF(*w, *h);
}

// Whether an output file name asks for a PDF page rather than a picture.
bool isPdfOutput(const QString &path)
{
    return QFileInfo(path).suffix().compare(QLatin1String("pdf"), Qt::CaseInsensitive) == 0;
}

// Parses the arguments; an error message on failure.
QString parse(const QStringList &args, Request &r)
{
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
        const auto value = [&](int n = 1) -> std::optional<QStringList> {
            if (i + n >= args.size())
                return std::nullopt;
            QStringList v = args.mid(i + 1, n);
            i += n;
            return v;
        };
        const auto missing = [&]() { return QStringLiteral("%1 needs a value").arg(a); };
        if (a == QLatin1String("--collage")) {
            const auto v = value();
            if (!v)
                return missing();
            r.collage = v->first();
        } else if (a == QLatin1String("--template")) {
            const auto v = value();
            if (!v)
                return missing();
            QString file = v->first();
            // FILE:INDEX, unless the whole text names an existing file.
            const qsizetype colon = file.lastIndexOf(QLatin1Char(':'));
            if (colon > 0 && !QFileInfo::exists(file)) {
                const auto number = parseInteger(file.mid(colon + 1), 1, 1 << 30);
                if (!number)
                    return QStringLiteral("--template: '%1' is not a template number").arg(file.mid(colon + 1));
                r.templateIndex = int(TemplateTables::rowOfNumber(*number));
                file = file.left(colon);
            }
            r.templateFile = file;
        } else if (a == QLatin1String("--builtin")) {
            const auto v = value();
            if (!v)
                return missing();
            r.builtin = parseInteger(v->first(), 1, 1 << 30);
            if (!r.builtin)
                return QStringLiteral("--builtin: '%1' is not a template number").arg(v->first());
        } else if (a == QLatin1String("--align")) {
            const auto v = value();
            if (!v)
                return missing();
            r.align = parseAlignment(v->first());
            if (!r.align)
                return QStringLiteral("--align: '%1' is not 0-4, center, start, end, fit or smart").arg(v->first());
        } else if (a == QLatin1String("--transform")) {
            const auto v = value();
            if (!v)
                return missing();
            const auto t = parseInteger(v->first(), 0, CoordinateTransform::kCount - 1);
            if (!t)
                return QStringLiteral("--transform: '%1' is not 0-4").arg(v->first());
            r.transform = int(*t);
        } else if (a == QLatin1String("--spacing")) {
            const auto v = value();
            if (!v)
                return missing();
            if (v->first() == QLatin1String("inset"))
                r.spacing = 0;
            else if (v->first() == QLatin1String("outset"))
                r.spacing = 1;
            else
                return QStringLiteral("--spacing: '%1' is neither inset nor outset").arg(v->first());
        } else if (a == QLatin1String("--increments")) {
            const auto v = value(2);
            if (!v)
                return QStringLiteral("--increments needs a width and a height percentage");
            const auto w = parseNumber(v->at(0), 0, 1000);
            const auto h = parseNumber(v->at(1), 0, 1000);
            if (!w || !h)
                return QStringLiteral("--increments: '%1 %2' are not two percentages from 0 to 1000")
                    .arg(v->at(0), v->at(1));
            r.increments = std::make_pair(*w, *h);
        } else if (a == QLatin1String("--background")) {
            const auto v = value();
            if (!v)
                return missing();
            r.background = parseColor(v->first());
            if (!r.background)
                return QStringLiteral("--background: '%1' is not a colour").arg(v->first());
        } else if (a == QLatin1String("--size")) {
            const auto v = value();
            if (!v)
                return missing();
            r.size = parseSize(v->first());
            if (!r.size)
                return QStringLiteral("--size: '%1' is not W or WxH in points").arg(v->first());
        } else if (a == QLatin1String("--scale")) {
            const auto v = value();
            if (!v)
                return missing();
            if (v->first() == QLatin1String("auto")) {
                r.scale = 0;
            } else {
                const auto s = parseInteger(v->first(), 1, 1000);
                if (!s)
                    return QStringLiteral("--scale: '%1' is neither auto nor a whole number from 1").arg(v->first());
                r.scale = *s;
            }
        } else if (a == QLatin1String("--unscaled")) {
            r.unscaled = true;
        } else if (a == QLatin1String("--render-empty-tiles")) {
            r.renderEmptyTiles = true;
        } else if (a == QLatin1String("--jumble")) {
            r.jumble = true;
        } else if (a == QLatin1String("--seed")) {
            const auto v = value();
            if (!v)
                return missing();
            const auto n = parseInteger(v->first(), 0, 0xffffffffLL);
            if (!n)
                return QStringLiteral("--seed: '%1' is not a whole number from 0 to 4294967295").arg(v->first());
            r.seed = quint32(*n);
        } else if (a == QLatin1String("--page")) {
            const auto v = value();
            if (!v)
                return missing();
            QString error;
            r.page = PagePreset::parse(v->first(), &error);
            if (!r.page)
                return QStringLiteral("--page: %1").arg(error);
        } else if (a == QLatin1String("--dpi")) {
            const auto v = value();
            if (!v)
                return missing();
            r.dpi = parseNumber(v->first(), 10, 1200);
            if (!r.dpi)
                return QStringLiteral("--dpi: '%1' is not 10-1200").arg(v->first());
        } else if (a == QLatin1String("--margin")) {
            const auto v = value();
            if (!v)
                return missing();
            r.margin = parseNumber(v->first(), 0, 1000);
            if (!r.margin)
                return QStringLiteral("--margin: '%1' is not millimetres from 0").arg(v->first());
        } else if (a == QLatin1String("--fill")) {
            r.fill = true;
        } else if (a == QLatin1String("--layout-only")) {
            r.layoutOnly = true;
        } else if (a == QLatin1String("--verbose")) {
            // Read by the program's start, which lets the progress and debugging lines through.
        } else if (a == QLatin1String("-o") || a == QLatin1String("--output")) {
            const auto v = value();
            if (!v)
                return missing();
            r.output = v->first();
        } else if (a == QLatin1String("--quality")) {
            const auto v = value();
            if (!v)
                return missing();
            const auto q = parseInteger(v->first(), 0, 100);
            if (!q)
                return QStringLiteral("--quality: '%1' is not 0-100").arg(v->first());
            r.quality = int(*q);
        } else if (a == QLatin1String("--threads")) {
            const auto v = value();
            if (!v)
                return missing();
            const auto n = parseInteger(v->first(), 1, 256);
            if (!n)
                return QStringLiteral("--threads: '%1' is not 1-256").arg(v->first());
            r.threads = int(*n);
        } else if (a == QLatin1String("--")) {
            r.photos += args.mid(i + 1);
            break;
        } else if (a.startsWith(QLatin1Char('-')) && a.size() > 1) {
            return QStringLiteral("unknown option '%1'").arg(a);
        } else {
            r.photos << a;
        }
    }
    if (r.templateFile && r.builtin)
        return QStringLiteral("give either --template or --builtin, not both");
    if (r.collage && (r.templateFile || r.builtin || !r.photos.isEmpty()))
        return QStringLiteral("--collage brings its own template and photos: give no --template, --builtin or PHOTO");
    if (r.unscaled && r.scale > 0)
        return QStringLiteral("--unscaled and --scale exclude each other");
    if (r.page) {
        if (r.unscaled || r.scale > 0)
            return QStringLiteral("--page renders at the page's own size: give no --scale or --unscaled");
        r.page->setDotsPerInch(r.dpi.value_or(PagePreset::kDefaultDotsPerInch)).setFit(r.fill ? PagePreset::Fit::Fill
                                                                                           : PagePreset::Fit::Inside);
        if (r.margin)
            r.page->setMargin(*r.margin);
        if (!r.page->isValid())
            return QStringLiteral("--margin: %1 mm on every side leaves no room on a %2 page")
                .arg(r.page->margin())
                .arg(r.page->name());
    } else if (r.dpi || r.margin || r.fill) {
        return QStringLiteral("--dpi, --margin and --fill need --page");
    }
    if (!r.layoutOnly) {
        if (r.output.isEmpty())
            return QStringLiteral("name the picture to write with -o OUT");
        if (isPdfOutput(r.output)) {
            if (!r.page)
                return QStringLiteral("'%1': a PDF is a page: choose it with --page NAME").arg(r.output);
        } else if (ResultFormat::formatForSuffix(QFileInfo(r.output).suffix()).isEmpty()) {
            return QStringLiteral("'%1': the extension must be .png, .tif, .tiff, .jpg, .jpeg, .webp or .bmp (.pdf with --page)")
                .arg(r.output);
        }
    }
    return QString();
}

class Render
{
public:
    Render(CliContext &context, const Request &request)
        : m_context(context), m_request(request), m_alerts(context.err)
    {
    }

    int run()
    {
        // Photos named on the command line must be files; whether they decode shows later.
        for (const QString &p : m_request.photos) {
            const QFileInfo info(p);
            if (!info.exists())
                return m_context.fail(QStringLiteral("render: photo '%1' does not exist").arg(p), 2);
            if (!info.isFile())
                return m_context.fail(QStringLiteral("render: photo '%1' is not a file").arg(p), 2);
        }
        if (m_request.collage)
            return runCollage();
        UserDefaults defaults;
        QVariantMap templateData;
        if (const QString error = chooseTemplate(defaults, templateData); !error.isEmpty())
            return m_context.fail(QStringLiteral("render: %1").arg(error));

        const Preferences prefs(defaults);
        const QString resources = Paths::resourcesFolder();
        RenderPhotoList photos = photoList(defaults, resources, prefs);
        if (m_request.align)
            photos.setAllAlignments(*m_request.align);

        LayoutEngine engine(LayoutEngine::defaultImagePathInFolder(resources));
        engine.setCoordinateTransform(m_request.transform);
        engine.setSpacingType(m_request.spacing);
        if (m_request.increments)
            engine.setIncrements(m_request.increments->first, m_request.increments->second);
        else
            engine.setIncrements(prefs.collageWidthIncrement(), prefs.collageHeightIncrement());
        const QSizeF own(PlistValue::floatValue(templateData.value(Preferences::ContentSizeWidth)),
                         PlistValue::floatValue(templateData.value(Preferences::ContentSizeHeight)));
        CollageLayout layout = engine.layoutTemplate(templateData, m_request.size.value_or(own), &photos);
        CoordinateTransform::applyCoordinateTransform(layout);
        if (m_request.jumble) {
            QRandomGenerator seeded(m_request.seed.value_or(0));
            TileJumble jumble(m_request.seed ? &seeded : QRandomGenerator::system());
            jumble.jumble(layout);
        }

        if (m_request.layoutOnly)
            return printLayout(layout);
        if (layout.tiles.empty() || layout.contentSize.isEmpty())
            return m_context.fail(QStringLiteral("render: the template places no tiles: shown %1 x %2 points "
                                                 "wide and high, its cells are %3 points")
                                      .arg(layout.contentSizeWidth)
                                      .arg(layout.contentSizeHeight)
                                      .arg(layout.moduleSizeInPoints));
        return render(layout, prefs, m_request.background.value_or(prefs.tessaryBackgroundColor()));
    }

private:
    // A saved collage document: everything comes from it but the picture's options.
    int runCollage()
    {
        const CollageDocument::ReadResult read = CollageDocument::read(*m_request.collage);
        if (!read.ok())
            return m_context.fail(QStringLiteral("render: %1").arg(read.error));
        const CollageDocument &doc = *read.document;
        const QString resources = Paths::resourcesFolder();
        // A missing photo leaves its tile empty, as the window does.
        QStringList paths = doc.photoPaths();
        for (QString &p : paths) {
            if (p.isEmpty())
                p = QDir(resources).filePath(QStringLiteral("blank.png"));
        }
        for (const QString &missing : read.missingPhotos)
            m_context.err << "tessary-cli: warning: photo '" << missing << "' of the collage was not found (its tile is left empty)\n";
        RenderPhotoList photos(paths, doc.photoAlignments(), -1, doc.photoFramings());
        if (m_request.align)
            photos.setAllAlignments(*m_request.align);

        LayoutEngine engine(LayoutEngine::defaultImagePathInFolder(resources));
        engine.setCoordinateTransform(doc.coordinateTransform);
        engine.setSpacingType(doc.spacingType);
        engine.setImageFrameStyle(doc.imageFrameStyle);
        engine.setIncrements(doc.widthIncrement, doc.heightIncrement);
        const QSizeF own(PlistValue::floatValue(doc.templateData.value(Preferences::ContentSizeWidth)),
                         PlistValue::floatValue(doc.templateData.value(Preferences::ContentSizeHeight)));
        CollageLayout layout = engine.layoutTemplate(doc.templateData, m_request.size.value_or(own), &photos);
        CoordinateTransform::applyCoordinateTransform(layout);
        const QList<QRectF> jumbled = doc.jumbledFramesAt(layout.contentSize, qsizetype(layout.tiles.size()));
        for (qsizetype k = 0; k < jumbled.size(); ++k)
            layout.tiles[size_t(k)].frame = jumbled[k];
        if (m_request.layoutOnly)
            return printLayout(layout);
        if (layout.tiles.empty() || layout.contentSize.isEmpty())
            return m_context.fail(QStringLiteral("render: the collage's template places no tiles"));
        UserDefaults defaults;
        const Preferences prefs(defaults);
        const QColor background = m_request.background.value_or(doc.backgroundColor);
        const int status = render(layout, prefs, background);
        return status == 0 && !read.missingPhotos.isEmpty() ? 3 : status;
    }

    // The template to lay out: from a file, the built-in library, or the store's current values.
    QString chooseTemplate(UserDefaults &defaults, QVariantMap &templateData)
    {
        QVariantList templates;
        int index = 0;
        QString source;
        if (m_request.templateFile) {
            const TemplatesFile::ReadResult read = TemplatesFile::fromFile(*m_request.templateFile);
            if (!read.ok())
                return read.error;
            templates = read.templates;
            index = m_request.templateIndex;
            source = *m_request.templateFile;
        } else if (m_request.builtin) {
            const QString resources = Paths::resourcesFolder();
            const TemplateStore::Templates builtIn = TemplateStore::readBuiltInTemplates(resources);
            if (builtIn.isEmpty())
                return QStringLiteral("no built-in templates in '%1' (set TESSARY_RESOURCES to the resources folder)")
                    .arg(resources);
            for (const TemplateStore::Template &t : builtIn)
                templates << (t ? QVariant(*t) : QVariant());
            index = int(TemplateTables::rowOfNumber(*m_request.builtin));
            source = QStringLiteral("the built-in library");
        } else {
            if (!defaults.isOpen())
                return QStringLiteral("cannot open the user defaults store: %1").arg(defaults.errorString());
            const Preferences prefs(defaults);
            if (prefs.savedTessaryDataModules().isEmpty())
                return QStringLiteral("the user defaults store '%1' holds no collage yet; choose one with --template "
                                      "FILE or --builtin N")
                    .arg(defaults.filePath());
            // The current collage's template, as a collage document takes it from the store.
            CollageDocument current;
            current.setTemplateFromDefaults(defaults);
            templateData = current.templateData;
            return QString();
        }
        if (index >= templates.size())
            return QStringLiteral("%1 has %2 templates (1 to %2); there is no template %3")
                .arg(source)
                .arg(templates.size())
                .arg(TemplateTables::numberOfRow(index));
        if (templates[index].typeId() != QMetaType::QVariantMap)
            return QStringLiteral("template %1 of %2 is not a template dictionary").arg(TemplateTables::numberOfRow(index)).arg(source);
        templateData = templates[index].toMap();
        return QString();
    }

    RenderPhotoList photoList(UserDefaults &defaults, const QString &resources, const Preferences &prefs)
    {
        if (!m_request.photos.isEmpty()) {
            QStringList absolute;
            for (const QString &p : m_request.photos)
                absolute << QFileInfo(p).absoluteFilePath();
            return RenderPhotoList(absolute, {}, -1);
        }
        if (!defaults.isOpen())
            return RenderPhotoList({}, {}, -1);
        const ImageBookmarks bookmarks(defaults, resources, m_alerts);
        return RenderPhotoList(bookmarks.images(), bookmarks.imageAlignments(), prefs.imageBrowserSeletion(),
                               bookmarks.framings());
    }

    int printLayout(const CollageLayout &layout)
    {
        QTextStream &out = m_context.out;
        out << "collage\t" << layout.contentSize.width() << '\t' << layout.contentSize.height() << '\t'
            << CoordinateTransform::name(layout.coordinateTransform) << '\n';
        for (const TileLayout &t : layout.tiles) {
            out << "tile\t" << t.tag << '\t' << t.frame.x() << '\t' << t.frame.y() << '\t' << t.frame.width() << '\t'
                << t.frame.height() << '\t' << t.imageAlignment << '\t' << (t.placeholder ? QString() : t.imagePath)
                << '\n';
        }
        for (qsizetype index : layout.skippedModules)
            out << "skipped\t" << index << '\n';
        return 0;
    }

    int render(const CollageLayout &layout, const Preferences &prefs, const QColor &background)
    {
        CollageRenderer::Options options;
        options.background = background;
        options.renderEmptyTiles = m_request.renderEmptyTiles || prefs.renderEmptyTiles();
        options.threads = m_request.threads;
        // A progress line only for a person watching a terminal.
        const bool terminal = m_context.err.string() == nullptr && isatty(STDERR_FILENO);
        if (terminal) {
            options.progress = [this](int done, int total) {
                m_context.err << "\rRendering: " << done << " of " << total << " tiles" << Qt::flush;
            };
        }

        if (m_request.page)
            return renderPage(layout, options, terminal);
        qint64 scale = 1;
        CollageRenderer::Result result;
        if (m_request.unscaled) {
            result = CollageRenderer::renderUnscaled(layout, options);
        } else {
            scale = m_request.scale;
            if (scale == 0) {
                scale = RenderScale::scaleFactor(RenderScale::freeMemoryMB(), layout.contentSize,
                                                 RenderScale::largestScaleFactor(layout));
            }
            result = CollageRenderer::renderScaled(layout, scale, options);
        }
        if (terminal)
            m_context.err << '\n';
        if (!result.ok())
            return m_context.fail(QStringLiteral("render: %1").arg(result.error));
        for (const QString &w : result.warnings)
            m_context.err << "tessary-cli: warning: " << w << " (its tile is left empty)\n";

        const QString error = write(result.image);
        if (!error.isEmpty())
            return m_context.fail(QStringLiteral("render: %1").arg(error));
        m_context.out << "Wrote " << m_request.output << ": " << result.image.width() << " x " << result.image.height()
                      << " pixels, scale " << scale << '\n';
        return result.warnings.isEmpty() ? 0 : 3;
    }

    // The collage rendered afresh for the page, written as a PDF or as a picture of the page.
    int renderPage(const CollageLayout &layout, const CollageRenderer::Options &options, bool terminal)
    {
        const PagePreset &page = *m_request.page;
        const QString noRoom = page.noRoomReason(layout.contentSize);
        if (!noRoom.isEmpty())
            return m_context.fail(QStringLiteral("render: %1").arg(noRoom));
        const CollageRenderer::Result result = CollageRenderer::renderAtScale(layout, page.scaleFor(layout.contentSize), options);
        if (terminal)
            m_context.err << '\n';
        if (!result.ok())
            return m_context.fail(QStringLiteral("render: %1").arg(result.error));
        for (const QString &w : result.warnings)
            m_context.err << "tessary-cli: warning: " << w << " (its tile is left empty)\n";
        const QSize shown = CollageRenderer::canvasSize(layout.contentSize, 1);
        if (page.enlargesBeyond(shown, PhotoSharpness::sharpest(layout, 1)))
            m_context.err << "tessary-cli: warning: the page enlarges the collage "
                          << QString::number(page.enlargement(shown), 'f', 1)
                          << " times, beyond the detail of its sharpest photo: the print will look soft\n";

        QString error;
        if (isPdfOutput(m_request.output)) {
            const PageRenderer::Document document{QFileInfo(m_request.output).completeBaseName()};
            if (!PageRenderer::writePdf(result.image, page, m_request.output, document, &error))
                return m_context.fail(QStringLiteral("render: cannot write '%1': %2").arg(m_request.output, error));
        } else if (const QString failed = write(PageRenderer::pageImage(result.image, page)); !failed.isEmpty()) {
            return m_context.fail(QStringLiteral("render: %1").arg(failed));
        }
        const QSizeF points = page.sizeInPoints();
        m_context.out << "Wrote " << m_request.output << ": " << page.name()
                      << (page.isLandscape() ? " landscape" : "") << " page, " << QString::number(points.width(), 'f', 1)
                      << " x " << QString::number(points.height(), 'f', 1) << " points, " << page.pixelSize().width()
                      << " x " << page.pixelSize().height() << " pixels at " << page.dotsPerInch()
                      << " dpi; the collage " << result.image.width() << " x " << result.image.height() << " pixels\n";
        return result.warnings.isEmpty() ? 0 : 3;
    }

    // Writes the picture through the result encoder, atomically: a failed write leaves any
    // earlier file in place. PNG goes on every core (or --threads), at a fast level unless a
    // quality asks otherwise; a page's picture carries the page's resolution.
    QString write(const QImage &image)
    {
        ResultEncoder::Settings settings;
        settings.format = ResultFormat::formatForSuffix(QFileInfo(m_request.output).suffix());
        if (m_request.quality >= 0) {
            settings.quality = m_request.quality;
            settings.pngLevel = ResultEncoder::pngLevel(m_request.quality);
        }
        settings.threads = m_request.threads;
        if (m_request.page)
            settings.dotsPerMeter = image.dotsPerMeterX();
        QString error;
        if (!ResultEncoder::writeFile(image, m_request.output, settings, &error))
            return QStringLiteral("cannot write '%1': %2").arg(m_request.output, error);
        return QString();
    }

    CliContext &m_context;
    const Request &m_request;
    PrintingAlertPresenter m_alerts;
};

} // namespace

int RenderCommand::run(const QStringList &args, CliContext &context)
{
    if (CliContext::wantsHelp(args)) {
        context.out << kHelp;
        return 0;
    }
    Request request;
    if (const QString error = parse(args, request); !error.isEmpty())
        return context.fail(QStringLiteral("render: %1\nRun 'tessary-cli render --help' for the options.").arg(error), 2);
    return Render(context, request).run();
}

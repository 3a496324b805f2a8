#include "GalleryWriter.h"

#include "LayoutProof.h"
#include "SetPreview.h"
#include "TemplateThumbnail.h"

#include "foundation/AtomicFileWriter.h"
#include "foundation/PropertyList.h"
#include "templates/TemplatesFile.h"

#include <QDir>

#include <algorithm>

namespace {

QVariantList templatesOf(const GallerySets::Set &set, QString *error)
{
    QVariantList templates;
    for (const TemplateDesign &d : set.designs) {
        const QImage thumbnail = TemplateThumbnail::render(d.columns(), d.rows(), d.tiles(), d.style().cornerRadius,
                                                           d.colourSeed());
        const QVariantMap t = d.templateDictionary(TemplateThumbnail::png(thumbnail));
        if (const QString problem = LayoutProof::check(d, t); !problem.isEmpty()) {
            *error = QStringLiteral("%1: %2").arg(d.name(), problem);
            return {};
        }
        templates.append(t);
    }
    return templates;
}

QString photoRange(const GallerySets::Set &set)
{
    int least = INT_MAX, most = 0;
    for (const TemplateDesign &d : set.designs) {
        least = std::min(least, d.moduleCount());
        most = std::max(most, d.moduleCount());
    }
    return least == most ? QStringLiteral("%1 photos").arg(least) : QStringLiteral("%1\u2013%2 photos").arg(least).arg(most);
}

QString slugToFile(const QString &slug)
{
    return slug.toLower() + QStringLiteral(".png");
}

} // namespace

bool GalleryWriter::write(const QString &folder, const std::vector<GallerySets::Set> &sets, QString *error)
{
    QDir dir(folder);
    if (!dir.mkpath(QStringLiteral("sets")) || !dir.mkpath(QStringLiteral("thumbnails"))) {
        *error = QStringLiteral("cannot make %1").arg(folder);
        return false;
    }
    int seed = 0;
    for (const GallerySets::Set &set : sets) {
        const QVariantList templates = templatesOf(set, error);
        if (templates.isEmpty()) {
            if (error->isEmpty())
                *error = QStringLiteral("%1 has no templates").arg(set.title);
            return false;
        }
        const QString plist = dir.filePath(QStringLiteral("sets/") + set.fileName());
        if (!PropertyList::writeFile(plist, TemplatesFile::makeTemplateDictionaryWithTemplates(templates),
                                     PropertyList::Format::Xml, error))
            return false;
        const QImage preview = SetPreview::render(templates, seed);
        seed += 5;
        const QString png = dir.filePath(QStringLiteral("thumbnails/") + slugToFile(set.slug));
        if (!AtomicFileWriter::write(png, TemplateThumbnail::png(preview), error))
            return false;
    }
    return AtomicFileWriter::write(dir.filePath(QStringLiteral("index.html")), indexHtml(sets).toUtf8(), error)
        && AtomicFileWriter::write(dir.filePath(QStringLiteral("gallery.css")), styleSheet().toUtf8(), error);
}

QString GalleryWriter::indexHtml(const std::vector<GallerySets::Set> &sets)
{
    QString cards;
    for (const GallerySets::Set &set : sets) {
        cards += QStringLiteral(
                     "    <a class=\"card\" href=\"sets/%1\" title=\"Add %2 to My Templates\">\n"
                     "      <img src=\"thumbnails/%3\" alt=\"The templates of %2\" width=\"360\" height=\"220\">\n"
                     "      <div class=\"info\">\n"
                     "        <h2>%2</h2>\n"
                     "        <p>%4</p>\n"
                     "        <div class=\"meta\"><span>%5 templates \u00b7 %6</span><span class=\"add\">Add to My Templates</span></div>\n"
                     "      </div>\n"
                     "    </a>\n")
                     .arg(set.fileName(), set.title.toHtmlEscaped(), slugToFile(set.slug), set.blurb.toHtmlEscaped())
                     .arg(set.designs.size())
                     .arg(photoRange(set));
    }
    return QStringLiteral(
               "<!DOCTYPE html>\n"
               "<html lang=\"en\">\n"
               "<head>\n"
               "  <meta charset=\"utf-8\">\n"
               "  <meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
               "  <title>Tessary Template Gallery</title>\n"
               "  <link rel=\"stylesheet\" href=\"gallery.css\">\n"
               "</head>\n"
               "<body>\n"
               "  <header>\n"
               "    <h1>Template Gallery</h1>\n"
               "    <p>Click a set to add its templates to My Templates, before the template you have selected.</p>\n"
               "  </header>\n"
               "  <main class=\"grid\">\n"
               "%1"
               "  </main>\n"
               "  <footer>These sets ship with Tessary and work offline.</footer>\n"
               "</body>\n"
               "</html>\n")
        .arg(cards);
}

QString GalleryWriter::styleSheet()
{
    return QStringLiteral(
        "* { box-sizing: border-box; }\n"
        "html { background: #efece6; }\n"
        "body { margin: 0 auto; max-width: 1200px; padding: 28px 32px 24px;\n"
        "       font: 15px/1.45 \"Cantarell\", \"Noto Sans\", \"DejaVu Sans\", sans-serif; color: #2b2b2b; }\n"
        "header h1 { margin: 0 0 4px; font-size: 26px; font-weight: 600; letter-spacing: 0.2px; }\n"
        "header p { margin: 0 0 22px; color: #5d5a55; }\n"
        ".grid { display: grid; grid-template-columns: repeat(auto-fill, minmax(300px, 1fr)); gap: 22px; }\n"
        ".card { display: flex; flex-direction: column; background: #ffffff; border-radius: 10px;\n"
        "        overflow: hidden; text-decoration: none; color: inherit;\n"
        "        box-shadow: 0 1px 2px rgba(0,0,0,0.08), 0 4px 14px rgba(0,0,0,0.06);\n"
        "        transition: transform 0.12s ease, box-shadow 0.12s ease; }\n"
        ".card:hover { transform: translateY(-2px);\n"
        "              box-shadow: 0 2px 4px rgba(0,0,0,0.10), 0 10px 24px rgba(0,0,0,0.10); }\n"
        ".card img { display: block; width: 100%; height: auto; aspect-ratio: 360 / 220; background: #f7f5f0; }\n"
        ".info { padding: 12px 16px 14px; border-top: 1px solid #ece8e1; }\n"
        ".info h2 { margin: 0 0 4px; font-size: 17px; font-weight: 600; }\n"
        ".info p { margin: 0 0 10px; color: #5d5a55; font-size: 13.5px; }\n"
        ".meta { display: flex; justify-content: space-between; align-items: center; font-size: 12.5px; color: #7a766f; }\n"
        ".add { color: #2f6fb3; font-weight: 600; }\n"
        ".card:hover .add { text-decoration: underline; }\n"
        "footer { margin-top: 26px; font-size: 12.5px; color: #8a867f; text-align: center; }\n");
}

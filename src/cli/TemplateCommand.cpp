#include "TemplateCommand.h"

#include "CliVerbs.h"
#include "PrintingAlertPresenter.h"

#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageBrowserController.h"
#include "model/CoordinateTransform.h"
#include "model/LayoutEngine.h"
#include "templates/TemplateEditor.h"
#include "templates/TemplateExporter.h"
#include "templates/TemplateStore.h"
#include "templates/TemplateTables.h"
#include "templates/TemplatesFile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <map>

namespace {

const CliVerbs &verbs()
{
    static const CliVerbs table(QStringLiteral("template"), {
        {QStringLiteral("info"), {"info FILE", "one line per template of a templates file: number, nbrModules, content\n"
                                               "      size, module size, border width, modules, thumbnail"}},
        {QStringLiteral("list"), {"list [builtin|user]", "one line per template of the built-in store and of My Templates,\n"
                                                         "      each led by its store and number"}},
        {QStringLiteral("apply"), {"apply N", "choose built-in template N: its layout values go into the store"}},
        {QStringLiteral("apply-user"), {"apply-user N", "choose template N of My Templates"}},
        {QStringLiteral("import"), {"import FILE...", "append the templates of each templates file to My Templates; a\n"
                                                    "      file that adds none is named with the reason, and the exit\n"
                                                    "      status is 1"}},
        {QStringLiteral("export-one"), {"export-one FILE [--builtin]", "write My Templates (or the built-in store) as one templates file"}},
        {QStringLiteral("export-many"), {"export-many FOLDER", "write each template of My Templates that has a thumbnail as its own\n"
                                                              "      file beside its icon, with an HTML index, into FOLDER"}},
        {QStringLiteral("delete"), {"delete N", "delete template N of My Templates; when it was the selected one, the\n"
                                                "      template that moves into its row is selected and applied"}},
        {QStringLiteral("sort"), {"sort", "sort My Templates by number of modules; the selected template stays\n"
                                           "      selected at its new row"}},
        {QStringLiteral("layout"), {"layout [--size WxH] [--transform T] [--spacing S]",
                                    "lay out the current template for the current photos and print one\n"
                                    "      line per module: its tile's frame, photo and alignment, or that it\n"
                                    "      fits nowhere. The collage is fitted to WxH points (default: the\n"
                                    "      template's own size); T is the coordinate transform 0-4, S the\n"
                                    "      spacing type (0 gaps, 1 overlap)"}},
    },
        QStringLiteral(
        "\nTemplates are numbered from 1, as 'list' prints them and the window shows them. The built-in\n"
        "templates are read from the resources folder ($TESSARY_RESOURCES when set); My Templates\n"
        "and the current layout live in the user\n"
        "defaults store ($TESSARY_DEFAULTS when set).\n"));
    return table;
}

QString verbHelp(const QString &name)
{
    return verbs().verbHelp(name);
}

QString number(double v)
{
    return QString::number(v, 'g', 10);
}

class Templates
{
public:
    Templates(CliContext &context, UserDefaults &defaults)
        : m_context(context)
        , m_defaults(defaults)
        , m_alerts(context.err)
        , m_store(defaults)
        , m_editor(m_store, defaults, m_alerts)
    {
        m_store.loadBuiltInTemplates(Paths::resourcesFolder());
        m_store.restoreUserTemplates();
        // The selection the last command or the window left, so edits keep it on its template.
        m_store.restoreSelectedUserRow();
        // A change that was not stored is said at once; the command then fails.
        QObject::connect(&m_store, &TemplateStore::writeFailed, [this](const QString &what, const QString &reason) {
            m_context.fail(QStringLiteral("%1 %2").arg(what, reason));
            ++m_writeFailures;
        });
    }

    int run(const QString &verb, const QStringList &args)
    {
        if (verb == QLatin1String("list"))
            return list(args);
        if (verb == QLatin1String("apply") || verb == QLatin1String("apply-user"))
            return apply(verb, args);
        if (verb == QLatin1String("import"))
            return import(args);
        if (verb == QLatin1String("export-one"))
            return exportOne(args);
        if (verb == QLatin1String("export-many"))
            return exportMany(args);
        if (verb == QLatin1String("delete"))
            return remove(args);
        if (verb == QLatin1String("sort"))
            return sort(args);
        return layout(args);
    }

private:
    int usageError(const QString &verb, const QString &message)
    {
        return m_context.fail(QStringLiteral("template %1: %2\n\n%3").arg(verb, message, verbHelp(verb)), 2);
    }
    // The row of the template number given on the command line, or -1 after reporting why it
    // names none.
    qsizetype parseRow(const QString &verb, const QString &text, qsizetype count)
    {
        bool ok = false;
        const qsizetype row = TemplateTables::rowOfNumber(text.toLongLong(&ok));
        if (ok && row >= 0 && row < count)
            return row;
        const QString range = count ? QStringLiteral("1 to %1").arg(count) : QStringLiteral("none: the store is empty");
        m_context.fail(QStringLiteral("template %1: '%2' is not a template number (valid: %3)").arg(verb, text, range));
        return -1;
    }

    void printStore(const QString &name, const TemplateStore::Templates &templates)
    {
        for (qsizetype i = 0; i < templates.size(); ++i)
            m_context.out << name << '\t' << TemplatesFile::describe(int(TemplateTables::numberOfRow(i)), *templates[i]) << '\n';
    }

    int list(const QStringList &args)
    {
        if (args.size() > 1 || (args.size() == 1 && args[0] != QLatin1String("builtin") && args[0] != QLatin1String("user")))
            return usageError(QStringLiteral("list"), QStringLiteral("expected nothing, 'builtin' or 'user'"));
        if (args.isEmpty() || args[0] == QLatin1String("builtin"))
            printStore(QStringLiteral("builtin"), m_store.builtInTemplates());
        if (args.isEmpty() || args[0] == QLatin1String("user"))
            printStore(QStringLiteral("user"), m_store.userTemplates());
        return 0;
    }

    int apply(const QString &verb, const QStringList &args)
    {
        if (args.size() != 1)
            return usageError(verb, QStringLiteral("expected one template number N"));
        const bool user = verb == QLatin1String("apply-user");
        const qsizetype row = parseRow(verb, args[0], user ? m_store.userTemplates().size() : m_store.builtInTemplates().size());
        if (row < 0)
            return 1;
        // As a click on the row: the selection is remembered, then the template applied.
        if (!m_defaults.setInteger(row, user ? Preferences::SelectedUserTemplateTableRow : Preferences::SelectedTemplateTableRow))
            return m_context.fail(QStringLiteral("template %1: %2").arg(verb, m_defaults.errorString()));
        if (!(user ? m_store.setUserDefaultsFromUserTemplateData(row) : m_store.setUserDefaultsFromBuiltInTemplateData(row)))
            return 1;
        m_context.out << "applied " << (user ? "user" : "builtin") << " template " << TemplateTables::numberOfRow(row) << '\n';
        return 0;
    }

    int import(const QStringList &args)
    {
        if (args.isEmpty())
            return usageError(QStringLiteral("import"), QStringLiteral("expected at least one FILE"));
        const qsizetype before = m_store.userTemplates().size();
        QStringList skipped;
        const bool added = m_editor.importTemplateFiles(args, false, &skipped);
        for (const QString &why : skipped)
            m_context.err << "tessary-cli: template import: skipped " << why << '\n';
        if (m_writeFailures)
            return 1;
        if (!added)
            return m_context.fail(QStringLiteral("template import: no templates found in the files given"));
        m_context.out << "imported " << (m_store.userTemplates().size() - before) << " templates; My Templates holds "
                      << m_store.userTemplates().size() << '\n';
        // The files that were read went in; any skipped one still fails the command.
        return skipped.isEmpty() ? 0 : 1;
    }

    int exportOne(const QStringList &args)
    {
        const bool builtIn = args.contains(QStringLiteral("--builtin"));
        QStringList rest = args;
        rest.removeAll(QStringLiteral("--builtin"));
        if (rest.size() != 1)
            return usageError(QStringLiteral("export-one"), QStringLiteral("expected one FILE"));
        const TemplateExporter exporter(m_store, m_alerts);
        const QVariantMap file =
            exporter.getTemplatesFileDictionaryForTemplateMenu(builtIn ? TemplateTable::BuiltIn : TemplateTable::User);
        QString error;
        if (!TemplateExporter::writeTemplatesFile(rest[0], file, &error))
            return m_context.fail(QStringLiteral("template export-one: %1").arg(error));
        m_context.out << "wrote " << file.value(QStringLiteral("templates")).toList().size() << " templates to " << rest[0] << '\n';
        return 0;
    }

    int exportMany(const QStringList &args)
    {
        if (args.size() != 1)
            return usageError(QStringLiteral("export-many"), QStringLiteral("expected one FOLDER"));
        if (!QFileInfo(args[0]).isDir())
            return m_context.fail(QStringLiteral("template export-many: %1 is not a folder").arg(args[0]));
        const TemplateExporter exporter(m_store, m_alerts);
        const TemplateExporter::ManyFilesResult r = exporter.saveAllIconsAndTemplates(args[0]);
        for (const QString &name : r.templateFiles)
            m_context.out << name << '\n';
        m_context.out << r.indexFile << '\n';
        if (!r.ok)
            return m_context.fail(QStringLiteral("template export-many: some files could not be written in %1").arg(args[0]));
        return 0;
    }

    int remove(const QStringList &args)
    {
        if (args.size() != 1)
            return usageError(QStringLiteral("delete"), QStringLiteral("expected one template number N"));
        const qsizetype row = parseRow(QStringLiteral("delete"), args[0], m_store.userTemplates().size());
        if (row < 0)
            return 1;
        const std::optional<qsizetype> applied = m_editor.deleteTemplateAtRow(row);
        if (m_writeFailures)
            return 1;
        m_context.out << "deleted template " << TemplateTables::numberOfRow(row) << "; My Templates holds "
                      << m_store.userTemplates().size() << '\n';
        if (applied && *applied >= 0)
            m_context.out << "applied user template " << TemplateTables::numberOfRow(*applied) << '\n';
        return 0;
    }

    int sort(const QStringList &args)
    {
        if (!args.isEmpty())
            return usageError(QStringLiteral("sort"), QStringLiteral("takes no arguments"));
        m_editor.doSortUserTemplates();
        if (m_writeFailures)
            return 1;
        printStore(QStringLiteral("user"), m_store.userTemplates());
        return 0;
    }

    int layout(const QStringList &args)
    {
        QSizeF size;
        int transform = 0;
        int spacing = 0;
        for (qsizetype i = 0; i < args.size(); ++i) {
            const QString option = args[i];
            if (i + 1 >= args.size())
                return usageError(QStringLiteral("layout"), QStringLiteral("'%1' needs a value").arg(option));
            const QString value = args[++i];
            bool ok = false;
            if (option == QLatin1String("--size")) {
                const QRegularExpressionMatch m = QRegularExpression(QStringLiteral("^(\\d+(?:\\.\\d+)?)x(\\d+(?:\\.\\d+)?)$")).match(value);
                if (!m.hasMatch())
                    return usageError(QStringLiteral("layout"), QStringLiteral("'%1' is not a size WxH").arg(value));
                size = QSizeF(m.captured(1).toDouble(), m.captured(2).toDouble());
            } else if (option == QLatin1String("--transform")) {
                transform = value.toInt(&ok);
                if (!ok || transform < 0 || transform > 4)
                    return usageError(QStringLiteral("layout"), QStringLiteral("the transform is 0 to 4, not '%1'").arg(value));
            } else if (option == QLatin1String("--spacing")) {
                spacing = value.toInt(&ok);
                if (!ok || spacing < 0)
                    return usageError(QStringLiteral("layout"), QStringLiteral("the spacing type is 0 or more, not '%1'").arg(value));
            } else {
                return usageError(QStringLiteral("layout"), QStringLiteral("unknown option '%1'").arg(option));
            }
        }
        const Preferences prefs(m_defaults);
        if (!size.isValid())
            size = QSizeF(prefs.contentSizeWidth(), prefs.contentSizeHeight());

        ImageBrowserController photos(m_defaults, Paths::resourcesFolder(), m_alerts);
        LayoutEngine engine(LayoutEngine::defaultImagePathInFolder(Paths::resourcesFolder()));
        engine.setCoordinateTransform(transform);
        engine.setSpacingType(spacing);
        engine.setup(m_defaults, size);
        CollageLayout layout = engine.reloadData(m_defaults, &photos);
        CoordinateTransform::applyCoordinateTransform(layout);

        m_context.out << "collage " << number(layout.contentSize.width()) << 'x' << number(layout.contentSize.height())
                      << " grid " << layout.columns << 'x' << layout.rows << " cell " << layout.moduleSizeInPoints
                      << " border " << layout.borderWidth << " modules " << layout.moduleCount << '\n';
        if (layout.moduleCount == 0)
            m_context.out << "no template applied: no modules\n";
        for (qsizetype i = 0; i < layout.moduleCount; ++i) {
            const TileLayout *tile = layout.tileForModule(i);
            if (!tile) {
                m_context.out << i << "\tfits nowhere\n";
                continue;
            }
            const QRectF &f = tile->frame;
            m_context.out << i << '\t' << number(f.x()) << ',' << number(f.y()) << ' ' << number(f.width()) << 'x'
                          << number(f.height()) << '\t' << (tile->placeholder ? QStringLiteral("(placeholder) ") : QString())
                          << tile->imagePath << "\talignment " << tile->imageAlignment << '\n';
        }
        return 0;
    }

    CliContext &m_context;
    UserDefaults &m_defaults;
    PrintingAlertPresenter m_alerts;
    TemplateStore m_store;
    TemplateEditor m_editor;
    int m_writeFailures = 0;
};

int info(const QStringList &args, CliContext &context)
{
    if (args.size() != 1)
        return context.fail(QStringLiteral("template info: expected one FILE\n\n%1").arg(verbHelp(QStringLiteral("info"))), 2);
    const TemplatesFile::ReadResult r = TemplatesFile::fromFile(args[0]);
    if (!r.ok())
        return context.fail(r.error);
    for (int i = 0; i < r.templates.size(); ++i) {
        const QVariant t = r.templates[i];
        if (t.typeId() != QMetaType::QVariantMap) {
            context.out << TemplateTables::numberOfRow(i) << "\t(not a template dictionary)\n";
            continue;
        }
        context.out << TemplatesFile::describe(int(TemplateTables::numberOfRow(i)), t.toMap()) << '\n';
    }
    return 0;
}

} // namespace

int TemplateCommand::run(const QStringList &args, CliContext &context)
{
    if (const std::optional<int> settled = verbs().settleWithoutAction(args, context))
        return *settled;
    const QString verb = args.first();
    const QStringList rest = args.mid(1);
    if (verb == QLatin1String("info"))
        return info(rest, context);
    UserDefaults defaults;
    if (!defaults.isOpen())
        return context.fail(defaults.errorString());
    Templates templates(context, defaults);
    return templates.run(verb, rest);
}

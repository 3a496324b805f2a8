#include "PhotosCommand.h"

#include "CliVerbs.h"
#include "PrintingAlertPresenter.h"

#include "foundation/Paths.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserController.h"

#include <QFileInfo>
#include <QSet>

#include <map>

namespace {

// Each action, with the line of help it shows on its own.
const CliVerbs &verbs()
{
    static const CliVerbs table(QStringLiteral("photos"), {
        {QStringLiteral("list"), {"list", "print each photo as INDEX, ALIGNMENT and PATH, separated by tabs; a\n"
                                                  "      backslash, newline, carriage return or tab in PATH is written\n"
                                                  "      as \\\\, \\n, \\r or \\t"}},
        {QStringLiteral("add"), {"add FILE...", "append the files, in order (folders and hidden files are refused)"}},
        {QStringLiteral("remove"), {"remove INDEX...", "remove the photos at the indexes; files Tessary made in\n"
                                                       "      Documents/Images are deleted with them"}},
        {QStringLiteral("move"), {"move FROM TO", "move the photo at FROM so that it ends up at index TO"}},
        {QStringLiteral("swap"), {"swap A B", "exchange the photos at A and B"}},
        {QStringLiteral("align"), {"align INDEX METHOD", "set the alignment of one photo; 'align all center',\n"
                                                         "      'align all fit' and 'align all smart' set every photo"}},
        {QStringLiteral("clear"), {"clear", "remove every photo (files Tessary made are deleted)"}},
    },
        QStringLiteral(
        "\nIndexes start at 0, as 'list' prints them. METHOD is one of 0 center, 1 start, 2 end, 3 fit,\n"
        "4 smart: fill the tile cropping both sides, keeping the start (left or top), keeping the end,\n"
        "show the whole photo, or fill it around the photo's subject. Setting one ends the photo's framing.\n"
        "The photo list lives in the user defaults store: $TESSARY_DEFAULTS when set. On a store that\n"
        "has never held a photo list, the factory photos are listed first, as in the application.\n"));
    return table;
}

QString verbHelp(const QString &name)
{
    return verbs().verbHelp(name);
}

// A non-negative index below count, or -1.
qsizetype parseIndex(const QString &text, qsizetype count)
{
    bool ok = false;
    const qint64 value = text.toLongLong(&ok);
    return ok && value >= 0 && value < count ? qsizetype(value) : -1;
}

// A path kept on one line of the listing: a backslash, newline, carriage return or tab in it is
// written as \\, \n, \r or \t.
QString escapedPath(const QString &path)
{
    QString out;
    out.reserve(path.size());
    for (const QChar c : path) {
        switch (c.unicode()) {
        case '\\': out += QLatin1String("\\\\"); break;
        case '\n': out += QLatin1String("\\n"); break;
        case '\r': out += QLatin1String("\\r"); break;
        case '\t': out += QLatin1String("\\t"); break;
        default: out += c;
        }
    }
    return out;
}

int parseAlignment(const QString &text)
{
    static const QStringList names{QStringLiteral("center"), QStringLiteral("start"), QStringLiteral("end"),
                                   QStringLiteral("fit"), QStringLiteral("smart")};
    const QString lower = text.toLower();
    if (lower == QLatin1String("centre"))
        return ImageBookmarks::ResizeCrop;
    if (names.contains(lower))
        return int(names.indexOf(lower));
    bool ok = false;
    const int value = text.toInt(&ok);
    return ok && value >= 0 && value < ImageBookmarks::kAlignmentCount ? value : -1;
}

class Photos
{
public:
    Photos(CliContext &context, UserDefaults &defaults)
        : m_context(context)
        , m_alerts(context.err)
        , m_controller(defaults, Paths::resourcesFolder(), m_alerts)
    {
    }

    int run(const QString &verb, const QStringList &args)
    {
        if (verb == QLatin1String("list"))
            return list(args);
        if (verb == QLatin1String("add"))
            return add(args);
        if (verb == QLatin1String("remove"))
            return remove(args);
        if (verb == QLatin1String("move"))
            return move(args);
        if (verb == QLatin1String("swap"))
            return swap(args);
        if (verb == QLatin1String("align"))
            return align(args);
        return clear(args);
    }

private:
    int usageError(const QString &verb, const QString &message)
    {
        return m_context.fail(QStringLiteral("photos %1: %2\n\n%3").arg(verb, message, verbHelp(verb)), 2);
    }
    int badIndex(const QString &verb, const QString &text)
    {
        const qsizetype n = m_controller.count();
        const QString range = n ? QStringLiteral("0 to %1").arg(n - 1) : QStringLiteral("none: the list is empty");
        return m_context.fail(QStringLiteral("photos %1: '%2' is not the index of a photo (valid: %3)").arg(verb, text, range));
    }
    // The exit code after the controller did its work: an alert means it refused something.
    int finish() { return m_alerts.alertCount() ? 1 : 0; }

    int list(const QStringList &args)
    {
        if (!args.isEmpty())
            return usageError(QStringLiteral("list"), QStringLiteral("takes no arguments"));
        const QStringList paths = m_controller.images();
        for (qsizetype i = 0; i < paths.size(); ++i)
            m_context.out << i << '\t' << m_controller.alignmentIndexAtIndex(i) << '\t' << escapedPath(paths.at(i)) << '\n';
        return finish();
    }

    int add(const QStringList &args)
    {
        if (args.isEmpty())
            return usageError(QStringLiteral("add"), QStringLiteral("name at least one file"));
        // Nothing is added unless every file can be.
        QStringList paths;
        int bad = 0;
        for (const QString &arg : args) {
            const QFileInfo info(arg);
            QString problem;
            if (!info.exists())
                problem = QStringLiteral("does not exist");
            else if (info.isDir())
                problem = QStringLiteral("is a folder");
            else if (!info.isFile())
                problem = QStringLiteral("is not a regular file");
            else if (info.fileName().startsWith(QLatin1Char('.')))
                problem = QStringLiteral("is a hidden file");
            else if (!info.isReadable())
                problem = QStringLiteral("cannot be read");
            if (!problem.isEmpty()) {
                m_context.err << "tessary-cli: photos add: " << arg << ' ' << problem << '\n';
                ++bad;
            }
            paths.append(info.absoluteFilePath());
        }
        if (bad)
            return m_context.fail(QStringLiteral("photos add: nothing was added"));
        m_controller.addImagesWithPaths(paths);
        return finish();
    }

    int remove(const QStringList &args)
    {
        if (args.isEmpty())
            return usageError(QStringLiteral("remove"), QStringLiteral("name at least one index"));
        QList<qsizetype> indexes;
        for (const QString &arg : args) {
            const qsizetype index = parseIndex(arg, m_controller.count());
            if (index < 0)
                return badIndex(QStringLiteral("remove"), arg);
            indexes.append(index);
        }
        m_controller.removeItemsAtIndexes(indexes);
        return finish();
    }

    int move(const QStringList &args)
    {
        if (args.size() != 2)
            return usageError(QStringLiteral("move"), QStringLiteral("expected FROM and TO"));
        const qsizetype from = parseIndex(args[0], m_controller.count());
        if (from < 0)
            return badIndex(QStringLiteral("move"), args[0]);
        const qsizetype to = parseIndex(args[1], m_controller.count());
        if (to < 0)
            return badIndex(QStringLiteral("move"), args[1]);
        // The browser names the place before the item is taken out; TO here is where it ends up.
        m_controller.moveItemsAtIndexes({from}, from < to ? to + 1 : to, ImageBrowserController::DropBefore);
        return finish();
    }

    int swap(const QStringList &args)
    {
        if (args.size() != 2)
            return usageError(QStringLiteral("swap"), QStringLiteral("expected two indexes"));
        for (const QString &arg : args) {
            if (parseIndex(arg, m_controller.count()) < 0)
                return badIndex(QStringLiteral("swap"), arg);
        }
        m_controller.exchangeItem(parseIndex(args[0], m_controller.count()), parseIndex(args[1], m_controller.count()));
        return finish();
    }

    int align(const QStringList &args)
    {
        if (args.size() != 2)
            return usageError(QStringLiteral("align"), QStringLiteral("expected INDEX (or all) and METHOD"));
        const int alignment = parseAlignment(args[1]);
        if (alignment < 0)
            return usageError(QStringLiteral("align"), QStringLiteral("'%1' is not an alignment").arg(args[1]));
        if (args[0] == QLatin1String("all")) {
            if (alignment != ImageBookmarks::ResizeCrop && alignment != ImageBookmarks::ResizeScale
                && alignment != ImageBookmarks::ResizeSmart)
                return usageError(QStringLiteral("align"), QStringLiteral("every photo can be set to center, fit or smart only"));
            if (m_controller.count() == 0)
                return 0;
            // The window's "centre all" and "fit all" act while a photo is selected.
            m_controller.selectIndex(0);
            if (alignment == ImageBookmarks::ResizeCrop)
                m_controller.imageAligmentCenterAll();
            else if (alignment == ImageBookmarks::ResizeScale)
                m_controller.imageAligmentFitAll();
            else
                m_controller.imageAligmentSmartAll();
            return finish();
        }
        const qsizetype index = parseIndex(args[0], m_controller.count());
        if (index < 0)
            return badIndex(QStringLiteral("align"), args[0]);
        m_controller.selectIndex(index);
        m_controller.imageAligmentDidChange(alignment);
        return finish();
    }

    int clear(const QStringList &args)
    {
        if (!args.isEmpty())
            return usageError(QStringLiteral("clear"), QStringLiteral("takes no arguments"));
        m_controller.clearImages();
        return finish();
    }

    CliContext &m_context;
    PrintingAlertPresenter m_alerts;
    ImageBrowserController m_controller;
};

} // namespace

int PhotosCommand::run(const QStringList &args, CliContext &context)
{
    if (const std::optional<int> settled = verbs().settleWithoutAction(args, context))
        return *settled;
    const QString verb = args.first();
    const QStringList rest = args.mid(1);
    UserDefaults defaults;
    if (!defaults.isOpen())
        return context.fail(defaults.errorString());
    Photos photos(context, defaults);
    return photos.run(verb, rest);
}

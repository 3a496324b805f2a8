#include "CommandTable.h"

#include "BlendCommand.h"
#include "DefaultsCommand.h"
#include "ImageCommand.h"
#include "PhotosCommand.h"
#include "RenderCommand.h"
#include "TemplateCommand.h"

const std::vector<CommandTable::Entry> &CommandTable::entries()
{
    static const std::vector<Entry> table{
        {QStringLiteral("defaults"), QStringLiteral("read and change the user defaults store"), DefaultsCommand::run},
        {QStringLiteral("photos"), QStringLiteral("list and edit the photo list"), PhotosCommand::run},
        {QStringLiteral("template"), QStringLiteral("list, apply, import, export and edit templates; print the layout"), TemplateCommand::run},
        {QStringLiteral("image"), QStringLiteral("inspect pictures and fit them into a size"), ImageCommand::run},
        {QStringLiteral("render"), QStringLiteral("render a collage into a picture, or print its tile frames"), RenderCommand::run},
        {QStringLiteral("blend"), QStringLiteral("join photos into one seamless picture (a panorama)"), BlendCommand::run},
    };
    return table;
}

QString CommandTable::usage()
{
    QString text = QStringLiteral("Usage: tessary-cli COMMAND [ARGS...]\n\nCommands:\n");
    for (const Entry &e : entries())
        text += QStringLiteral("  %1  %2\n").arg(e.name, -10).arg(e.summary);
    text += QStringLiteral("\nRun 'tessary-cli COMMAND --help' for the arguments of a command.\n"
                           "The user defaults store is $TESSARY_DEFAULTS when set, else\n"
                           "~/.local/share/tessary/defaults.sqlite.\n");
    return text;
}

int CommandTable::dispatch(const QStringList &args, CliContext &context)
{
    if (args.isEmpty()) {
        context.err << usage();
        return 2;
    }
    if (args.first() == QLatin1String("--help") || args.first() == QLatin1String("-h") || args.first() == QLatin1String("help")) {
        context.out << usage();
        return 0;
    }
    for (const Entry &e : entries()) {
        if (e.name == args.first())
            return e.run(args.mid(1), context);
    }
    context.err << "tessary-cli: unknown command '" << args.first() << "'\n\n" << usage();
    return 2;
}

#include "CommandTable.h"

#include "BlendCommand.h"
#include "DefaultsCommand.h"
#include "ImageCommand.h"
#include "PhotosCommand.h"
#include "RenderCommand.h"
#include "TemplateCommand.h"

#include <QCommandLineParser>
#include <QCoreApplication>

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
    QString text = QStringLiteral("Usage: tessary-cli COMMAND [ARGS...]\n       tessary-cli --help | --version\n\nCommands:\n");
    for (const Entry &e : entries())
        text += QStringLiteral("  %1  %2\n").arg(e.name, -10).arg(e.summary);
    text += QStringLiteral("\nRun 'tessary-cli COMMAND --help' for the arguments of a command.\n"
                           "The user defaults store is $TESSARY_DEFAULTS when set, else\n"
                           "~/.local/share/tessary/defaults.sqlite.\n");
    return text;
}

int CommandTable::dispatch(const QStringList &arguments, CliContext &context)
{
    // The program's own options come before the command; what follows it is the command's.
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show the commands."));
    const QCommandLineOption version({QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Show the version."));
    parser.addOptions({help, version});
    if (!parser.parse(QStringList{QStringLiteral("tessary-cli")} + arguments)) {
        context.err << "tessary-cli: " << parser.errorText() << "\n\n" << usage();
        return 2;
    }
    if (parser.isSet(version)) {
        context.out << "tessary-cli " << QCoreApplication::applicationVersion() << '\n';
        return 0;
    }
    const QStringList args = parser.positionalArguments();
    if (parser.isSet(help) || args.value(0) == QLatin1String("help")) {
        context.out << usage();
        return 0;
    }
    if (args.isEmpty()) {
        context.err << usage();
        return 2;
    }
    for (const Entry &e : entries()) {
        if (e.name == args.first())
            return e.run(args.mid(1), context);
    }
    context.err << "tessary-cli: unknown command '" << args.first() << "'\n\n" << usage();
    return 2;
}

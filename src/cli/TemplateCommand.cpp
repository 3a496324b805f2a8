#include "TemplateCommand.h"

#include "templates/TemplatesFile.h"

namespace {
const char *kHelp =
    "Usage:\n"
    "  tessary-cli template info FILE   one line per template of a templates file: index, nbrModules,\n"
    "                                   content size, module size, border width, modules, thumbnail\n";
}

int TemplateCommand::run(const QStringList &args, CliContext &context)
{
    if (args.isEmpty() || CliContext::wantsHelp(args)) {
        (args.isEmpty() ? context.err : context.out) << kHelp;
        return args.isEmpty() ? 2 : 0;
    }
    const QString verb = args.first();
    if (verb == QLatin1String("info")) {
        if (args.size() != 2)
            return context.fail(QStringLiteral("template info: expected one FILE\n\n%1").arg(QLatin1String(kHelp)), 2);
        const TemplatesFile::ReadResult r = TemplatesFile::fromFile(args[1]);
        if (!r.ok())
            return context.fail(r.error);
        for (int i = 0; i < r.templates.size(); ++i) {
            const QVariant t = r.templates[i];
            if (t.typeId() != QMetaType::QVariantMap) {
                context.out << i << "\t(not a template dictionary)\n";
                continue;
            }
            context.out << TemplatesFile::describe(i, t.toMap()) << '\n';
        }
        return 0;
    }
    return context.fail(QStringLiteral("template: unknown action '%1'\n\n%2").arg(verb, QLatin1String(kHelp)), 2);
}

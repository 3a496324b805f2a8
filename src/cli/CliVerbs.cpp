#include "CliVerbs.h"

QString CliVerbs::help() const
{
    QString text = QStringLiteral("Usage:\n");
    for (const auto &[name, verb] : m_verbs)
        text += QStringLiteral("  tessary-cli %1 %2\n      %3\n").arg(m_command, QLatin1String(verb.usage), QLatin1String(verb.description));
    return text + m_footer;
}

QString CliVerbs::verbHelp(const QString &name) const
{
    const Verb &verb = m_verbs.at(name);
    return QStringLiteral("Usage: tessary-cli %1 %2\n  %3\n").arg(m_command, QLatin1String(verb.usage), QLatin1String(verb.description));
}

std::optional<int> CliVerbs::settleWithoutAction(const QStringList &args, CliContext &context) const
{
    if (args.isEmpty()) {
        context.err << help();
        return 2;
    }
    const QString verb = args.first();
    if (verb == QLatin1String("--help") || verb == QLatin1String("-h") || verb == QLatin1String("help")) {
        context.out << help();
        return 0;
    }
    if (!contains(verb))
        return context.fail(QStringLiteral("%1: unknown action '%2'\n\n%3").arg(m_command, verb, help()), 2);
    if (CliContext::wantsHelp(args.mid(1))) {
        context.out << verbHelp(verb);
        return 0;
    }
    return std::nullopt;
}

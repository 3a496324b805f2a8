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

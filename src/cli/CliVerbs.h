#pragma once

#include "CliContext.h"

#include <QString>
#include <QStringList>

#include <map>
#include <optional>

// The actions of one tessary-cli command with their usage lines, and the help texts made from
// them: the whole command's, and one action's.
class CliVerbs
{
public:
    struct Verb {
        const char *usage;       // e.g. "move FROM TO"
        const char *description; // may continue on lines indented by six spaces
    };

    CliVerbs(QString command, std::map<QString, Verb> verbs, QString footer)
        : m_command(std::move(command)), m_verbs(std::move(verbs)), m_footer(std::move(footer))
    {
    }

    bool contains(const QString &name) const { return m_verbs.count(name) != 0; }
    // "Usage:", a usage line and description per action, then the footer.
    QString help() const;
    // The usage line and description of one action, which must exist.
    QString verbHelp(const QString &name) const;
    // Settles the calls that never reach an action: no arguments, a request for help (of the
    // command or of one action) and an unknown action. Returns their exit code, or nothing
    // when args.first() is an action to run with the rest of the arguments.
    std::optional<int> settleWithoutAction(const QStringList &args, CliContext &context) const;

private:
    QString m_command;
    std::map<QString, Verb> m_verbs;
    QString m_footer;
};

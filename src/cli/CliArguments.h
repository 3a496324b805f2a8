#pragma once

#include "CliContext.h"

#include <QString>
#include <QStringList>

// The program's arguments as the commands read them. Each is decoded the way Qt decodes file
// names, so a path given on the command line names the same file inside the program. A name
// whose bytes do not survive that (not valid UTF-8) cannot be opened through Qt at all: such an
// argument is refused with a message rather than reported later as a missing file.
class CliArguments
{
public:
    // argv without the program name.
    CliArguments(int argc, const char *const *argv);

    const QStringList &arguments() const { return m_arguments; }
    // The arguments that do not decode, as printable text (other bytes shown as \xHH).
    const QStringList &undecodable() const { return m_undecodable; }

    // Logging rules that turn the tessary category's progress and debugging lines on when
    // --verbose is given; empty otherwise (the category then shows only its warnings).
    QString loggingRules() const;

    // Refuses undecodable arguments (exit 2), else runs the command.
    int dispatch(CliContext &context) const;

private:
    QStringList m_arguments;
    QStringList m_undecodable;
};

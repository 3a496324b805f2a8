#pragma once

#include "CliContext.h"

#include <QStringList>

#include <functional>
#include <vector>

// The subcommands of tessary-cli, each a function from its arguments to an exit code.
class CommandTable
{
public:
    struct Entry {
        QString name;
        QString summary;
        std::function<int(const QStringList &, CliContext &)> run;
    };

    static const std::vector<Entry> &entries();
    // Runs argv-style arguments (without the program name).
    static int dispatch(const QStringList &args, CliContext &context);
    static QString usage();
};

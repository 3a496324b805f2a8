#pragma once

#include "cli/CliContext.h"
#include "cli/CommandTable.h"

#include <QString>
#include <QStringList>

// Runs tessary-cli arguments in-process and keeps what they printed.
struct CliRun {
    int code = -1;
    QString out;
    QString err;

    static CliRun of(const QStringList &args)
    {
        CliRun r;
        {
            CliContext context(&r.out, &r.err);
            r.code = CommandTable::dispatch(args, context);
        }
        return r;
    }
};

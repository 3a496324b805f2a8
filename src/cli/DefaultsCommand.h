#pragma once

#include "CliContext.h"

#include <QStringList>

// tessary-cli defaults: read, write, delete, import and export the user defaults store.
class DefaultsCommand
{
public:
    static int run(const QStringList &args, CliContext &context);
};

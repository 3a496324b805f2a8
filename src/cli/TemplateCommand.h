#pragma once

#include "CliContext.h"

#include <QStringList>

// tessary-cli template: inspect templates files.
class TemplateCommand
{
public:
    static int run(const QStringList &args, CliContext &context);
};

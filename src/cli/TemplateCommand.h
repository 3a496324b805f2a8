#pragma once

#include "CliContext.h"

#include <QStringList>

// tessary-cli template: inspect templates files, list and edit the template stores, apply a
// template as the window does, and print the layout of the current template and photos.
class TemplateCommand
{
public:
    static int run(const QStringList &args, CliContext &context);
};

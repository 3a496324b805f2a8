#pragma once

#include "CliContext.h"

#include <QStringList>

// tessary-cli image: inspect pictures and fit them into a size the way the collage does.
class ImageCommand
{
public:
    static int run(const QStringList &args, CliContext &context);
};

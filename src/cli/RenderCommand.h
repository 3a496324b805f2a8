#pragma once

#include "CliContext.h"

#include <QStringList>

// tessary-cli render: lays out a collage (the current one of the user defaults store, or a
// template from a file or the built-in library) with the stored or the given photos, and
// writes the rendered picture; or prints the tile frames.
class RenderCommand
{
public:
    // Exit codes: 0 done; 1 a file could not be read or written; 2 a bad argument;
    // 3 the picture was written but some photos could not be read (their tiles are empty).
    static int run(const QStringList &args, CliContext &context);
};

#pragma once

#include "CliContext.h"

#include <QStringList>

// tessary-cli blend: joins photos into one seamless picture (left to right, bottom to top or as
// a square), as the window's blend commands do, and streams it into a file. Ctrl+C stops it
// within a moment and leaves no file.
class BlendCommand
{
public:
    // Exit codes: 0 written; 1 nothing could be blended or written (the reason is printed);
    // 2 a bad argument; 130 interrupted.
    static int run(const QStringList &args, CliContext &context);
};

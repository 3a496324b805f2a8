#pragma once

#include "CliContext.h"

#include <QStringList>

// tessary-cli photos: list and edit the photo list kept in the user defaults store, through the
// same controller as the window's image browser.
class PhotosCommand
{
public:
    static int run(const QStringList &args, CliContext &context);
};

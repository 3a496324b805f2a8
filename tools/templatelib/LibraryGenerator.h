#pragma once

#include "LibraryWriter.h"

#include <QString>

#include <optional>
#include <vector>

// Makes the whole library in memory: chooses the designs, draws each thumbnail, builds each
// template dictionary and proves it with the layout engine. The first template that fails
// stops the run, named in the error.
class LibraryGenerator
{
public:
    static std::optional<std::vector<LibraryWriter::Entry>> generate(QString *error);

    // The entries in the order of the application's built-in list: the files in load order,
    // each in its own order, then stably sorted by module count.
    static std::vector<const LibraryWriter::Entry *> builtInRows(const std::vector<LibraryWriter::Entry> &entries);
};

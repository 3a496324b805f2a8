#include "LibraryGenerator.h"

#include "DesignCatalogue.h"
#include "LayoutProof.h"
#include "TemplateThumbnail.h"

#include <algorithm>

std::optional<std::vector<LibraryWriter::Entry>> LibraryGenerator::generate(QString *error)
{
    const std::vector<TemplateDesign> designs = DesignCatalogue::build(error);
    if (designs.empty())
        return std::nullopt;
    std::vector<LibraryWriter::Entry> entries;
    entries.reserve(designs.size());
    for (const TemplateDesign &d : designs) {
        const QImage thumbnail = TemplateThumbnail::render(d.columns(), d.rows(), d.tiles(), d.style().cornerRadius,
                                                           d.colourSeed());
        LibraryWriter::Entry entry{d, TemplateThumbnail::png(thumbnail), {}};
        entry.dictionary = d.templateDictionary(entry.thumbnail);
        const QString problem = LayoutProof::check(d, entry.dictionary);
        if (!problem.isEmpty()) {
            if (error)
                *error = QStringLiteral("template \"%1\" (%2 modules) fails: %3").arg(d.name()).arg(d.moduleCount()).arg(problem);
            return std::nullopt;
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

std::vector<const LibraryWriter::Entry *> LibraryGenerator::builtInRows(const std::vector<LibraryWriter::Entry> &entries)
{
    std::vector<const LibraryWriter::Entry *> rows;
    rows.reserve(entries.size());
    for (const QString &file : LibraryWriter::destinations(entries)) {
        for (const LibraryWriter::Entry &e : entries) {
            if (LibraryWriter::destinationFor(e.design) == file)
                rows.push_back(&e);
        }
    }
    std::stable_sort(rows.begin(), rows.end(), [](const LibraryWriter::Entry *a, const LibraryWriter::Entry *b) {
        return a->design.moduleCount() < b->design.moduleCount();
    });
    return rows;
}

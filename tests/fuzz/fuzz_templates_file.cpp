#include "foundation/PropertyList.h"
#include "model/TessaryData.h"
#include "templates/TemplatesFile.h"

#include <cstddef>
#include <cstdint>

// A templates file as it arrives from outside: parsed, each template described, each module
// turned into a module record.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const PropertyList::ReadResult read = PropertyList::fromBytes(bytes, QStringLiteral("fuzz"));
    if (!read.ok())
        return 0;
    const TemplatesFile::ReadResult file = TemplatesFile::fromDictionary(read.value, QStringLiteral("fuzz"));
    for (int i = 0; i < file.templates.size(); ++i) {
        const QVariantMap t = file.templates[i].toMap();
        (void)TemplatesFile::describe(i, t);
        for (const QVariant &m : t.value(QStringLiteral("savedTessaryDataModules")).toList())
            (void)TessaryData::initWithDictionary(m.toMap()).dictionaryRepresentation();
    }
    return 0;
}

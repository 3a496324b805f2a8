#include "foundation/PropertyList.h"
#include "model/LayoutEngine.h"
#include "templates/TemplateStore.h"

#include <QSizeF>

#include <cstddef>
#include <cstdint>

// A templates file as it arrives from outside, each template laid out as choosing it would,
// at a few window sizes, spacing types and transforms. Nothing may crash or run away.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const PropertyList::ReadResult read = PropertyList::fromBytes(bytes, QStringLiteral("fuzz"));
    if (!read.ok())
        return 0;
    const TemplateStore::Templates templates = TemplateStore::templatesFromDictionary(read.value);
    LayoutEngine engine(QStringLiteral("/placeholder.png"));
    int round = 0;
    for (const TemplateStore::Template &t : templates) {
        engine.setSpacingType(round % 2);
        engine.setCoordinateTransform(round % 5);
        engine.setIncrements(round % 3 == 0 ? 5 : 250, round % 3 == 1 ? -40 : 5);
        const QSizeF available = round % 2 ? QSizeF(800, 600) : QSizeF(0, 0);
        (void)engine.layoutTemplate(*t, available);
        ++round;
    }
    return 0;
}

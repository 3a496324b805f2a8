#include "foundation/PropertyList.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const PropertyList::ReadResult r = PropertyList::fromBytes(bytes, QStringLiteral("fuzz"));
    if (r.ok()) {
        // Whatever reads must write back in both formats and read again.
        const QByteArray bin = PropertyList::toBinary(r.value);
        if (!bin.isEmpty())
            (void)PropertyList::fromBytes(bin, QStringLiteral("fuzz-bin"));
        (void)PropertyList::toXml(r.value);
    }
    return 0;
}

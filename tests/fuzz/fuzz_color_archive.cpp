#include "foundation/KeyedArchiveColor.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QColor color = KeyedArchiveColor::decodeOrWhite(bytes);
    // Whatever was read must encode and read back.
    (void)KeyedArchiveColor::decode(KeyedArchiveColor::encode(color));
    return 0;
}

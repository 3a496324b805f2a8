#include "foundation/PropertyList.h"
#include "model/CollageDocument.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// A collage document as it arrives from a file manager: parsed, read as a document and, when
// accepted, written again; what was accepted once must be accepted again after writing.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const PropertyList::ReadResult read = PropertyList::fromBytes(bytes, QStringLiteral("fuzz"));
    if (!read.ok())
        return 0;
    const QString folder = QStringLiteral("/nonexistent-fuzz-folder");
    const CollageDocument::ReadResult doc = CollageDocument::fromPropertyList(read.value, folder);
    if (!doc.ok())
        return 0;
    QString error;
    const QByteArray written = PropertyList::toXml(doc.document->toPropertyList(folder), &error);
    if (written.isEmpty())
        std::abort();
    const PropertyList::ReadResult again = PropertyList::fromBytes(written, QStringLiteral("fuzz again"));
    if (!again.ok() || !CollageDocument::fromPropertyList(again.value, folder).ok())
        std::abort();
    return 0;
}

#include "HeapLimit.h"
#include "SameValue.h"
#include "platform/linux/LinuxPropertyList.h"

#include <cstddef>
#include <cstdint>

using namespace quillmark;

/// The header is put in front of the bytes, so that none is ever taken for the other form.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray document =
        "bplist00" + QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    QVariant value;
    {
        const fuzz::HeapLimit limit(64);
        value = LinuxPropertyList().parse(document);
    }
    if (value.isValid()) {
        fuzz::requireRoundTrip(value);
    }
    return 0;
}

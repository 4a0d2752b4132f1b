#include "HeapLimit.h"
#include "SameValue.h"
#include "platform/linux/LinuxPropertyList.h"

#include <cstddef>
#include <cstdint>

using namespace quillmark;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray document(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
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

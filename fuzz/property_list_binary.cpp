#include "HeapLimit.h"
#include "SameValue.h"
#include "platform/propertylist/PropertyListFormats.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace quillmark;

/// The header is put in front of the bytes, so that none is ever taken for the other form.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string document = "bplist00" + std::string(reinterpret_cast<const char *>(data), size);
    Value value;
    {
        const fuzz::HeapLimit limit(64);
        value = PropertyListFormats().parse(document);
    }
    if (!value.isNothing()) {
        fuzz::requireRoundTrip(value);
    }
    return 0;
}

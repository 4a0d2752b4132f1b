#include "HeapLimit.h"
#include "SameValue.h"
#include "platform/propertylist/PropertyListFormats.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace quillmark;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string document(reinterpret_cast<const char *>(data), size);
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

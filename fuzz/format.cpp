#include "utils/Format.h"
#include "HeapLimit.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <vector>

using namespace quillmark;

namespace {

/// \param texts keeps what the arguments show.
FormatArgument anyArgument(FuzzedDataProvider &input, std::deque<std::string> &texts) {
    switch (input.ConsumeIntegralInRange(0, 5)) {
    case 0:
        return input.ConsumeIntegral<long long>();
    case 1:
        return input.ConsumeIntegral<unsigned long long>();
    case 2:
        return input.ConsumeFloatingPoint<double>();
    case 3:
        return static_cast<char>(input.ConsumeIntegral<uint8_t>());
    case 4:
        return static_cast<const char *>(nullptr);
    default:
        return texts.emplace_back(input.ConsumeRandomLengthString(16));
    }
}

} // namespace

/// The arguments are taken from the end of the input; what is left in front is the format.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzedDataProvider input(data, size);
    std::deque<std::string> texts;
    std::vector<FormatArgument> arguments;
    const int count = input.ConsumeIntegralInRange(0, 20);
    arguments.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        arguments.push_back(anyArgument(input, texts));
    }
    const std::string format = input.ConsumeRemainingBytesAsString();

    const fuzz::HeapLimit limit(64);
    const auto text = tryFormat(format, arguments);
    if (format.find('%') == std::string::npos && arguments.size() <= 16 && text != format) {
        std::abort();
    }
    return 0;
}

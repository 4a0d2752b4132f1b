#pragma once

#include "platform/values/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillmark::test {

/// JSONEncoder's rules once more, one after the other, slow and without a thought for speed: what JSONEncoder is
/// compared with. The operations have the names and the meaning that they have there.
class JSONReference {
public:
    JSONReference() = delete;

    static std::string createJSONStrFromDict(const Dictionary &dictionary);
    static std::optional<Dictionary> createObjFromJSONStr(std::u16string_view text);
    static std::optional<std::string> jsonStringForStr(std::u16string_view text, std::uint64_t &at, bool &error);
    static Value jsonNumberForStr(std::u16string_view text, std::uint64_t &at, bool &error);
    static std::string stringByAddingJSONEscape(std::string_view text);
    static std::string stringByReplacingJSONEscape(std::string_view text);
};

} // namespace quillmark::test

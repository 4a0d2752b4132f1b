#include "SameValue.h"
#include "accounts/JSONEncoder.h"
#include "unit/accounts/JSONReference.h"
#include "utils/Utf16.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace quillmark;
using test::JSONReference;

namespace {

void require(bool holds, const char *what) {
    if (!holds) {
        std::fprintf(stderr, "Not so: %s\n", what);
        std::abort();
    }
}

/// A key is written as it is, and none is read without a character.
bool isReadBack(const std::string &key) { return !key.empty() && key.find_first_of("\"\\") == std::string::npos; }

/// An exponent is not read as one, and what stands behind its sign would be the next member's value.
bool isReadBack(const Value &value) {
    std::array<char, 32> text{};
    if (const auto *real = value.as<double>()) {
        std::snprintf(text.data(), text.size(), "%.16g", *real);
    }
    return std::strchr(text.data(), 'e') == nullptr;
}

/// A double that is whole comes back as an integer, another one with what sixteen digits and their sum leave of it.
bool isAlmost(double number, const Value &back) {
    const auto *real = back.as<double>();
    const auto *integer = back.as<std::int64_t>();
    const double found = real != nullptr ? *real : integer != nullptr ? static_cast<double>(*integer) : NAN;
    return std::abs(found - number) <= 1e-14 * std::abs(number);
}

/// What was read, written and read again is the same, where that can be: see isReadBack() and isAlmost().
void requireRoundTrip(const Dictionary &members) {
    const auto isMemberReadBack = [](const auto &member) {
        return isReadBack(member.first) && isReadBack(member.second);
    };
    if (!std::all_of(members.begin(), members.end(), isMemberReadBack)) {
        return;
    }
    const auto back = JSONEncoder::createObjFromJSONStr(JSONEncoder::createJSONStrFromDict(members));
    require(back && std::equal(back->begin(), back->end(), members.begin(), members.end(),
                               [](const auto &a, const auto &b) { return a.first == b.first; }),
            "the keys come back");
    for (const auto &[key, value] : members) {
        const auto *real = value.as<double>();
        const Value &found = valueOf(*back, key);
        require(real != nullptr ? isAlmost(*real, found) : fuzz::sameValue(value, found), "the values come back");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char *>(data), size); // NOLINT
    const std::u16string text = utf16(bytes);
    // A copy without a text's final null character, so that a step behind the end is seen.
    const std::vector<char16_t> characters(text.begin(), text.end());
    const std::u16string_view view(characters.data(), characters.size());

    const auto members = JSONEncoder::createObjFromJSONStr(view);
    const auto expected = JSONReference::createObjFromJSONStr(text);
    require(members.has_value() == expected.has_value(), "both are an object or none");
    require(!members || fuzz::sameValue(*members, *expected), "the members are the reference's");
    require(JSONEncoder::stringByAddingJSONEscape(bytes) == JSONReference::stringByAddingJSONEscape(bytes),
            "escaped as in the reference");
    require(JSONEncoder::stringByReplacingJSONEscape(bytes) == JSONReference::stringByReplacingJSONEscape(bytes),
            "unescaped as in the reference");
    if (members) {
        require(JSONEncoder::createJSONStrFromDict(*members) == JSONReference::createJSONStrFromDict(*members),
                "written as in the reference");
        requireRoundTrip(*members);
    }
    return 0;
}

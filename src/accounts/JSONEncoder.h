#pragma once

#include "platform/values/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

/// Turns a flat dictionary into one JSON object and back: members are texts, numbers and booleans, with no nesting, no
/// lists and no null. It is not a general JSON library. Documents of older versions of the product must read as they
/// always did, so what looks wrong here is deliberate and has a test.
///
/// What is read is counted in 16-bit characters, and `at` is a place among them.
class JSONEncoder {
public:
    JSONEncoder() = delete;

    /// The members stand in the dictionary's order, without any blanks. Keys are written as they are; a value that is
    /// no text, number or boolean is an empty text.
    static std::string createJSONStrFromDict(const Dictionary &dictionary);

    /// The members of an object, or nothing when the text is not one.
    static std::optional<Dictionary> createObjFromJSONStr(std::string_view text);
    static std::optional<Dictionary> createObjFromJSONStr(std::u16string_view text);

    /// Reads a text whose opening quote stands just before `at`, and moves `at` behind its closing quote. Only
    /// characters up to U+00FF survive; of others the lower byte is left. \param error set when a backslash ends the
    /// text. \returns nothing then, and without a closing quote.
    static std::optional<std::string> jsonStringForStr(std::u16string_view text, std::uint64_t &at, bool &error);

    /// Reads a number and moves `at` to the first character that does not belong to it. A "-" anywhere in it makes it
    /// negative, exponents are not applied, and an integer part beyond 64 bits loses its upper bits. \param error set
    /// by a second decimal point. \returns nothing then.
    static Value jsonNumberForStr(std::u16string_view text, std::uint64_t &at, bool &error);

    /// Puts a backslash before backslash, quote and slash, and writes \\b, \\f, \\n, \\r and \\t for what they stand
    /// for.
    static std::string stringByAddingJSONEscape(std::string_view text);

    /// Undoes these escapes one kind after the other, the double backslash first: an escaped backslash with an n behind
    /// it becomes a line feed.
    static std::string stringByReplacingJSONEscape(std::string_view text);
};

} // namespace quillmark

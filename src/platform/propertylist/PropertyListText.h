#pragma once

#include "platform/values/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

/// The scalar values of an XML property list, from the raw text between their tags. Nothing when
/// the text is malformed.

/// Raw UTF-8 with the predefined entities and character references resolved; no other entity is known.
std::optional<std::string> propertyListString(std::string_view raw);
/// Decimal or, after 0x, hexadecimal; from -2^63 to 2^64 - 1.
Value propertyListInteger(std::string_view raw);
/// What a double can hold, infinities and "nan" included.
Value propertyListReal(std::string_view raw);
/// YYYY-MM-DDTHH:MM:SSZ
Value propertyListDate(std::string_view raw);
/// Base64, blanks and line breaks anywhere.
Value propertyListData(std::string_view raw);

} // namespace quillmark

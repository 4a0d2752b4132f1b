#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

// Base64 with the usual alphabet (RFC 4648, section 4).

/// With the padding at its end, without line breaks.
std::string base64(std::string_view bytes);

/// The bytes of a text; absent when a character does not belong to Base64. Padding may be left out, and stands nowhere
/// but at the end of whole groups of four; bits that make no whole byte are passed over.
std::optional<std::string> bytesOfBase64(std::string_view text);

} // namespace quillmark

#pragma once

#include "platform/values/Value.h"

namespace quillmark {

// What the bytes of a binary property list mean, once they are taken out of it. Nothing stands for any fault.

/// Integers of up to 4 bytes are unsigned, one of 8 bytes is signed, and one of 16 bytes holds what 8 can't.
/// \param upper the upper half of one of 16 bytes. \param width the number of bytes.
Value integerFrom(std::optional<std::uint64_t> upper, std::optional<std::uint64_t> lower, std::int64_t width);

/// \param seconds since 2001-01-01T00:00:00Z.
Value dateFrom(double seconds);

/// A text of characters of one byte each.
Value asciiTextFrom(std::string_view bytes);

/// A text of 16-bit characters in big-endian order; half a pair must not stand alone.
Value utf16TextFrom(std::string_view bytes);

} // namespace quillmark

#pragma once

#include "utils/Format.h"

#include <optional>
#include <string>

namespace quillmark {

/// Absent when the format is.
std::optional<std::string> _formatted(const FormatText &format, FormatArguments arguments);

/// The arguments put into a printf-style format with %@. A format that does not match its arguments comes back as it
/// is, with an error line in the log; an absent one gives an empty text.
template <class Format, class... Arguments>
std::string formatted(const Format &format, const Arguments &...arguments) {
    return _formatted(format, FormatArgumentArray<Arguments...>{FormatArgument(arguments)...}).value_or("");
}

} // namespace quillmark

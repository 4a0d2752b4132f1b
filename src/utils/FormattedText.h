#pragma once

#include "utils/Format.h"

namespace quillmark {

QString _formatted(const FormatText &format, FormatArguments arguments);

/// The arguments put into a printf-style format with %@. A format that does not match its arguments comes back as it
/// is, with an error line in the log; an absent one gives a null text.
template <class Format, class... Arguments>
QString formatted(const Format &format, const Arguments &...arguments) {
    return _formatted(format, FormatArgumentArray<Arguments...>{FormatArgument(arguments)...});
}

} // namespace quillmark

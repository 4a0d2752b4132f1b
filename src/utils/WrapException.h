#pragma once

#include "utils/Exception.h"
#include "utils/Format.h"

namespace quillmark {

Exception _prepareException(Exception &innerException, const FormatText &format, FormatArguments arguments);

/// An exception to be raised in another one's place: its name, a new reason, and the stack of what went wrong before,
/// which the inner exception shares when it has one.
template <class Format, class... Arguments>
Exception prepareException(Exception &innerException, const Format &format, const Arguments &...arguments) {
    return _prepareException(innerException, format, FormatArgumentArray<Arguments...>{FormatArgument(arguments)...});
}

} // namespace quillmark

#include "utils/WrapException.h"

#include "utils/FormattedText.h"
#include "utils/Log.h"

namespace quillmark {

Exception _prepareException(Exception &innerException, const FormatText &format, FormatArguments arguments) {
    const std::string reason = _formatted(format, arguments).value_or("");
    ExceptionStack stack = innerException.stack();
    if (!stack) {
        stack = std::make_shared<std::vector<std::string>>();
    }
    stack->push_back(innerException.what());
    Exception wrapped(innerException.name(), reason, {{kExceptionStackKey, stack}});
    logDetail("Preparing exception %@ (%@)", wrapped.name(), wrapped.reason());
    return wrapped;
}

} // namespace quillmark

#include "utils/WrapException.h"

#include "utils/FormattedText.h"
#include "utils/Log.h"

namespace quillmark {

Exception _prepareException(Exception &innerException, const FormatText &format, FormatArguments arguments) {
    const QString reason = _formatted(format, arguments);
    ExceptionStack stack = innerException.stack();
    if (!stack) {
        stack = std::make_shared<QStringList>();
    }
    stack->append(formatted("%@ (%@)", innerException.name(), innerException.reason()));
    Exception wrapped(innerException.name(), reason, {{kExceptionStackKey, QVariant::fromValue(stack)}});
    logDetail("Preparing exception %@ (%@)", wrapped.name(), wrapped.reason());
    return wrapped;
}

} // namespace quillmark

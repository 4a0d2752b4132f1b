#include "utils/ErrorText.h"

#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "utils/Error.h"
#include "utils/Exception.h"

#include <vector>

namespace quillmark {

std::string errorExceptionToString(const Exception &exception) {
    std::string text = exception.name() + " (" + _removeNewLinesInString(exception.reason()) + ')';
    const ExceptionStack stack = exception.stack();
    if (!stack) {
        return text;
    }
    std::string indent;
    const std::vector<std::string> newestFirst(stack->crbegin(), stack->crend());
    for (const std::string &cause : newestFirst) {
        indent += "  ";
        text.append("\n").append(indent).append("Because:\n").append(indent).append(cause);
    }
    return text;
}

Error errorFromException(const Exception &exception) {
    return {kErrorDomain,
            0,
            {{kLocalizedDescriptionKey, exception.reason()}, {kLocalizedFailureReasonKey, exception.name()}}};
}

std::string nserrorToString(const Error &error) {
    return '"' + error.failureReason().value_or("(null)") + "\" because \"" + error.description().value_or("(null)") +
           '"';
}

std::string posixErrorToString(int errnum) {
    const auto text = platform().systemInfo.posixErrorText(errnum);
    return text ? "Posix error " + std::to_string(errnum) + " (" + *text + ')' : "Unknown Posix error";
}

std::string _removeNewLinesInString(std::string_view string) {
    std::string text(string);
    std::erase(text, '\r');
    return text;
}

} // namespace quillmark

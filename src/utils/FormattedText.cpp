#include "utils/FormattedText.h"

#include "utils/Log.h"

namespace quillmark {

std::optional<std::string> _formatted(const FormatText &format, FormatArguments arguments) {
    if (format.isAbsent()) {
        return std::nullopt;
    }
    const auto text = tryFormat(format, arguments);
    if (!text) {
        logError("The text \"%s\" does not match its %d arguments", format.view(), arguments.size());
    }
    return text ? *text : std::string(format.view());
}

} // namespace quillmark

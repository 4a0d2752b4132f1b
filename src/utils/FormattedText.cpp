#include "utils/FormattedText.h"

#include "utils/Log.h"

namespace quillmark {

QString _formatted(const FormatText &format, FormatArguments arguments) {
    if (format.isAbsent()) {
        return {};
    }
    const auto text = tryFormat(format, arguments);
    if (!text) {
        logError("The text \"%s\" does not match its %d arguments", format.view(), arguments.size());
    }
    const std::string_view result = text ? std::string_view(*text) : format.view();
    return QString::fromUtf8(result.data(), static_cast<qsizetype>(result.size()));
}

} // namespace quillmark

#pragma once

#include "utils/ReplaceAll.h"

namespace quillmark {

/// What a program has printed, for a log line: line ends are escaped, as "\n" and "\r", and nothing is left out.
inline std::string onOneLine(std::string_view printed) {
    std::string text(printed);
    replaceAll(text, "\r", "\\r");
    replaceAll(text, "\n", "\\n");
    return text;
}

} // namespace quillmark

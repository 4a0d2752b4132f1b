#pragma once

#include <QString>

namespace quillmark {

/// What a program has printed, for a log line: line ends are escaped, as "\n" and "\r", and nothing is left out.
inline QString onOneLine(QString text) {
    return text.replace(u'\r', QStringLiteral("\\r")).replace(u'\n', QStringLiteral("\\n"));
}

} // namespace quillmark

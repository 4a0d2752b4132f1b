#pragma once

#include <string>
#include <string_view>

namespace quillmark {

// White space is all that Unicode calls so, and the control characters from the tabulator to the carriage return.

/// The text without the white space around it.
std::string_view trimmed(std::string_view text);

/// The same, with one blank in the place of all white space between two other characters.
std::string simplified(std::string_view text);

} // namespace quillmark

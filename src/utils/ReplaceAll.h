#pragma once

#include <string>
#include <string_view>

namespace quillmark {

/// Puts a text in the place of every occurrence of another one, which is not empty. What was put in is not looked at
/// again.
void replaceAll(std::string &text, std::string_view what, std::string_view by);

} // namespace quillmark

#pragma once

#include <string>
#include <string_view>

namespace quillmark {

/// The characters of a text, those alike that differ in nothing but their letter case: "STRASSE" and "strasse", "Σ",
/// "σ" and "ς". Each stands for itself, so that "ß" is not "ss". Whatever the process's language.
std::u32string foldedCase(std::string_view text);

} // namespace quillmark

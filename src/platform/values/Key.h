#pragma once

#include <string>
#include <string_view>

namespace quillmark {

/// The name of an entry in a dictionary: text that stands in the program itself.
///
/// A key is a constant of the compiler and costs nothing at start-up. It is looked up by its view; where a dictionary
/// is made, it becomes a text.
class Key : public std::string_view {
public:
    consteval Key(const char *literal) : std::string_view(literal) {}

    operator std::string() const { return std::string(*this); }
};

} // namespace quillmark

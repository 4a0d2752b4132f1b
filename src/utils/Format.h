#pragma once

#include <array>
#include <concepts>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace quillmark {

/// A printf-style format, as UTF-8. It may be absent, as a null pointer is.
class FormatText {
public:
    FormatText(const char *text) : m_view(text == nullptr ? std::string_view() : text), m_isAbsent(text == nullptr) {}
    FormatText(std::string_view text) : m_view(text) {}
    FormatText(const std::string &text) : m_view(text) {}

    std::string_view view() const { return m_view; }
    bool isAbsent() const { return m_isAbsent; }

private:
    std::string_view m_view;
    bool m_isAbsent = false;
};

/// One argument of a format: a number or a text. An absent text (a null pointer, an empty optional)
/// prints as "(null)".
class FormatArgument {
public:
    using Value = std::variant<long long, unsigned long long, double, char, std::string_view>;

    FormatArgument(const char *text) : m_value(text == nullptr ? kAbsent : std::string_view(text)) {}
    FormatArgument(std::string_view text) : m_value(text) {}
    FormatArgument(const std::string &text) : m_value(std::string_view(text)) {}
    FormatArgument(const std::optional<std::string> &text) : m_value(text ? std::string_view(*text) : kAbsent) {}
    FormatArgument(const std::optional<std::string_view> &text) : m_value(text.value_or(kAbsent)) {}
    FormatArgument(char character) : m_value(character) {}
    template <std::floating_point Number>
    FormatArgument(Number number) : m_value(static_cast<double>(number)) {}
    template <std::integral Number>
    FormatArgument(Number number)
        : m_value([number]() -> Value {
              if constexpr (std::is_signed_v<Number> || std::is_same_v<Number, bool>) {
                  return static_cast<long long>(number);
              } else {
                  return static_cast<unsigned long long>(number);
              }
          }()) {}

    const Value &value() const { return m_value; }

private:
    static constexpr std::string_view kAbsent = "(null)";

    Value m_value;
};

using FormatArguments = std::span<const FormatArgument>;

/// What a call's arguments become.
template <class... Arguments>
using FormatArgumentArray = std::array<FormatArgument, sizeof...(Arguments)>;

/// The arguments put into the format. Besides the conversions of printf (positions such as %1$s included), %@ prints
/// any argument's text. Length modifiers such as the l of %ld are accepted and not needed. \returns nothing when the
/// format is absent, malformed, or does not match the arguments; arguments too many are ignored, as printf does.
std::optional<std::string> tryFormat(const FormatText &format, FormatArguments arguments);

} // namespace quillmark

#include "utils/Format.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fmt/format.h>
#include <fmt/printf.h>
#include <utility>

namespace quillmark {

namespace {

constexpr size_t kMaximumArguments = 16;
/// Widths and precisions beyond it make a format malformed: a translation's slip must not take gigabytes.
constexpr size_t kWidestField = 4096;

/// Where a conversion's argument stands: the text between '%' and the conversion letter, and the letter's place.
struct Conversion {
    size_t letter;   ///< index of the conversion letter in the format
    size_t position; ///< the n of %n$, from 1; 0 when there is none
    size_t stars;    ///< arguments taken by * before the value
};

/// The conversion behind the '%' at `percent`; nothing when the format ends first.
std::optional<Conversion> conversionAt(std::string_view format, size_t percent) {
    Conversion conversion{percent + 1, 0, 0};
    size_t number = 0;
    for (; conversion.letter < format.size(); ++conversion.letter) {
        const char character = format[conversion.letter];
        if (character >= '0' && character <= '9') {
            number = std::min<size_t>(number * 10 + static_cast<size_t>(character - '0'), kWidestField + 1);
        } else if (number > kWidestField) {
            return std::nullopt;
        } else if (character == '$') {
            conversion.position = std::exchange(number, 0);
        } else if (character == '*') {
            ++conversion.stars;
        } else if (std::string_view("-+ #.hlqjzt").find(character) == std::string_view::npos) {
            return conversion;
        } else {
            number = 0;
        }
    }
    return std::nullopt;
}

struct Plan {
    std::string format;                             ///< with %s in place of %@, without modifiers that fmt doesn't know
    std::array<bool, kMaximumArguments> isObject{}; ///< arguments that %@ prints
    std::array<bool, kMaximumArguments> isWidth{};  ///< arguments that * takes
};

/// Rewrites the conversions that fmt doesn't have.
std::optional<Plan> planFor(std::string_view format) {
    Plan plan;
    plan.format.reserve(format.size());
    size_t next = 0; // the argument that the next conversion without a position takes
    for (size_t at = 0; at < format.size(); ++at) {
        plan.format += format[at];
        if (format[at] != '%') {
            continue;
        }
        const auto conversion = conversionAt(format, at);
        if (!conversion) {
            return std::nullopt;
        }
        for (size_t i = at + 1; i < conversion->letter; ++i) {
            if (format[i] != 'q') { // the same as ll
                plan.format += format[i];
            }
        }
        const char letter = format[conversion->letter];
        plan.format += letter == '@' ? 's' : letter;
        at = conversion->letter;
        if (letter == '%') {
            continue;
        }
        const size_t argument = conversion->position != 0 ? conversion->position - 1 : next + conversion->stars;
        next = conversion->position != 0 ? next : argument + 1;
        if (argument >= kMaximumArguments) {
            return std::nullopt;
        }
        plan.isObject[argument] = letter == '@';
        for (size_t star = 1; star <= conversion->stars && star <= argument; ++star) {
            plan.isWidth[argument - star] = true;
        }
    }
    return plan;
}

using PrintfArgument = fmt::basic_format_arg<fmt::printf_context>;

std::string textOf(const FormatArgument &argument) {
    return std::visit([](const auto &value) { return fmt::format("{}", value); }, argument.value());
}

/// The value, or the text's place: a text has to outlive the result.
template <class Value>
PrintfArgument printfArgument(const Value &value) {
    const auto stored = fmt::make_printf_args(value);
    return fmt::basic_format_args<fmt::printf_context>(stored).get(0);
}

bool isFieldWidth(const FormatArgument &argument) {
    const auto *width = std::get_if<long long>(&argument.value());
    constexpr long long kWidest = kWidestField;
    return width != nullptr && *width >= -kWidest && *width <= kWidest;
}

bool isText(const FormatArgument &argument) { return std::holds_alternative<std::string_view>(argument.value()); }

} // namespace

std::optional<std::string> tryFormat(const FormatText &format, FormatArguments arguments) {
    if (format.isAbsent() || arguments.size() > kMaximumArguments) {
        return std::nullopt;
    }
    if (format.view().find('%') == std::string_view::npos) {
        return std::string(format.view());
    }
    const auto plan = planFor(format.view());
    if (!plan) {
        return std::nullopt;
    }
    std::array<PrintfArgument, kMaximumArguments> values;
    std::array<std::string, kMaximumArguments> objectTexts;
    size_t count = 0;
    for (const FormatArgument &argument : arguments) {
        if (plan->isWidth[count] && !isFieldWidth(argument)) {
            return std::nullopt;
        }
        if (plan->isObject[count] && !isText(argument)) {
            objectTexts[count] = textOf(argument);
            values[count] = printfArgument(std::string_view(objectTexts[count]));
        } else {
            values[count] = std::visit([](const auto &value) { return printfArgument(value); }, argument.value());
        }
        ++count;
    }
    try {
        return fmt::vsprintf(fmt::string_view(plan->format),
                             fmt::basic_format_args<fmt::printf_context>(values.data(), static_cast<int>(count)));
    } catch (const fmt::format_error &) {
        return std::nullopt;
    }
}

} // namespace quillmark

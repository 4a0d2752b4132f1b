#include "Json.h"
#include "Command.h"

#include "platform/values/ScalarText.h"

#include <cmath>
#include <fmt/chrono.h>
#include <nlohmann/json.hpp>

namespace quillmark::ctl {

namespace {

using nlohmann::json;

std::string quoted(const std::string &text) { return json(text).dump(-1, ' ', false, json::error_handler_t::replace); }

std::string printedScalar(const Value &value) {
    const auto *real = value.as<double>();
    if (value.isNothing() || (real != nullptr && !std::isfinite(*real))) {
        return "null";
    }
    if (const auto *text = value.as<std::string>()) {
        return quoted(*text);
    }
    if (const auto *large = value.as<std::uint64_t>()) { // as all who read JSON take it
        return realText(static_cast<double>(*large));
    }
    if (const auto *bytes = value.as<Bytes>()) {
        return quoted(bytes->data);
    }
    if (const auto *date = value.as<Date>()) {
        return quoted(fmt::format("{:%Y-%m-%dT%H:%M:}{:%S}Z", *date, date->time_since_epoch()));
    }
    return *scalarText(value);
}

class Printer {
public:
    explicit Printer(bool isPretty) : m_isPretty(isPretty) {}

    std::string print(const Value &value) {
        add(value);
        return std::move(m_text);
    }

private:
    void add(const Value &value) {
        if (const auto *list = value.as<List>()) {
            m_text += '[';
            ++m_depth;
            for (const Value &element : *list) {
                beginElement();
                add(element);
            }
            end(']');
        } else if (const auto *dictionary = value.as<Dictionary>()) {
            m_text += '{';
            ++m_depth;
            for (const auto &[key, member] : *dictionary) {
                beginElement();
                m_text += quoted(key) + (m_isPretty ? ": " : ":");
                add(member);
            }
            end('}');
        } else {
            m_text += printedScalar(value);
        }
    }

    void beginElement() {
        if (m_text.back() != '[' && m_text.back() != '{') {
            m_text += ',';
        }
        breakLine();
    }

    void end(char bracket) {
        --m_depth;
        breakLine();
        m_text += bracket;
    }

    void breakLine() {
        if (m_isPretty) {
            m_text += '\n';
            m_text.append(4 * m_depth, ' ');
        }
    }

    const bool m_isPretty;
    size_t m_depth = 0;
    std::string m_text;
};

Value valueOf(const json &member) {
    switch (member.type()) {
    case json::value_t::boolean:
        return member.get<bool>();
    case json::value_t::number_integer:
        return member.get<std::int64_t>();
    case json::value_t::number_unsigned:
    case json::value_t::number_float: {
        const auto *number = member.get_ptr<const json::number_unsigned_t *>();
        const bool isSmall = number != nullptr && std::in_range<std::int64_t>(*number);
        return isSmall ? Value(*number) : Value(member.get<double>());
    }
    case json::value_t::string:
        return member.get<std::string>();
    case json::value_t::array:
        return List();
    case json::value_t::object:
        return Dictionary();
    default:
        return {};
    }
}

} // namespace

std::string printedJson(const Value &value, bool isPretty) { return Printer(isPretty).print(value); }

Dictionary membersOfJson(std::string_view text) {
    constexpr const char *kSource = "standard input";
    json document;
    try {
        document = json::parse(text);
    } catch (const json::parse_error &error) {
        throw Failure{kSource, "is no JSON at byte " + std::to_string(error.byte - std::min<size_t>(error.byte, 1))};
    }
    if (!document.is_object()) {
        throw Failure{kSource, "is no JSON object"};
    }
    Dictionary members;
    for (const auto &[key, member] : document.items()) {
        members.insert_or_assign(key, valueOf(member));
    }
    return members;
}

} // namespace quillmark::ctl

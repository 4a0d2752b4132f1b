#include "platform/Value.h"

#include <algorithm>

namespace quillmark {

bool KeyOrder::operator()(std::string_view left, std::string_view right) const {
    constexpr unsigned char kFourBytes = 0xF0;   // the first byte of a character that takes four
    constexpr unsigned char kBehindPairs = 0xEE; // the first byte of those from U+E000 on
    const auto [inLeft, inRight] = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    if (inLeft == left.end() || inRight == right.end()) {
        return inRight != right.end();
    }
    const auto leftByte = static_cast<unsigned char>(*inLeft);
    const auto rightByte = static_cast<unsigned char>(*inRight);
    const bool isTurned =
        std::min(leftByte, rightByte) >= kBehindPairs && (leftByte >= kFourBytes) != (rightByte >= kFourBytes);
    return isTurned ? leftByte > rightByte : leftByte < rightByte;
}

Value::Value(std::optional<std::string> text) {
    if (text) {
        m_content = *std::move(text);
    }
}

Value::Value(List list) : m_content(std::make_shared<const List>(std::move(list))) {}
Value::Value(Dictionary dictionary) : m_content(std::make_shared<const Dictionary>(std::move(dictionary))) {}

std::optional<std::string> Value::text() const {
    const auto *text = as<std::string>();
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

std::optional<double> Value::real() const {
    const auto *single = as<float>();
    const auto *real = as<double>();
    return single != nullptr ? std::optional<double>(*single) : real != nullptr ? std::optional(*real) : std::nullopt;
}

const List &Value::list() const {
    static const List empty;
    const auto *list = as<List>();
    return list != nullptr ? *list : empty;
}

const Dictionary &Value::dictionary() const {
    static const Dictionary empty;
    const auto *dictionary = as<Dictionary>();
    return dictionary != nullptr ? *dictionary : empty;
}

bool operator==(const Value &left, const Value &right) {
    if (const auto *list = left.as<List>(); list != nullptr && right.is<List>()) {
        return list == right.as<List>() || *list == *right.as<List>();
    }
    if (const auto *dictionary = left.as<Dictionary>(); dictionary != nullptr && right.is<Dictionary>()) {
        return dictionary == right.as<Dictionary>() || *dictionary == *right.as<Dictionary>();
    }
    return left.m_content == right.m_content;
}

const Value &valueOf(const Dictionary &dictionary, std::string_view key) {
    static const Value nothing;
    const auto found = dictionary.find(key);
    return found != dictionary.end() ? found->second : nothing;
}

} // namespace quillmark

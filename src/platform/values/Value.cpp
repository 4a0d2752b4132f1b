#include "platform/values/Value.h"

#include <algorithm>
#include <functional>

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

Dictionary::Dictionary(std::vector<value_type> entries) : m_entries(std::move(entries)) {
    const auto isBefore = [](const value_type &left, const value_type &right) {
        return KeyOrder()(left.first, right.first);
    };
    const auto isNotBefore = std::not_fn(isBefore);
    if (std::adjacent_find(m_entries.begin(), m_entries.end(), isNotBefore) != m_entries.end()) {
        std::reverse(m_entries.begin(), m_entries.end()); // the last one of a key becomes the first, which stays
        std::stable_sort(m_entries.begin(), m_entries.end(), isBefore);
        m_entries.erase(std::unique(m_entries.begin(), m_entries.end(), isNotBefore), m_entries.end());
    }
}

Dictionary::const_iterator Dictionary::placeOf(std::string_view key) const {
    return std::lower_bound(begin(), end(), key, [](const value_type &entry, std::string_view wanted) {
        return KeyOrder()(entry.first, wanted);
    });
}

Dictionary::const_iterator Dictionary::find(std::string_view key) const {
    const auto place = placeOf(key);
    return place != end() && place->first == key ? place : end();
}

Value &Dictionary::operator[](std::string_view key) {
    auto place = m_entries.begin() + (placeOf(key) - begin());
    if (place == m_entries.end() || place->first != key) {
        place = m_entries.emplace(place, key, Value());
    }
    return place->second;
}

bool Dictionary::erase(std::string_view key) {
    const auto entry = find(key);
    const bool isFound = entry != end();
    if (isFound) {
        m_entries.erase(entry);
    }
    return isFound;
}

const Value &valueOf(const Dictionary &dictionary, std::string_view key) {
    static const Value nothing;
    const auto found = dictionary.find(key);
    return found != dictionary.end() ? found->second : nothing;
}

} // namespace quillmark

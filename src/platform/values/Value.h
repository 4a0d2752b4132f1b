#pragma once

#include <chrono>
#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quillmark {

class Value;
class Dictionary;

using List = std::vector<Value>;

/// Bytes without a meaning as text.
struct Bytes {
    std::string data;
    friend bool operator==(const Bytes &, const Bytes &) = default;
};

/// A point in time, of UTC.
using Date = std::chrono::sys_time<std::chrono::milliseconds>;

/// What a property list or the preferences hold: nothing, a boolean, an integer, a real, a text in UTF-8, bytes, a
/// date, a list or a dictionary.
///
/// An integer is an `int64_t`, or a `uint64_t` where that one ends. A `float` is told from a `double` by those who
/// write it with its own digits. A value never changes, so copies share their list or dictionary.
class Value {
public:
    Value() = default;
    Value(bool value) : m_content(value) {}
    Value(std::integral auto value) : m_content(integer(value)) {}
    Value(float value) : m_content(value) {}
    Value(double value) : m_content(value) {}
    Value(const char *text) : m_content(std::string(text)) {}
    Value(std::string_view text) : m_content(std::string(text)) {}
    Value(std::string text) : m_content(std::move(text)) {}
    /// Nothing when the text is absent.
    Value(std::optional<std::string> text);
    Value(Bytes bytes) : m_content(std::move(bytes)) {}
    Value(Date date) : m_content(date) {}
    Value(List list);
    Value(Dictionary dictionary);
    Value(const void *) = delete; // a pointer must not pass for a boolean

    bool isNothing() const { return std::holds_alternative<std::monostate>(m_content); }
    /// The content if it is of that kind, else null.
    template <class Kind>
    const Kind *as() const {
        if constexpr (std::same_as<Kind, List> || std::same_as<Kind, Dictionary>) {
            const auto *shared = std::get_if<std::shared_ptr<const Kind>>(&m_content);
            return shared != nullptr ? shared->get() : nullptr;
        } else {
            return std::get_if<Kind>(&m_content);
        }
    }
    template <class Kind>
    bool is() const {
        return as<Kind>() != nullptr;
    }

    /// The text; nothing for any other kind.
    std::optional<std::string> text() const;
    /// The real number of either size; nothing for any other kind.
    std::optional<double> real() const;
    /// The list or the dictionary; an empty one for any other kind.
    const List &list() const;
    const Dictionary &dictionary() const;

    /// Whether both are of one kind, and the same.
    friend bool operator==(const Value &left, const Value &right);

private:
    using Content = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, float, double, std::string, Bytes,
                                 Date, std::shared_ptr<const List>, std::shared_ptr<const Dictionary>>;

    static Content integer(std::integral auto value) {
        return std::in_range<std::int64_t>(value) ? Content(static_cast<std::int64_t>(value))
                                                  : Content(static_cast<std::uint64_t>(value));
    }

    Content m_content;
};

/// The order of the keys in files and JSON texts: that of their 16-bit characters. Bytes of UTF-8 stand in that order
/// but for the characters that take four of them, which are two 16-bit ones below U+E000.
struct KeyOrder {
    bool operator()(std::string_view left, std::string_view right) const;
};

/// Values by key, in the order of their keys, as in C++23's `std::flat_map`: all in one block, since dictionaries are
/// made and read far more often than changed.
///
/// A change takes time that grows with the number of entries: many of them are collected first, and made a dictionary
/// at once.
class Dictionary {
public:
    using value_type = std::pair<std::string, Value>;
    using const_iterator = std::vector<value_type>::const_iterator;

    Dictionary() = default;
    Dictionary(std::initializer_list<value_type> entries) : Dictionary(std::vector(entries)) {}
    /// The entries stand in any order. Of those with one key, the last one counts.
    explicit Dictionary(std::vector<value_type> entries);

    const_iterator begin() const { return m_entries.begin(); }
    const_iterator end() const { return m_entries.end(); }
    size_t size() const { return m_entries.size(); }
    bool empty() const { return m_entries.empty(); }
    const_iterator find(std::string_view key) const;
    bool contains(std::string_view key) const { return find(key) != end(); }

    /// The key's value, which is nothing if it is new.
    Value &operator[](std::string_view key);
    void insert_or_assign(std::string_view key, Value value) { (*this)[key] = std::move(value); }
    void clear() { m_entries.clear(); }
    /// \returns whether there was such a key.
    bool erase(std::string_view key);

    friend bool operator==(const Dictionary &, const Dictionary &) = default;

private:
    const_iterator placeOf(std::string_view key) const;

    std::vector<value_type> m_entries;
};

/// The dictionary's value of that key; nothing when it has none.
const Value &valueOf(const Dictionary &dictionary, std::string_view key);

} // namespace quillmark

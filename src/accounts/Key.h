#pragma once

#include <QtCore/QString>

#include <cstddef>

namespace quillmark {

/// The name of an entry in a property list, a preference domain or a message: text that stands in the program itself.
///
/// A key is a constant of the compiler. It costs nothing at start-up, needs no clean-up, and turns into a QString that
/// points at the literal: no allocation, no copy. As with any string literal in a QString, the text must outlive its
/// users, so a key belongs into code that stays loaded.
class Key {
public:
    template <std::size_t Size>
    explicit consteval Key(const char16_t (&literal)[Size]) : m_text(literal), m_size(qsizetype(Size) - 1) {}

    constexpr QStringView view() const { return QStringView(m_text, m_size); }

    operator QString() const {
        // A string without an owner of its data is never written to; it is copied before the first change.
        return QString(QStringPrivate(nullptr, const_cast<char16_t *>(m_text), m_size));
    }

    // Exact, so case-sensitive. Each has its own overload lest a comparison builds a string or is ambiguous.
    friend bool operator==(Key left, Key right) { return left.view() == right.view(); }
    friend bool operator==(Key left, QStringView right) { return left.view() == right; }
    friend bool operator==(Key left, const QString &right) { return left.view() == right; }

private:
    const char16_t *m_text;
    qsizetype m_size;
};

} // namespace quillmark

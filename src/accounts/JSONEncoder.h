#pragma once

#include <QString>
#include <QVariantMap>
#include <optional>

namespace quillmark {

/// Turns a flat dictionary into one JSON object and back: members are texts, numbers and booleans, with no nesting, no
/// lists and no null. It is no general JSON library. Documents of older versions of the product must read as they
/// always did, so what looks wrong here is deliberate and has a test.
///
/// A boolean is a QVariant of `bool`; an integer that was read is a `qlonglong`, another number a `double`.
class JSONEncoder {
public:
    JSONEncoder() = delete;

    /// The members stand in the dictionary's order, without any blanks. Keys are written as they are; a value that is
    /// no text, number or boolean is an empty text.
    static QString createJSONStrFromDict(const QVariantMap &dictionary);

    /// The members of an object, or nothing when the text is none.
    static std::optional<QVariantMap> createObjFromJSONStr(QStringView text);

    /// Reads a text whose opening quote stands just before `at`, and moves `at` behind its closing quote. Only
    /// characters up to U+00FF survive; of others the lower byte is left. \param error set when a backslash ends the
    /// text. \returns nothing then, and without a closing quote.
    static std::optional<QString> jsonStringForStr(QStringView text, quint64 &at, bool &error);

    /// Reads a number and moves `at` to the first character that is no part of it. A "-" anywhere in it makes it
    /// negative, exponents are not applied, and an integer part beyond 64 bits loses its upper bits. \param error set
    /// by a second decimal point. \returns an invalid QVariant then.
    static QVariant jsonNumberForStr(QStringView text, quint64 &at, bool &error);

    /// Puts a backslash before backslash, quote and slash, and writes \\b, \\f, \\n, \\r and \\t for what they stand
    /// for.
    static QString stringByAddingJSONEscape(QStringView text);

    /// Undoes these escapes one kind after the other, the double backslash first: an escaped backslash with an n behind
    /// it becomes a line feed.
    static QString stringByReplacingJSONEscape(const QString &text);
};

} // namespace quillmark

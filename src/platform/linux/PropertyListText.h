#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QVariant>
#include <optional>
#include <string_view>

namespace quillmark {

/// The scalar values of an XML property list, from the raw text between their tags. An invalid value or nothing when
/// the text is malformed.

/// Raw UTF-8 with the predefined entities and character references resolved; no other entity is known.
std::optional<QString> propertyListString(std::string_view raw);
/// Decimal or, after 0x, hexadecimal; from -2^63 to 2^64 - 1.
QVariant propertyListInteger(std::string_view raw);
/// What a double can hold, infinities and "nan" included.
QVariant propertyListReal(std::string_view raw);
/// YYYY-MM-DDTHH:MM:SSZ
QVariant propertyListDate(std::string_view raw);
/// Base64, blanks and line breaks anywhere.
QVariant propertyListData(std::string_view raw);

} // namespace quillmark

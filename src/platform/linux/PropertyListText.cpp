#include "platform/linux/PropertyListText.h"
#include "platform/linux/Utc.h"

#include <QUtf8StringView>
#include <charconv>
#include <limits>

namespace quillmark {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::optional<QString> fromValidUtf8(std::string_view raw) {
    const QUtf8StringView view(raw.data(), static_cast<qsizetype>(raw.size()));
    if (!view.isValidUtf8() || raw.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    // The conversion takes a mark of the byte order from the front; here it is a character like any other.
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    qsizetype marks = 0;
    for (; raw.starts_with(kMark); ++marks) {
        raw.remove_prefix(kMark.size());
    }
    const QString text = QString::fromUtf8(raw.data(), static_cast<qsizetype>(raw.size()));
    return marks == 0 ? text : QString(marks, QChar(QChar::ByteOrderMark)) + text;
}

/// The character behind "#65" or "#x41".
std::optional<char32_t> characterReference(std::string_view reference) {
    const bool hexadecimal = reference.starts_with("#x");
    const std::string_view digits = reference.substr(hexadecimal ? 2 : 1);
    quint32 code = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), code, hexadecimal ? 16 : 10);
    const bool isCharacter = code != 0 && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    if (error != std::errc() || end != digits.end() || !isCharacter) {
        return std::nullopt;
    }
    return static_cast<char32_t>(code);
}

std::optional<char32_t> entity(std::string_view name) {
    struct Entity {
        std::string_view name;
        char32_t character;
    };
    static constexpr Entity kEntities[] = {{"amp", U'&'}, {"lt", U'<'}, {"gt", U'>'}, {"quot", U'"'}, {"apos", U'\''}};
    if (name.starts_with('#')) {
        return characterReference(name);
    }
    for (const Entity &known : kEntities) {
        if (known.name == name) {
            return known.character;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<QString> propertyListString(std::string_view raw) {
    size_t ampersand = raw.find('&');
    if (ampersand == std::string_view::npos) {
        return fromValidUtf8(raw);
    }
    QString text;
    while (true) {
        const std::optional<QString> piece = fromValidUtf8(raw.substr(0, ampersand));
        if (!piece) {
            return std::nullopt;
        }
        text += *piece;
        if (ampersand == std::string_view::npos) {
            return text;
        }
        raw.remove_prefix(ampersand + 1);
        const size_t semicolon = raw.find(';');
        const auto character = semicolon == std::string_view::npos ? std::nullopt : entity(raw.substr(0, semicolon));
        if (!character) {
            return std::nullopt;
        }
        text += QString::fromUcs4(&*character, 1);
        raw.remove_prefix(semicolon + 1);
        ampersand = raw.find('&');
    }
}

QVariant propertyListInteger(std::string_view raw) {
    std::string_view digits = trimmed(raw);
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+')) {
        digits.remove_prefix(1);
    }
    int base = 10;
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
        digits.remove_prefix(2);
        base = 16;
    }
    quint64 magnitude = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), magnitude, base);
    if (error != std::errc() || end != digits.end()) {
        return {};
    }
    constexpr quint64 kLargest = std::numeric_limits<qint64>::max();
    if (negative) {
        return magnitude > kLargest + 1 ? QVariant() : QVariant(static_cast<qint64>(0 - magnitude));
    }
    return magnitude > kLargest ? QVariant(magnitude) : QVariant(static_cast<qint64>(magnitude));
}

QVariant propertyListReal(std::string_view raw) {
    std::string_view digits = trimmed(raw);
    if (digits.starts_with('+') && !digits.starts_with("+-")) {
        digits.remove_prefix(1);
    }
    double value = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), value);
    if (error != std::errc() || end != digits.end()) {
        return {};
    }
    return value;
}

QVariant propertyListDate(std::string_view raw) {
    const std::string_view date = trimmed(raw);
    constexpr std::string_view kForm = "dddd-dd-ddTdd:dd:ddZ";
    if (date.size() != kForm.size()) {
        return {};
    }
    for (size_t i = 0; i < kForm.size(); ++i) {
        const bool isDigit = date[i] >= '0' && date[i] <= '9';
        if (kForm[i] == 'd' ? !isDigit : date[i] != kForm[i]) {
            return {};
        }
    }
    const auto number = [&date](size_t at, size_t length) {
        int value = 0;
        std::from_chars(date.data() + at, date.data() + at + length, value);
        return value;
    };
    const QDate day(number(0, 4), number(5, 2), number(8, 2));
    const QTime time(number(11, 2), number(14, 2), number(17, 2));
    return day.isValid() && time.isValid() ? QVariant(QDateTime(day, time, kUtc)) : QVariant();
}

QVariant propertyListData(std::string_view raw) {
    QByteArray encoded;
    encoded.reserve(static_cast<qsizetype>(raw.size()));
    for (const char character : raw) {
        if (kBlanks.find(character) == std::string_view::npos) {
            encoded.append(character);
        }
    }
    const auto decoded = QByteArray::fromBase64Encoding(std::move(encoded), QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? QVariant(*decoded) : QVariant();
}

} // namespace quillmark

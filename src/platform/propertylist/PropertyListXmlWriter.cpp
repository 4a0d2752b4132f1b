#include "platform/propertylist/PropertyListFormats.h"
#include "platform/propertylist/PropertyListLimits.h"

#include "platform/values/Base64.h"
#include "platform/values/ScalarText.h"
#include "platform/values/Utf8Text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <utf8.h>

namespace quillmark {

namespace {

bool isXmlCharacter(char32_t character) {
    const bool isControl = character < 0x20 && character != U'\t' && character != U'\n' && character != U'\r';
    return !isControl && character != 0xFFFE && character != 0xFFFF;
}

bool isXmlText(const std::string &text) {
    if (!isUtf8(text)) {
        return false;
    }
    for (auto at = text.begin(); at != text.end();) {
        if (!isXmlCharacter(utf8::unchecked::next(at))) {
            return false;
        }
    }
    return true;
}

/// What stands for a character in XML; an empty text where it stands for itself.
std::string_view referenceFor(char character) {
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\r': // a bare one would be read as a line feed
        return "&#13;";
    default:
        return {};
    }
}

class XmlWriter {
public:
    bool value(const Value &value, int depth);
    std::string out;

private:
    bool text(std::string_view tag, const std::string &text, int depth);
    bool line(std::string_view tag, std::string_view content, int depth);
    template <class Container>
    bool container(std::string_view tag, const Container &content, int depth);
    bool entry(const Dictionary::value_type &entry, int depth) {
        return text("key", entry.first, depth) && value(entry.second, depth);
    }
    bool entry(const Value &element, int depth) { return value(element, depth); }
    void markup(std::string_view opening, std::string_view tag, std::string_view closing, int depth);
};

void XmlWriter::markup(std::string_view opening, std::string_view tag, std::string_view closing, int depth) {
    out.append(static_cast<size_t>(depth), '\t').append(opening).append(tag).append(closing);
}

bool XmlWriter::line(std::string_view tag, std::string_view content, int depth) {
    markup("<", tag, ">", depth);
    out.append(content);
    markup("</", tag, ">\n", 0);
    return true;
}

bool XmlWriter::text(std::string_view tag, const std::string &text, int depth) {
    if (!isXmlText(text)) {
        return false;
    }
    std::string escaped;
    escaped.reserve(text.size());
    for (const char character : text) {
        const std::string_view reference = referenceFor(character);
        reference.empty() ? escaped += character : escaped += reference;
    }
    return line(tag, escaped, depth);
}

template <class Container>
bool XmlWriter::container(std::string_view tag, const Container &content, int depth) {
    if (depth >= kMaximumPropertyListDepth) {
        return false;
    }
    markup("<", tag, content.empty() ? "/>\n" : ">\n", depth);
    const bool isWritten =
        std::all_of(content.begin(), content.end(), [&](const auto &element) { return entry(element, depth + 1); });
    if (!content.empty()) {
        markup("</", tag, ">\n", depth);
    }
    return isWritten;
}

std::string signedRealText(double real) { return real == 0 && std::signbit(real) ? "-0.0" : realText(real); }

std::string dateText(Date date) {
    const auto day = std::chrono::floor<std::chrono::days>(date);
    const std::chrono::year_month_day calendar(day);
    const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::seconds>(date - day));
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(calendar.year()),
                       static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count());
}

bool isWritable(Date date) {
    using namespace std::chrono;
    return date >= sys_days(year(1) / 1 / 1) && date < sys_days(year(10000) / 1 / 1);
}

bool XmlWriter::value(const Value &value, int depth) {
    if (const auto *map = value.as<Dictionary>()) {
        return container("dict", *map, depth);
    }
    if (const auto *list = value.as<List>()) {
        return container("array", *list, depth);
    }
    if (const auto *string = value.as<std::string>()) {
        return text("string", *string, depth);
    }
    if (const auto *boolean = value.as<bool>()) {
        markup("<", *boolean ? "true" : "false", "/>\n", depth);
        return true;
    }
    if (value.is<std::int64_t>() || value.is<std::uint64_t>()) {
        return line("integer", *scalarText(value), depth);
    }
    if (const auto real = value.real()) {
        return line("real", signedRealText(*real), depth);
    }
    if (const auto *date = value.as<Date>()) {
        return isWritable(*date) && line("date", dateText(*date), depth);
    }
    const auto *bytes = value.as<Bytes>();
    return bytes != nullptr && line("data", base64(bytes->data), depth);
}

} // namespace

std::optional<std::string> writeXmlPropertyList(const Value &value) {
    XmlWriter writer;
    writer.out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                 "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                 "<plist version=\"1.0\">\n";
    if (!writer.value(value, 0)) {
        return std::nullopt;
    }
    writer.out += "</plist>\n";
    return writer.out;
}

} // namespace quillmark

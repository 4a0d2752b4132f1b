/// Answers what the product's property-list reader makes of documents, for tests that compare it with other readers.
///
/// A question on standard input is one letter, the document's length in four bytes, the highest first, and the
/// document. Each answer on standard output has its length in front in the same way:
///   r  "render": the value in a form that any language can make (see render()) and the XML that our writer makes of
///   it,
///      as two answers; empty ones where there is none
///   v  "verdict": "valid" or "invalid", so that the answer itself takes no memory

#include "platform/propertylist/PropertyListFormats.h"
#include "utils/Utf16.h"

#include <array>
#include <bit>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace quillmark;

std::string hex(std::uint64_t number, int digits) {
    std::array<char, 17> text{};
    std::snprintf(text.data(), text.size(), "%0*" PRIx64, digits, number);
    return text.data();
}

std::string quoted(const std::string &text) {
    std::string out = "\"";
    for (const char16_t code : utf16(text)) {
        if (code >= 0x20 && code < 0x7F && code != u'"' && code != u'\\') {
            out += static_cast<char>(code);
        } else {
            out += "\\u" + hex(code, 4);
        }
    }
    return out + '"';
}

/// One line: containers as in JSON, entries by their keys' UTF-16; "i5", "r" and a real's bits, "d" and the
/// milliseconds since 1970, "x" and the bytes, "true" and "false".
std::string render(const Value &value) {
    std::string out;
    if (value.is<Dictionary>()) {
        for (const auto &[key, entry] : value.dictionary()) {
            out += (out.empty() ? "" : ",") + quoted(key) + ':' + render(entry);
        }
        return '{' + out + '}';
    }
    if (value.is<List>()) {
        for (const Value &element : value.list()) {
            out += (out.empty() ? "" : ",") + render(element);
        }
        return '[' + out + ']';
    }
    if (const auto *text = value.as<std::string>()) {
        return quoted(*text);
    }
    if (const auto *number = value.as<std::int64_t>()) {
        return 'i' + std::to_string(*number);
    }
    if (const auto *number = value.as<std::uint64_t>()) {
        return 'i' + std::to_string(*number);
    }
    if (const auto *number = value.as<double>()) {
        return 'r' + hex(std::bit_cast<std::uint64_t>(*number), 16);
    }
    if (const auto *boolean = value.as<bool>()) {
        return *boolean ? "true" : "false";
    }
    if (const auto *date = value.as<Date>()) {
        return 'd' + std::to_string(date->time_since_epoch().count());
    }
    if (const auto *bytes = value.as<Bytes>()) {
        for (const char byte : bytes->data) {
            out += hex(static_cast<unsigned char>(byte), 2);
        }
        return 'x' + out;
    }
    return "a value that no property list has";
}

bool readBytes(std::string &bytes) { return std::fread(bytes.data(), 1, bytes.size(), stdin) == bytes.size(); }

void answer(const std::string &text) {
    for (unsigned shift = 32; shift > 0; shift -= 8) {
        std::putchar(static_cast<unsigned char>(text.size() >> (shift - 8)));
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
}

} // namespace

int main() {
    const PropertyListFormats propertyList;
    std::string question(5, '\0');
    while (readBytes(question)) {
        size_t length = 0;
        for (size_t i = 1; i < question.size(); ++i) {
            length = length << 8 | static_cast<unsigned char>(question[i]);
        }
        std::string document(length, '\0');
        if (!readBytes(document)) {
            return EXIT_FAILURE;
        }
        const Value value = propertyList.parse(std::move(document));
        if (question.starts_with('v')) {
            answer(value.isNothing() ? "invalid" : "valid");
        } else {
            answer(value.isNothing() ? "" : render(value));
            answer(value.isNothing() ? "" : propertyList.toXml(value).value_or(""));
        }
        std::fflush(stdout);
    }
    return EXIT_SUCCESS;
}

/// The encoder beside its slow reference: both are given the same million generated texts and dictionaries, and must do
/// the same with them, down to the types of the values and the bits of the doubles.

#include "JSONReference.h"
#include "accounts/JSONEncoder.h"
#include "utils/Utf16.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <random>
#include <utf8.h>

namespace quillmark {
namespace {

using test::JSONReference;

constexpr int kRounds = 200'000; // of each kind

/// The same sequence in every run and with every library.
class Generator {
public:
    explicit Generator(std::uint64_t seed) : m_engine(seed) {}

    size_t below(size_t limit) { return static_cast<size_t>(m_engine() % limit); }
    bool oneIn(size_t count) { return below(count) == 0; }
    std::uint64_t bits() { return m_engine(); }

    template <class Table>
    const auto &of(const Table &table) {
        return table[below(std::size(table))];
    }

    /// Up to so many characters of these.
    std::u16string text(std::u16string_view characters, size_t most) { return pieces(characters, most); }
    /// Up to so many pieces of the table.
    template <class Table>
    std::u16string pieces(const Table &table, size_t most) {
        std::u16string result;
        for (size_t left = below(most + 1); left > 0; --left) {
            result += of(table);
        }
        return result;
    }
    /// A place in the text, its end included.
    size_t place(std::u16string_view text) { return below(text.size() + 1); }

private:
    std::mt19937_64 m_engine;
};

// Texts.

constexpr std::u16string_view kAlphabet = u"{}{}\"\"\"\"::,,--..0123456789eeE+fFtTalrus\\\\/bn []a";
constexpr std::u16string_view kNumberCharacters = u"0123456789..--eE+ ";
/// Among them those whose lower byte is nothing, a quote, a backslash, a brace or a digit; a letter that is an s to
/// those who don't mind the case; digits of other scripts; halves of a pair.
constexpr std::u16string_view kForeign =
    u"\u00e4\u00ff\u0100\u0122\u015c\u017b\u017d\u0131\u017f\u0130\u0663\uff11\u2028\ufeff\xd83d\xde00\u0001";
constexpr std::u16string_view kPieces[] = {
    u"{",     u"}",        u"{\"a\":",  u"\"a\"", u"\"b\"", u"\"\"",  u"\"\\\"\"", u":",      u",",    u"1",
    u"-1.25", u"1.2.3",    u"1e3",      u"true",  u"FALSE", u"fxxxx", u"fals",     u"tru",    u"null", u" ",
    u"[",     u"\"a\":1,", u"\"b\":\"", u"\\",    u"t",     u"f",     u"-",        u"\u0122", u"\""};
constexpr std::u16string_view kWords[] = {u"true",  u"TRUE",  u"tRuE", u"trux",  u"tru",        u"false",
                                          u"False", u"fAlSe", u"fals", u"fxxxx", u"fal\u017fe", u"f\"a\":",
                                          u"t}}}",  u"f}}}}", u"t",    u"f",     u"null",       u"truetrue"};
constexpr std::u16string_view kEscapes[] = {u"\\",  u"\\\\", u"\\\"", u"\\/", u"\\b",      u"\\f",      u"\\n",
                                            u"\\r", u"\\t",  u"\\u",  u"\"",  u"\b",       u"\f",       u"\n",
                                            u"\r",  u"\t",   u"/",    u"n",   u"\\\u0122", u"\\\u0100", u"\\\u016e"};

Dictionary dictionary(Generator &generator);

std::u16string ofTheAlphabet(Generator &generator) {
    const std::u16string start = generator.oneIn(2) ? u"" : u"{\"k\":";
    return start + generator.text(kAlphabet, 24);
}

std::u16string ofPieces(Generator &generator) {
    const std::u16string text = generator.pieces(kPieces, 12);
    return generator.oneIn(4) ? text : u'{' + text + u'}';
}

std::u16string mutated(Generator &generator) {
    std::u16string text = utf16(JSONReference::createJSONStrFromDict(dictionary(generator)));
    for (size_t left = generator.below(4); left > 0; --left) {
        const size_t at = generator.place(text);
        switch (generator.below(4)) {
        case 0:
            text.erase(at, 1);
            break;
        case 1:
            text.insert(at, 1, generator.of(kAlphabet));
            break;
        case 2:
            text.insert(at, text.substr(generator.place(text), 5));
            break;
        default:
            text.resize(at);
        }
    }
    return text;
}

std::u16string ofWordsAndNumbers(Generator &generator) {
    std::u16string value;
    switch (generator.below(4)) {
    case 0:
        value = generator.text(kNumberCharacters, 10);
        break;
    case 1: // long enough to overflow, or to have places that no double reaches
        value = generator.text(u"0123456789", 25) + generator.text(u".-", 1) + generator.text(u"0000123456789", 40);
        break;
    default:
        value = generator.of(kWords);
    }
    return u"{\"k\":" + value + generator.text(u"} ,", 2) + generator.pieces(kPieces, 3);
}

std::u16string ofForeignCharactersAndEscapes(Generator &generator) {
    std::u16string text = generator.oneIn(2) ? u"" : u"{\"";
    for (size_t left = generator.below(10); left > 0; --left) {
        text += generator.oneIn(2) ? std::u16string_view(&generator.of(kForeign), 1) : generator.of(kEscapes);
        if (generator.oneIn(6)) {
            text += u"\":\"";
        }
        if (generator.oneIn(12)) {
            text += u'\0';
        }
    }
    return generator.oneIn(2) ? text : text + u"\"}";
}

// Dictionaries.

/// In UTF-8. A half of a pair alone, which has no place there, takes three bytes like its neighbours.
std::string inUtf8(std::u16string_view text) {
    std::string bytes;
    for (size_t at = 0; at < text.size(); ++at) {
        char32_t character = text[at];
        if (at + 1 < text.size() && (character & 0xFC00U) == 0xD800 && (text[at + 1] & 0xFC00U) == 0xDC00) {
            character = 0x10000 + ((character & 0x3FFU) << 10U) + (text[++at] & 0x3FFU);
        }
        utf8::unchecked::append(character, std::back_inserter(bytes));
    }
    return bytes;
}

Value value(Generator &generator) {
    const std::uint64_t bits = generator.bits();
    const std::uint64_t number = bits >> generator.below(64);
    switch (generator.below(12)) {
    case 0:
        return generator.oneIn(2);
    case 1:
        return static_cast<int>(number);
    case 2:
        return static_cast<std::int64_t>(number);
    case 3:
        return number;
    case 4: {
        const auto real = std::bit_cast<double>(bits);
        return std::isnan(real) ? std::numeric_limits<double>::quiet_NaN() : real; // one without a sign
    }
    case 5:
        return static_cast<double>(static_cast<std::int64_t>(number)) /
               (generator.oneIn(2) ? 2 : 1000); // halves are ties
    case 6:
        return static_cast<float>(static_cast<std::int64_t>(number)) / 64;
    case 7:
        return generator.oneIn(2) ? Value(static_cast<short>(number)) : Value(static_cast<unsigned short>(number));
    case 8:
        return generator.oneIn(2) ? Value(List{1}) : Value();
    case 9:
        return inUtf8(generator.text(kForeign, 5));
    default:
        return inUtf8(generator.pieces(kEscapes, 6));
    }
}

Dictionary dictionary(Generator &generator) {
    Dictionary members;
    for (size_t left = generator.below(6); left > 0; --left) {
        const std::u16string key = generator.oneIn(8) ? generator.pieces(kEscapes, 3) : generator.text(u"abc", 3);
        members.insert_or_assign(inUtf8(key), value(generator));
    }
    return members;
}

// The comparison.

bool isSame(const Value &a, const Value &b) {
    if (a.is<double>() && b.is<double>()) {
        return std::bit_cast<std::uint64_t>(*a.as<double>()) == std::bit_cast<std::uint64_t>(*b.as<double>());
    }
    return a == b;
}

bool isSame(const std::optional<Dictionary> &a, const std::optional<Dictionary> &b) {
    if (!a || !b) {
        return a.has_value() == b.has_value();
    }
    return std::equal(a->begin(), a->end(), b->begin(), b->end(),
                      [](const auto &x, const auto &y) { return x.first == y.first && isSame(x.second, y.second); });
}

template <class Result>
struct Scan {
    Result result;
    std::uint64_t at = 0;
    bool error = false;
};

bool isSameText(std::u16string_view text) {
    const std::string bytes = inUtf8(text);
    return isSame(JSONEncoder::createObjFromJSONStr(text), JSONReference::createObjFromJSONStr(text)) &&
           JSONEncoder::stringByAddingJSONEscape(bytes) == JSONReference::stringByAddingJSONEscape(bytes) &&
           JSONEncoder::stringByReplacingJSONEscape(bytes) == JSONReference::stringByReplacingJSONEscape(bytes);
}

/// Where a scan has failed its position has no meaning.
bool isSameString(std::u16string_view text, std::uint64_t at) {
    Scan<std::optional<std::string>> ours{{}, at, false};
    Scan<std::optional<std::string>> reference{{}, at, false};
    ours.result = JSONEncoder::jsonStringForStr(text, ours.at, ours.error);
    reference.result = JSONReference::jsonStringForStr(text, reference.at, reference.error);
    return ours.result == reference.result && ours.error == reference.error &&
           (!reference.result || ours.at == reference.at);
}

bool isSameNumber(std::u16string_view text, std::uint64_t at) {
    Scan<Value> ours{{}, at, false};
    Scan<Value> reference{{}, at, false};
    ours.result = JSONEncoder::jsonNumberForStr(text, ours.at, ours.error);
    reference.result = JSONReference::jsonNumberForStr(text, reference.at, reference.error);
    return isSame(ours.result, reference.result) && ours.error == reference.error &&
           (reference.error || ours.at == reference.at);
}

void compareTexts(std::u16string (*make)(Generator &), std::uint64_t seed) {
    Generator generator(seed);
    int objects = 0;
    for (int round = 0; round < kRounds; ++round) {
        const std::u16string text = make(generator);
        const auto at = generator.place(text);
        ASSERT_TRUE(isSameText(text)) << testing::PrintToString(text);
        ASSERT_TRUE(isSameString(text, at)) << testing::PrintToString(text) << " at " << at;
        ASSERT_TRUE(isSameNumber(text, at)) << testing::PrintToString(text) << " at " << at;
        objects += JSONReference::createObjFromJSONStr(text) ? 1 : 0;
    }
    // Neither side of the road alone.
    EXPECT_GT(objects, kRounds / 200);
    EXPECT_LT(objects, kRounds);
    testing::Test::RecordProperty("objects", objects);
}

TEST(JSONDifferential, TextsOfTheGrammarsCharactersReadAsInTheReference) { compareTexts(ofTheAlphabet, 1); }
TEST(JSONDifferential, TextsOfTheGrammarsPiecesReadAsInTheReference) { compareTexts(ofPieces, 2); }
TEST(JSONDifferential, ChangedDocumentsReadAsInTheReference) { compareTexts(mutated, 3); }
TEST(JSONDifferential, NearlyWordsAndNumbersReadAsInTheReference) { compareTexts(ofWordsAndNumbers, 4); }
TEST(JSONDifferential, ForeignCharactersAndEscapesReadAsInTheReference) {
    compareTexts(ofForeignCharactersAndEscapes, 5);
}

TEST(JSONDifferential, DictionariesAreWrittenAsInTheReference) {
    Generator generator(6);
    for (int round = 0; round < kRounds; ++round) {
        const Dictionary members = dictionary(generator);
        ASSERT_EQ(JSONEncoder::createJSONStrFromDict(members), JSONReference::createJSONStrFromDict(members));
    }
}

} // namespace
} // namespace quillmark

#include "accounts/JSONEncoder.h"
#include "support/ValuePrinter.h"
#include "utils/Utf16.h"

#include <gtest/gtest.h>
#include <limits>

namespace quillmark {
namespace {

std::string written(const Dictionary &dictionary) { return JSONEncoder::createJSONStrFromDict(dictionary); }
std::string written(const Value &value) { return written(Dictionary{{"a", value}}); }

std::optional<Dictionary> read(std::string_view text) { return JSONEncoder::createObjFromJSONStr(text); }
bool isRefused(std::string_view text) { return !read(text); }
void expectRefused(std::initializer_list<const char *> documents) {
    for (const char *const document : documents) {
        EXPECT_TRUE(isRefused(document)) << document;
    }
}

/// What the member "a" is, down to its kind, in an object where this text stands for its value.
void expectValue(const std::string &text, const Value &expected) {
    const auto object = read("{\"a\":" + text + '}');
    EXPECT_EQ(object ? valueOf(*object, "a") : Value(), expected) << text;
}

void expectObject(std::string_view document, const Dictionary &expected) {
    EXPECT_EQ(read(document), expected) << document;
}

// Writing.

TEST(JSONWriting, AnEmptyDictionaryIsTwoBraces) { EXPECT_EQ(written(Dictionary()), "{}"); }

TEST(JSONWriting, MembersStandInTheDictionarysOrderWithoutBlanks) {
    EXPECT_EQ(written({{"b", 2}, {"a", "x"}, {"c", true}}), "{\"a\":\"x\",\"b\":2,\"c\":true}");
}

TEST(JSONWriting, ABooleanIsABareWord) {
    EXPECT_EQ(written(true), "{\"a\":true}");
    EXPECT_EQ(written(false), "{\"a\":false}");
}

TEST(JSONWriting, ATextIsEscapedBetweenQuotes) {
    EXPECT_EQ(written("a/b"), "{\"a\":\"a\\/b\"}");
    EXPECT_EQ(written("\\\"\b\f\n\r\t"), "{\"a\":\"\\\\\\\"\\b\\f\\n\\r\\t\"}");
    EXPECT_EQ(written(""), "{\"a\":\"\"}");
    EXPECT_EQ(written("\u00e4\u65e5\u0001"), "{\"a\":\"\u00e4\u65e5\u0001\"}");
}

TEST(JSONWriting, AKeyIsWrittenAsItIsEvenWithAQuoteInIt) { // deliberate: it does not read back the same
    const Dictionary dictionary{{"a\"b/", 1}};
    EXPECT_EQ(written(dictionary), "{\"a\"b/\":1}");
    EXPECT_NE(read(written(dictionary)), dictionary);
}

TEST(JSONWriting, AnIntegerIsDecimal) {
    EXPECT_EQ(written(0), "{\"a\":0}");
    EXPECT_EQ(written(-7), "{\"a\":-7}");
    EXPECT_EQ(written(static_cast<short>(-3)), "{\"a\":-3}");
    EXPECT_EQ(written(std::numeric_limits<std::int64_t>::min()), "{\"a\":-9223372036854775808}");
    EXPECT_EQ(written(std::numeric_limits<std::uint64_t>::max()), "{\"a\":18446744073709551615}");
}

TEST(JSONWriting, ADoubleHasSixteenDigitsAtMostAndAFloatSeven) {
    EXPECT_EQ(written(-1.25), "{\"a\":-1.25}");
    EXPECT_EQ(written(0.1), "{\"a\":0.1}");
    EXPECT_EQ(written(1.0 / 3), "{\"a\":0.3333333333333333}");
    EXPECT_EQ(written(2.0), "{\"a\":2}");
    EXPECT_EQ(written(1e300), "{\"a\":1e+300}");
    EXPECT_EQ(written(1.0F / 3), "{\"a\":0.3333333}");
}

TEST(JSONWriting, ATieInTheLastDigitGoesToTheEvenOne) {
    EXPECT_EQ(written(2059625801530368.5), "{\"a\":2059625801530368}");
    EXPECT_EQ(written(903332.25F), "{\"a\":903332.2}");
}

TEST(JSONWriting, AValueOfAnyOtherKindIsAnEmptyText) {
    for (const Value &other :
         {Value(Date(std::chrono::seconds(1))), Value(List{1}), Value(Dictionary()), Value(Bytes{"x"}), Value()}) {
        EXPECT_EQ(written(other), "{\"a\":\"\"}") << testing::PrintToString(other);
    }
}

TEST(JSONWriting, WhatIsWrittenReadsBackTheSame) {
    const Dictionary dictionary{
        {"keepSignedIn", true}, {"password", "p\\n\"/ \n\u00e4"}, {"number", -12}, {"real", -1.25}};
    expectObject(written(dictionary), dictionary);
}

// Reading.

TEST(JSONReading, ATextMayBeOfAnyLength) {
    for (size_t length = 0; length < 200; ++length) {
        const std::string text(length, 'x');
        expectObject(R"({"a":")" + text + R"(ü\"","b":")" + text + "\"}", {{"a", text + "ü\""}, {"b", text}});
    }
}

TEST(JSONReading, AnObjectWithoutMembersIsAnEmptyDictionary) {
    expectObject("{}", {});
    expectObject(" { } ", {});
}

TEST(JSONReading, ATextThatIsNoObjectIsNothing) {
    expectRefused({"", "{", "}", " ", "1", "\"a\"", "[1]", "null", "{\"a\":1"});
    EXPECT_TRUE(isRefused(std::string_view()));
}

TEST(JSONReading, MembersKeepTheTypesOfTheirValues) {
    expectObject("{\"a\":\"x\",\"b\":1,\"c\":-1.25,\"d\":true,\"e\":false}",
                 {{"a", "x"}, {"b", 1}, {"c", -1.25}, {"d", true}, {"e", false}});
}

TEST(JSONReading, BlanksAndLineBreaksAreSkipped) {
    expectObject(" \t\n{ \"a\" :\r\n1 ,\"b\": \"x\" } behind it {", {{"a", 1}, {"b", "x"}});
}

TEST(JSONReading, ALaterEqualKeyReplacesTheEarlier) {
    expectObject("{\"a\":1,\"b\":2,\"a\":\"x\"}", {{"a", "x"}, {"b", 2}});
}

TEST(JSONReading, ANestedObjectDiscardsWhatWasReadBeforeIt) { // deliberate
    expectObject("{\"a\":1,\"b\":{\"c\":2}}", {{"c", 2}});
    expectObject("{\"a\":1,\"b\":{}}", {});
}

TEST(JSONReading, AKeyWaitsForItsValueBehindANestedBrace) { // deliberate
    expectObject("{\"a\":1,\"b\":{:2}}", {{"b", 2}});
}

TEST(JSONReading, TheFirstClosingBraceEndsIt) { // deliberate
    expectObject("{\"a\":1}}},:nonsense", {{"a", 1}});
}

TEST(JSONReading, BracketsAndNullAreSkipped) { // deliberate
    expectObject("{\"a\":[1]}", {{"a", 1}});
    expectObject("{\"a\":null}", {});
    expectObject("{\"a\":1,\"b\":null,\"c\":2}", {{"a", 1}, {"c", 2}});
}

TEST(JSONReading, AListsSecondElementIsTakenForAKey) { // deliberate
    EXPECT_TRUE(isRefused("{\"a\":[1,2]}"));
    expectObject("{\"a\":[\"x\",\"b\"],\"c\":1}", {{"a", "x"}, {"c", 1}});
}

TEST(JSONReading, ACommaBeforeTheFirstMemberFails) {
    expectRefused(
        {"{,\"a\":1}", ",{\"a\":1}", "{\"a\",\"b\":1}", "{\"a\":null,\"b\":1}", "{\"a\":1,\"b\":{,\"c\":2}}"});
}

TEST(JSONReading, CommasBehindAMemberMayBeMany) { // deliberate
    expectObject("{\"a\":1,,,\"b\":2,}", {{"a", 1}, {"b", 2}});
}

TEST(JSONReading, AColonWithoutAKeyBeforeItFails) {
    expectRefused({"{:1}", ":{}", "{\"\":1}", "{\"a\":1:}", "{\"a\":1,:2}"});
}

TEST(JSONReading, ColonsBehindAKeyMayBeMany) { // deliberate
    expectObject("{\"a\"::1}", {{"a", 1}});
}

TEST(JSONReading, WhereAKeyIsExpectedNumbersAndWordsFail) {
    expectRefused(
        {"{1:2}", "{-:2}", "{true:1}", "{false:1}", "{T", "{\"a\" 1}", "{\"a\" true}", "{\"a\" false}", "{\"a\":1,2}"});
}

TEST(JSONReading, OfTwoKeysTheLaterIsTaken) { // deliberate
    expectObject("{\"a\"\"b\":1}", {{"b", 1}});
}

TEST(JSONReading, AKeyWithoutAValueIsLeftOut) { // deliberate
    expectObject("{\"a\"}", {});
    expectObject("{\"a\":}", {});
    expectObject("{\"a\":1,\"b\":,\"c\":2}", {{"a", 1}, {"c", 2}});
}

TEST(JSONReading, AValueMayStandBeforeItsKey) { // deliberate
    expectObject("1{\"a\"}", {{"a", 1}});
    expectObject("\"x\"{\"\"}", {{"", "x"}});
    expectObject("1{\"a\"2,\"b\"}", {{"a", 1}, {"b", 2}});
    expectObject("{\"a\":1 true,\"b\"}", {{"a", 1}, {"b", true}});
}

TEST(JSONReading, WithoutACommaTheNextKeyIsTakenForAValue) { // deliberate
    EXPECT_TRUE(isRefused("{\"a\":1\"b\":2}"));
    expectObject("{\"a\":1 2 3}", {{"a", 1}});
}

TEST(JSONReading, WordsMayBeWrittenInCapitals) {
    for (const char *const word : {"true", "TRUE", "tRuE"}) {
        expectValue(word, true);
    }
    for (const char *const word : {"false", "FALSE", "fAlSe"}) {
        expectValue(word, false);
    }
}

TEST(JSONReading, AnyWordOfFiveLettersThatBeginsWithFIsTrue) { // deliberate
    expectValue("fxxxx", true);
    expectValue("Falsy", true);
    expectObject("{\"a\":f}}}}}", {{"a", true}});
}

TEST(JSONReading, AnyWordOfFourLettersThatBeginsWithTIsFalse) { // deliberate
    expectValue("txxx", false);
    expectValue("Trud", false);
    expectObject("{\"a\":t}}}}", {{"a", false}});
}

TEST(JSONReading, AWordAtTheVeryEndFails) { // deliberate: one more character has to follow, and it is the closing brace
    expectRefused({"{\"a\":false", "{\"a\":true", "{\"a\":fals}", "{\"a\":tru}", "{\"a\":f", "{\"a\":t}"});
    expectValue("false", false);
    expectValue("true", true);
}

// Texts.

struct Scan {
    std::optional<std::string> text;
    std::uint64_t at = 0;
    bool error = false;
};

Scan scan(std::u16string_view document, std::uint64_t at = 0) {
    Scan scan{{}, at, false};
    scan.text = JSONEncoder::jsonStringForStr(document, scan.at, scan.error);
    return scan;
}

TEST(JSONTexts, TheClosingQuoteEndsItAndThePositionIsBehindThat) {
    const Scan first = scan(u"x\"ab\"c", 2);
    EXPECT_EQ(first.text, "ab");
    EXPECT_EQ(first.at, 5U);
    EXPECT_FALSE(first.error);
    EXPECT_EQ(scan(u"\"").text, "");
    EXPECT_EQ(scan(u"\"").at, 1U);
}

TEST(JSONTexts, EscapesStandForTheirCharacters) { EXPECT_EQ(scan(uR"(\"\/\\\b\f\n\r\t")").text, "\"/\\\b\f\n\r\t"); }

TEST(JSONTexts, AnyOtherEscapedCharacterStandsForItself) { // deliberate: for a "u" and four digits as well
    EXPECT_EQ(scan(uR"(\u0041\x\0\ \B")").text, "u0041x0 B");
}

TEST(JSONTexts, WithoutAClosingQuoteThereIsNoneAndNoError) {
    for (const char *const document : {"", "ab", "ab\\\"", "\\\\"}) {
        EXPECT_EQ(scan(utf16(document)).text, std::nullopt) << document;
        EXPECT_FALSE(scan(utf16(document)).error) << document;
    }
    EXPECT_EQ(scan(u"a\"", 9).text, std::nullopt);
    EXPECT_FALSE(scan(u"a\"", 9).error);
    EXPECT_FALSE(scan(u"a\"", std::numeric_limits<std::uint64_t>::max()).error);
}

TEST(JSONTexts, ABackslashAtTheVeryEndIsAnError) {
    for (const char *const document : {"\\", "ab\\", "\\\\\\"}) {
        EXPECT_EQ(scan(utf16(document)).text, std::nullopt) << document;
        EXPECT_TRUE(scan(utf16(document)).error) << document;
    }
    EXPECT_TRUE(isRefused("{\"a\":\"b\\"));
}

TEST(JSONTexts, CharactersKeepTheirLowerByteOnly) { // deliberate: texts are meant to be ASCII
    EXPECT_EQ(scan(u"\u00e4\u00ff\"").text, "\u00e4\u00ff");
    EXPECT_EQ(scan(u"\u0141\u65e5\"").text, "A\u00e5");
    EXPECT_EQ(scan(u"\u0100\"").text, std::string(1, '\0'));
    EXPECT_EQ(scan(u"\xd83d\xde42\"").text, "=B");
}

TEST(JSONTexts, ACharacterWhoseLowerByteIsAQuoteOrABackslashIsNone) {
    EXPECT_EQ(scan(u"\u0122\u015cn\\\u016e\"").text, "\"\\nn");
}

TEST(JSONTexts, LongOnesAreReadWhole) {
    const std::string longText = std::string(100'000, 'x') + '/';
    expectObject(written(longText), {{"a", longText}});
}

// Numbers.

Value number(std::u16string_view document, std::uint64_t &at, bool &error) {
    return JSONEncoder::jsonNumberForStr(document, at, error);
}

TEST(JSONNumbers, AnIntegerIsReadUpToTheFirstOtherCharacter) {
    std::uint64_t at = 1;
    bool error = false;
    EXPECT_EQ(number(u"x120,3", at, error), 120);
    EXPECT_EQ(at, 4U);
    EXPECT_FALSE(error);
}

TEST(JSONNumbers, WithAPointItIsADouble) {
    expectValue("-1.25", -1.25);
    expectValue("0.5", 0.5);
    expectValue("1.", 1.0);
    expectValue("-.5", -0.5);
    expectValue("123456789.015625", 123456789.015625);
}

TEST(JSONNumbers, WithoutAPointItIsAnInteger) {
    expectValue("0", 0);
    expectValue("-0", 0);
    expectValue("007", 7);
    expectValue("9223372036854775807", std::numeric_limits<std::int64_t>::max());
    expectValue("-9223372036854775808", std::numeric_limits<std::int64_t>::min());
}

TEST(JSONNumbers, ASecondPointIsAnError) {
    std::uint64_t at = 0;
    bool error = false;
    EXPECT_TRUE(number(u"1.2.3", at, error).isNothing());
    EXPECT_TRUE(error);
    expectRefused({"{\"a\":1.2.3}", "{\"a\":1..}"});
}

TEST(JSONNumbers, AnIntegerBeyond64BitsLosesItsUpperBits) { // deliberate
    expectValue("9223372036854775808", std::numeric_limits<std::int64_t>::min());
    expectValue("18446744073709551616", 0);
    expectValue("18446744073709551617.5", 1.5);
}

TEST(JSONNumbers, AMinusAnywhereMakesItNegative) { // deliberate
    expectValue("1-2", -12);
    expectValue("12-", -12);
    expectValue("--1", -1);
    expectValue("1.5-", -1.5);
    expectValue("-", 0);
}

TEST(JSONNumbers, ExponentsAreNotApplied) { // deliberate
    expectValue("1e3", 13);
    expectValue("1e-3", -13);
    expectValue("1.5e2", 1.52);
    expectValue("1e", 1);
}

TEST(JSONNumbers, ACapitalEAndAPlusEndIt) { // deliberate: what is left of it is the next value
    std::uint64_t at = 0;
    bool error = false;
    EXPECT_EQ(number(u"1E3", at, error), 1);
    EXPECT_EQ(at, 1U);
    expectValue("1E3", 1);
    expectValue("1e+3", 1);
    expectValue("+1", 1);
}

TEST(JSONNumbers, DigitsOfOtherScriptsAreNone) {
    expectValue("1\u0663", 1);
    expectObject("{\"a\":\u0663}", {});
}

TEST(JSONNumbers, APositionBehindTheEndIsAnEnd) {
    std::uint64_t at = 9;
    bool error = false;
    EXPECT_EQ(number(u"12", at, error), 0);
    EXPECT_EQ(at, 9U);
    EXPECT_FALSE(error);
}

// Escaping.

TEST(JSONEscaping, EightCharactersGetABackslashAndNoOther) {
    EXPECT_EQ(JSONEncoder::stringByAddingJSONEscape("\\ \" / \b \f \n \r \t"), R"(\\ \" \/ \b \f \n \r \t)");
    EXPECT_EQ(JSONEncoder::stringByAddingJSONEscape("'\u0001\v\u00e4\u65e5\u2028"), "'\u0001\v\u00e4\u65e5\u2028");
    EXPECT_EQ(JSONEncoder::stringByAddingJSONEscape(""), "");
}

TEST(JSONEscaping, TheBackslashesOfOtherEscapesAreNotDoubled) {
    EXPECT_EQ(JSONEncoder::stringByAddingJSONEscape("\\\n"), R"(\\\n)");
}

TEST(JSONEscaping, UnescapingUndoesIt) {
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(R"(\\ \" \/ \b \f \n \r \t)"), "\\ \" / \b \f \n \r \t");
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(""), "");
}

TEST(JSONEscaping, AnEscapedBackslashBeforeALetterBecomesTheLettersCharacter) { // deliberate
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(R"(\\n)"), "\n");
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(R"(C:\\temp)"), "C:\temp");
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(R"(\\\\n)"), "\\\n");
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(R"(\\\\)"), R"(\\)");
}

TEST(JSONEscaping, UnknownEscapesAndALoneBackslashStay) {
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(R"(\u0041 \x \)"), R"(\u0041 \x \)");
}

} // namespace
} // namespace quillmark

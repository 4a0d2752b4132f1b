#include "accounts/JSONEncoder.h"
#include "support/QtPrinters.h"

#include <QDateTime>
#include <gtest/gtest.h>
#include <limits>

namespace quillmark {
namespace {

QString written(const QVariantMap &dictionary) { return JSONEncoder::createJSONStrFromDict(dictionary); }
QString written(const QVariant &value) { return written(QVariantMap{{QStringLiteral("a"), value}}); }

std::optional<QVariantMap> read(QStringView text) { return JSONEncoder::createObjFromJSONStr(text); }
bool isRefused(QStringView text) { return !read(text); }

/// The value of the member "a" in an object where this text stands for the value.
QVariant value(QStringView text) {
    const auto object = read(QStringLiteral("{\"a\":%1}").arg(text));
    return object ? object->value(QStringLiteral("a")) : QVariant();
}

QVariant integer(qint64 number) { return QVariant::fromValue<qlonglong>(number); }
QVariant text(QStringView characters) { return characters.toString(); }

/// Alike in type, too; QVariants of different kinds of numbers compare as equal.
void expectValue(QStringView document, const QVariant &expected) {
    const QVariant found = value(document);
    EXPECT_EQ(found.typeId(), expected.typeId()) << document.toUtf8().toStdString();
    EXPECT_EQ(found, expected) << document.toUtf8().toStdString();
}

void expectObject(QStringView document, const QVariantMap &expected) {
    const auto found = read(document);
    ASSERT_TRUE(found) << document.toUtf8().toStdString();
    EXPECT_EQ(found->keys(), expected.keys()) << document.toUtf8().toStdString();
    for (auto member = expected.begin(); member != expected.end(); ++member) {
        EXPECT_EQ(found->value(member.key()).typeId(), member.value().typeId()) << member.key().toStdString();
        EXPECT_EQ(found->value(member.key()), member.value()) << member.key().toStdString();
    }
}

// Writing.

TEST(JSONWriting, AnEmptyDictionaryIsTwoBraces) { EXPECT_EQ(written(QVariantMap()), QStringLiteral("{}")); }

TEST(JSONWriting, MembersStandInTheDictionarysOrderWithoutBlanks) {
    EXPECT_EQ(
        written({{QStringLiteral("b"), 2}, {QStringLiteral("a"), QStringLiteral("x")}, {QStringLiteral("c"), true}}),
        QStringLiteral("{\"a\":\"x\",\"b\":2,\"c\":true}"));
}

TEST(JSONWriting, ABooleanIsABareWord) {
    EXPECT_EQ(written(true), QStringLiteral("{\"a\":true}"));
    EXPECT_EQ(written(false), QStringLiteral("{\"a\":false}"));
}

TEST(JSONWriting, ATextIsEscapedBetweenQuotes) {
    EXPECT_EQ(written(QStringLiteral("a/b")), QStringLiteral("{\"a\":\"a\\/b\"}"));
    EXPECT_EQ(written(QStringLiteral("\\\"\b\f\n\r\t")), QStringLiteral("{\"a\":\"\\\\\\\"\\b\\f\\n\\r\\t\"}"));
    EXPECT_EQ(written(QString()), QStringLiteral("{\"a\":\"\"}"));
    EXPECT_EQ(written(QStringLiteral("\u00e4\u65e5\u0001")), QStringLiteral("{\"a\":\"\u00e4\u65e5\u0001\"}"));
}

TEST(JSONWriting, AKeyIsWrittenAsItIsEvenWithAQuoteInIt) { // deliberate: it does not read back the same
    const QVariantMap dictionary{{QStringLiteral("a\"b/"), 1}};
    EXPECT_EQ(written(dictionary), QStringLiteral("{\"a\"b/\":1}"));
    EXPECT_NE(read(written(dictionary)), dictionary);
}

TEST(JSONWriting, AnIntegerIsDecimal) {
    EXPECT_EQ(written(0), QStringLiteral("{\"a\":0}"));
    EXPECT_EQ(written(-7), QStringLiteral("{\"a\":-7}"));
    EXPECT_EQ(written(static_cast<short>(-3)), QStringLiteral("{\"a\":-3}"));
    EXPECT_EQ(written(std::numeric_limits<qlonglong>::min()), QStringLiteral("{\"a\":-9223372036854775808}"));
    EXPECT_EQ(written(std::numeric_limits<qulonglong>::max()), QStringLiteral("{\"a\":18446744073709551615}"));
}

TEST(JSONWriting, ADoubleHasSixteenDigitsAtMostAndAFloatSeven) {
    EXPECT_EQ(written(-1.25), QStringLiteral("{\"a\":-1.25}"));
    EXPECT_EQ(written(0.1), QStringLiteral("{\"a\":0.1}"));
    EXPECT_EQ(written(1.0 / 3), QStringLiteral("{\"a\":0.3333333333333333}"));
    EXPECT_EQ(written(2.0), QStringLiteral("{\"a\":2}"));
    EXPECT_EQ(written(1e300), QStringLiteral("{\"a\":1e+300}"));
    EXPECT_EQ(written(1.0F / 3), QStringLiteral("{\"a\":0.3333333}"));
}

TEST(JSONWriting, ATieInTheLastDigitGoesToTheEvenOne) {
    EXPECT_EQ(written(2059625801530368.5), QStringLiteral("{\"a\":2059625801530368}"));
    EXPECT_EQ(written(903332.25F), QStringLiteral("{\"a\":903332.2}"));
}

TEST(JSONWriting, AValueOfAnyOtherKindIsAnEmptyText) {
    for (const QVariant &other : {QVariant(QDateTime::currentDateTime()), QVariant(QVariantList{1}),
                                  QVariant(QVariantMap()), QVariant(QByteArray("x")), QVariant()}) {
        EXPECT_EQ(written(other), QStringLiteral("{\"a\":\"\"}")) << other.typeName();
    }
}

TEST(JSONWriting, WhatIsWrittenReadsBackTheSame) {
    const QVariantMap dictionary{{QStringLiteral("keepSignedIn"), true},
                                 {QStringLiteral("password"), QStringLiteral("p\\n\"/ \n\u00e4")},
                                 {QStringLiteral("number"), integer(-12)},
                                 {QStringLiteral("real"), -1.25}};
    expectObject(written(dictionary), dictionary);
}

// Reading.

TEST(JSONReading, AnObjectWithoutMembersIsAnEmptyDictionary) {
    expectObject(u"{}", {});
    expectObject(u" { } ", {});
}

TEST(JSONReading, ATextThatIsNoObjectIsNothing) {
    for (const QStringView document : {u"", u"{", u"}", u" ", u"1", u"\"a\"", u"[1]", u"null", u"{\"a\":1"}) {
        EXPECT_TRUE(isRefused(document)) << document.toUtf8().toStdString();
    }
    EXPECT_TRUE(isRefused(QStringView()));
}

TEST(JSONReading, MembersKeepTheTypesOfTheirValues) {
    expectObject(u"{\"a\":\"x\",\"b\":1,\"c\":-1.25,\"d\":true,\"e\":false}", {{QStringLiteral("a"), text(u"x")},
                                                                               {QStringLiteral("b"), integer(1)},
                                                                               {QStringLiteral("c"), -1.25},
                                                                               {QStringLiteral("d"), true},
                                                                               {QStringLiteral("e"), false}});
}

TEST(JSONReading, BlanksAndLineBreaksAreSkipped) {
    expectObject(u" \t\n{ \"a\" :\r\n1 ,\"b\": \"x\" } behind it {",
                 {{QStringLiteral("a"), integer(1)}, {QStringLiteral("b"), text(u"x")}});
}

TEST(JSONReading, ALaterEqualKeyReplacesTheEarlier) {
    expectObject(u"{\"a\":1,\"b\":2,\"a\":\"x\"}",
                 {{QStringLiteral("a"), text(u"x")}, {QStringLiteral("b"), integer(2)}});
}

TEST(JSONReading, ANestedObjectDiscardsWhatWasReadBeforeIt) { // deliberate
    expectObject(u"{\"a\":1,\"b\":{\"c\":2}}", {{QStringLiteral("c"), integer(2)}});
    expectObject(u"{\"a\":1,\"b\":{}}", {});
}

TEST(JSONReading, AKeyWaitsForItsValueBehindANestedBrace) { // deliberate
    expectObject(u"{\"a\":1,\"b\":{:2}}", {{QStringLiteral("b"), integer(2)}});
}

TEST(JSONReading, TheFirstClosingBraceEndsIt) { // deliberate
    expectObject(u"{\"a\":1}}},:nonsense", {{QStringLiteral("a"), integer(1)}});
}

TEST(JSONReading, BracketsAndNullAreSkipped) { // deliberate
    expectObject(u"{\"a\":[1]}", {{QStringLiteral("a"), integer(1)}});
    expectObject(u"{\"a\":null}", {});
    expectObject(u"{\"a\":1,\"b\":null,\"c\":2}",
                 {{QStringLiteral("a"), integer(1)}, {QStringLiteral("c"), integer(2)}});
}

TEST(JSONReading, AListsSecondElementIsTakenForAKey) { // deliberate
    EXPECT_TRUE(isRefused(u"{\"a\":[1,2]}"));
    expectObject(u"{\"a\":[\"x\",\"b\"],\"c\":1}",
                 {{QStringLiteral("a"), text(u"x")}, {QStringLiteral("c"), integer(1)}});
}

TEST(JSONReading, ACommaBeforeTheFirstMemberFails) {
    for (const QStringView document :
         {u"{,\"a\":1}", u",{\"a\":1}", u"{\"a\",\"b\":1}", u"{\"a\":null,\"b\":1}", u"{\"a\":1,\"b\":{,\"c\":2}}"}) {
        EXPECT_TRUE(isRefused(document)) << document.toUtf8().toStdString();
    }
}

TEST(JSONReading, CommasBehindAMemberMayBeMany) { // deliberate
    expectObject(u"{\"a\":1,,,\"b\":2,}", {{QStringLiteral("a"), integer(1)}, {QStringLiteral("b"), integer(2)}});
}

TEST(JSONReading, AColonWithoutAKeyBeforeItFails) {
    for (const QStringView document : {u"{:1}", u":{}", u"{\"\":1}", u"{\"a\":1:}", u"{\"a\":1,:2}"}) {
        EXPECT_TRUE(isRefused(document)) << document.toUtf8().toStdString();
    }
}

TEST(JSONReading, ColonsBehindAKeyMayBeMany) { // deliberate
    expectObject(u"{\"a\"::1}", {{QStringLiteral("a"), integer(1)}});
}

TEST(JSONReading, WhereAKeyIsExpectedNumbersAndWordsFail) {
    for (const QStringView document : {u"{1:2}", u"{-:2}", u"{true:1}", u"{false:1}", u"{T", u"{\"a\" 1}",
                                       u"{\"a\" true}", u"{\"a\" false}", u"{\"a\":1,2}"}) {
        EXPECT_TRUE(isRefused(document)) << document.toUtf8().toStdString();
    }
}

TEST(JSONReading, OfTwoKeysTheLaterIsTaken) { // deliberate
    expectObject(u"{\"a\"\"b\":1}", {{QStringLiteral("b"), integer(1)}});
}

TEST(JSONReading, AKeyWithoutAValueIsLeftOut) { // deliberate
    expectObject(u"{\"a\"}", {});
    expectObject(u"{\"a\":}", {});
    expectObject(u"{\"a\":1,\"b\":,\"c\":2}", {{QStringLiteral("a"), integer(1)}, {QStringLiteral("c"), integer(2)}});
}

TEST(JSONReading, AValueMayStandBeforeItsKey) { // deliberate
    expectObject(u"1{\"a\"}", {{QStringLiteral("a"), integer(1)}});
    expectObject(u"\"x\"{\"\"}", {{QString(), text(u"x")}});
    expectObject(u"1{\"a\"2,\"b\"}", {{QStringLiteral("a"), integer(1)}, {QStringLiteral("b"), integer(2)}});
    expectObject(u"{\"a\":1 true,\"b\"}", {{QStringLiteral("a"), integer(1)}, {QStringLiteral("b"), true}});
}

TEST(JSONReading, WithoutACommaTheNextKeyIsTakenForAValue) { // deliberate
    EXPECT_TRUE(isRefused(u"{\"a\":1\"b\":2}"));
    expectObject(u"{\"a\":1 2 3}", {{QStringLiteral("a"), integer(1)}});
}

TEST(JSONReading, WordsMayBeWrittenInCapitals) {
    for (const QStringView word : {u"true", u"TRUE", u"tRuE"}) {
        expectValue(word, true);
    }
    for (const QStringView word : {u"false", u"FALSE", u"fAlSe"}) {
        expectValue(word, false);
    }
}

TEST(JSONReading, AnyWordOfFiveLettersThatBeginsWithFIsTrue) { // deliberate
    expectValue(u"fxxxx", true);
    expectValue(u"Falsy", true);
    expectObject(u"{\"a\":f}}}}}", {{QStringLiteral("a"), true}});
}

TEST(JSONReading, AnyWordOfFourLettersThatBeginsWithTIsFalse) { // deliberate
    expectValue(u"txxx", false);
    expectValue(u"Trud", false);
    expectObject(u"{\"a\":t}}}}", {{QStringLiteral("a"), false}});
}

TEST(JSONReading, AWordAtTheVeryEndFails) { // deliberate: one more character has to follow, and it is the closing brace
    for (const QStringView document :
         {u"{\"a\":false", u"{\"a\":true", u"{\"a\":fals}", u"{\"a\":tru}", u"{\"a\":f", u"{\"a\":t}"}) {
        EXPECT_TRUE(isRefused(document)) << document.toUtf8().toStdString();
    }
    expectValue(u"false", false);
    expectValue(u"true", true);
}

// Texts.

struct Scan {
    std::optional<QString> text;
    quint64 at = 0;
    bool error = false;
};

Scan scan(QStringView document, quint64 at = 0) {
    Scan scan{{}, at, false};
    scan.text = JSONEncoder::jsonStringForStr(document, scan.at, scan.error);
    return scan;
}

TEST(JSONTexts, TheClosingQuoteEndsItAndThePositionIsBehindThat) {
    const Scan first = scan(u"x\"ab\"c", 2);
    EXPECT_EQ(first.text, QStringLiteral("ab"));
    EXPECT_EQ(first.at, 5U);
    EXPECT_FALSE(first.error);
    EXPECT_EQ(scan(u"\"").text, QStringLiteral(""));
    EXPECT_EQ(scan(u"\"").at, 1U);
}

TEST(JSONTexts, EscapesStandForTheirCharacters) {
    EXPECT_EQ(scan(uR"(\"\/\\\b\f\n\r\t")").text, QStringLiteral("\"/\\\b\f\n\r\t"));
}

TEST(JSONTexts, AnyOtherEscapedCharacterStandsForItself) { // deliberate: for a "u" and four digits as well
    EXPECT_EQ(scan(uR"(\u0041\x\0\ \B")").text, QStringLiteral("u0041x0 B"));
}

TEST(JSONTexts, WithoutAClosingQuoteThereIsNoneAndNoError) {
    for (const QStringView document : {u"", u"ab", u"ab\\\"", u"\\\\"}) {
        EXPECT_EQ(scan(document).text, std::nullopt) << document.toUtf8().toStdString();
        EXPECT_FALSE(scan(document).error) << document.toUtf8().toStdString();
    }
    EXPECT_EQ(scan(u"a\"", 9).text, std::nullopt);
    EXPECT_FALSE(scan(u"a\"", 9).error);
    EXPECT_FALSE(scan(u"a\"", std::numeric_limits<quint64>::max()).error);
}

TEST(JSONTexts, ABackslashAtTheVeryEndIsAnError) {
    for (const QStringView document : {u"\\", u"ab\\", u"\\\\\\"}) {
        EXPECT_EQ(scan(document).text, std::nullopt) << document.toUtf8().toStdString();
        EXPECT_TRUE(scan(document).error) << document.toUtf8().toStdString();
    }
    EXPECT_TRUE(isRefused(u"{\"a\":\"b\\"));
}

TEST(JSONTexts, CharactersKeepTheirLowerByteOnly) { // deliberate: texts are meant to be ASCII
    EXPECT_EQ(scan(u"\u00e4\u00ff\"").text, QStringLiteral("\u00e4\u00ff"));
    EXPECT_EQ(scan(u"\u0141\u65e5\"").text, QStringLiteral("A\u00e5"));
    EXPECT_EQ(scan(u"\u0100\"").text, QString(QChar(u'\0')));
    EXPECT_EQ(scan(u"\xd83d\xde42\"").text, QStringLiteral("=B"));
}

TEST(JSONTexts, ACharacterWhoseLowerByteIsAQuoteOrABackslashIsNone) {
    EXPECT_EQ(scan(u"\u0122\u015cn\\\u016e\"").text, QStringLiteral("\"\\nn"));
}

TEST(JSONTexts, LongOnesAreReadWhole) {
    const QString longText = QString(100'000, u'x') + u'/';
    expectObject(written(longText), {{QStringLiteral("a"), longText}});
}

// Numbers.

QVariant number(QStringView document, quint64 &at, bool &error) {
    return JSONEncoder::jsonNumberForStr(document, at, error);
}

TEST(JSONNumbers, AnIntegerIsReadUpToTheFirstOtherCharacter) {
    quint64 at = 1;
    bool error = false;
    EXPECT_EQ(number(u"x120,3", at, error), integer(120));
    EXPECT_EQ(at, 4U);
    EXPECT_FALSE(error);
}

TEST(JSONNumbers, WithAPointItIsADouble) {
    expectValue(u"-1.25", -1.25);
    expectValue(u"0.5", 0.5);
    expectValue(u"1.", 1.0);
    expectValue(u"-.5", -0.5);
    expectValue(u"123456789.015625", 123456789.015625);
}

TEST(JSONNumbers, WithoutAPointItIsAnInteger) {
    expectValue(u"0", integer(0));
    expectValue(u"-0", integer(0));
    expectValue(u"007", integer(7));
    expectValue(u"9223372036854775807", integer(std::numeric_limits<qint64>::max()));
    expectValue(u"-9223372036854775808", integer(std::numeric_limits<qint64>::min()));
}

TEST(JSONNumbers, ASecondPointIsAnError) {
    quint64 at = 0;
    bool error = false;
    EXPECT_FALSE(number(u"1.2.3", at, error).isValid());
    EXPECT_TRUE(error);
    EXPECT_TRUE(isRefused(u"{\"a\":1.2.3}"));
    EXPECT_TRUE(isRefused(u"{\"a\":1..}"));
}

TEST(JSONNumbers, AnIntegerBeyond64BitsLosesItsUpperBits) { // deliberate
    expectValue(u"9223372036854775808", integer(std::numeric_limits<qint64>::min()));
    expectValue(u"18446744073709551616", integer(0));
    expectValue(u"18446744073709551617.5", 1.5);
}

TEST(JSONNumbers, AMinusAnywhereMakesItNegative) { // deliberate
    expectValue(u"1-2", integer(-12));
    expectValue(u"12-", integer(-12));
    expectValue(u"--1", integer(-1));
    expectValue(u"1.5-", -1.5);
    expectValue(u"-", integer(0));
}

TEST(JSONNumbers, ExponentsAreNotApplied) { // deliberate
    expectValue(u"1e3", integer(13));
    expectValue(u"1e-3", integer(-13));
    expectValue(u"1.5e2", 1.52);
    expectValue(u"1e", integer(1));
}

TEST(JSONNumbers, ACapitalEAndAPlusEndIt) { // deliberate: what is left of it is the next value
    quint64 at = 0;
    bool error = false;
    EXPECT_EQ(number(u"1E3", at, error), integer(1));
    EXPECT_EQ(at, 1U);
    expectValue(u"1E3", integer(1));
    expectValue(u"1e+3", integer(1));
    expectValue(u"+1", integer(1));
}

TEST(JSONNumbers, DigitsOfOtherScriptsAreNone) {
    expectValue(u"1\u0663", integer(1));
    expectObject(u"{\"a\":\u0663}", {});
}

TEST(JSONNumbers, APositionBehindTheEndIsAnEnd) {
    quint64 at = 9;
    bool error = false;
    EXPECT_EQ(number(u"12", at, error), integer(0));
    EXPECT_EQ(at, 9U);
    EXPECT_FALSE(error);
}

// Escaping.

TEST(JSONEscaping, EightCharactersGetABackslashAndNoOther) {
    EXPECT_EQ(JSONEncoder::stringByAddingJSONEscape(u"\\ \" / \b \f \n \r \t"),
              QStringLiteral(R"(\\ \" \/ \b \f \n \r \t)"));
    EXPECT_EQ(JSONEncoder::stringByAddingJSONEscape(u"'\u0001\v\u00e4\u65e5\u2028"),
              QStringLiteral("'\u0001\v\u00e4\u65e5\u2028"));
    EXPECT_EQ(JSONEncoder::stringByAddingJSONEscape(u""), QStringLiteral(""));
}

TEST(JSONEscaping, TheBackslashesOfOtherEscapesAreNotDoubled) {
    EXPECT_EQ(JSONEncoder::stringByAddingJSONEscape(u"\\\n"), QStringLiteral(R"(\\\n)"));
}

TEST(JSONEscaping, UnescapingUndoesIt) {
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(QStringLiteral(R"(\\ \" \/ \b \f \n \r \t)")),
              QStringLiteral("\\ \" / \b \f \n \r \t"));
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(QString()), QString());
}

TEST(JSONEscaping, AnEscapedBackslashBeforeALetterBecomesTheLettersCharacter) { // deliberate
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(QStringLiteral(R"(\\n)")), QStringLiteral("\n"));
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(QStringLiteral(R"(C:\\temp)")), QStringLiteral("C:\temp"));
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(QStringLiteral(R"(\\\\n)")), QStringLiteral("\\\n"));
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(QStringLiteral(R"(\\\\)")), QStringLiteral(R"(\\)"));
}

TEST(JSONEscaping, UnknownEscapesAndALoneBackslashStay) {
    EXPECT_EQ(JSONEncoder::stringByReplacingJSONEscape(QStringLiteral(R"(\u0041 \x \)")),
              QStringLiteral(R"(\u0041 \x \)"));
}

} // namespace
} // namespace quillmark

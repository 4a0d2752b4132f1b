/// The encoder beside its slow reference: both are given the same million generated texts and dictionaries, and must do
/// the same with them, down to the types of the values and the bits of the doubles.

#include "JSONReference.h"
#include "accounts/JSONEncoder.h"
#include "support/QtPrinters.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <random>

namespace quillmark {
namespace {

using test::JSONReference;

constexpr int kRounds = 200'000; // of each kind

/// The same sequence in every run and with every library.
class Generator {
public:
    explicit Generator(quint64 seed) : m_engine(seed) {}

    size_t below(size_t limit) { return static_cast<size_t>(m_engine() % limit); }
    bool oneIn(size_t count) { return below(count) == 0; }
    quint64 bits() { return m_engine(); }

    template <class Table>
    const auto &of(const Table &table) {
        return table[below(std::size(table))];
    }
    QChar of(QStringView characters) { return characters[static_cast<qsizetype>(below(size(characters)))]; }

    /// Up to so many characters of these.
    QString text(QStringView characters, size_t most) {
        QString result;
        for (size_t left = below(most + 1); left > 0; --left) {
            result += of(characters);
        }
        return result;
    }
    /// Up to so many pieces of the table.
    template <class Table>
    QString pieces(const Table &table, size_t most) {
        QString result;
        for (size_t left = below(most + 1); left > 0; --left) {
            result += of(table);
        }
        return result;
    }
    /// A place in the text, its end included.
    qsizetype place(const QString &text) { return static_cast<qsizetype>(below(size(text) + 1)); }

private:
    static size_t size(QStringView text) { return static_cast<size_t>(text.size()); }

    std::mt19937_64 m_engine;
};

// Texts.

constexpr QStringView kAlphabet = u"{}{}\"\"\"\"::,,--..0123456789eeE+fFtTalrus\\\\/bn []a";
constexpr QStringView kNumberCharacters = u"0123456789..--eE+ ";
/// Among them those whose lower byte is nothing, a quote, a backslash, a brace or a digit; a letter that is an s to
/// those who don't mind the case; digits of other scripts; halves of a pair.
constexpr QStringView kForeign =
    u"\u00e4\u00ff\u0100\u0122\u015c\u017b\u017d\u0131\u017f\u0130\u0663\uff11\u2028\ufeff\xd83d\xde00\u0001";
constexpr QStringView kPieces[] = {u"{",    u"}",   u"{\"a\":", u"\"a\"",  u"\"b\"", u"\"\"",     u"\"\\\"\"", u":",
                                   u",",    u"1",   u"-1.25",   u"1.2.3",  u"1e3",   u"true",     u"FALSE",    u"fxxxx",
                                   u"fals", u"tru", u"null",    u" ",      u"[",     u"\"a\":1,", u"\"b\":\"", u"\\",
                                   u"t",    u"f",   u"-",       u"\u0122", u"\""};
constexpr QStringView kWords[] = {u"true",  u"TRUE",  u"tRuE", u"trux",  u"tru",        u"false",
                                  u"False", u"fAlSe", u"fals", u"fxxxx", u"fal\u017fe", u"f\"a\":",
                                  u"t}}}",  u"f}}}}", u"t",    u"f",     u"null",       u"truetrue"};
constexpr QStringView kEscapes[] = {u"\\",  u"\\\\", u"\\\"", u"\\/", u"\\b",      u"\\f",      u"\\n",
                                    u"\\r", u"\\t",  u"\\u",  u"\"",  u"\b",       u"\f",       u"\n",
                                    u"\r",  u"\t",   u"/",    u"n",   u"\\\u0122", u"\\\u0100", u"\\\u016e"};

QVariantMap dictionary(Generator &generator);

QString ofTheAlphabet(Generator &generator) {
    const QString start = generator.oneIn(2) ? QString() : QStringLiteral("{\"k\":");
    return start + generator.text(kAlphabet, 24);
}

QString ofPieces(Generator &generator) {
    const QString text = generator.pieces(kPieces, 12);
    return generator.oneIn(4) ? text : u'{' + text + u'}';
}

QString mutated(Generator &generator) {
    QString text = JSONReference::createJSONStrFromDict(dictionary(generator));
    for (size_t left = generator.below(4); left > 0; --left) {
        const qsizetype at = generator.place(text);
        switch (generator.below(4)) {
        case 0:
            text.remove(at, 1);
            break;
        case 1:
            text.insert(at, generator.of(kAlphabet));
            break;
        case 2:
            text.insert(at, text.mid(generator.place(text), 5));
            break;
        default:
            text.truncate(at);
        }
    }
    return text;
}

QString ofWordsAndNumbers(Generator &generator) {
    QString value;
    switch (generator.below(4)) {
    case 0:
        value = generator.text(kNumberCharacters, 10);
        break;
    case 1: // long enough to overflow, or to have places that no double reaches
        value = generator.text(u"0123456789", 25) + generator.text(u".-", 1) + generator.text(u"0000123456789", 40);
        break;
    default:
        value = generator.of(kWords).toString();
    }
    return QStringLiteral("{\"k\":") + value + generator.text(u"} ,", 2) + generator.pieces(kPieces, 3);
}

QString ofForeignCharactersAndEscapes(Generator &generator) {
    QString text = generator.oneIn(2) ? QString() : QStringLiteral("{\"");
    for (size_t left = generator.below(10); left > 0; --left) {
        text += generator.oneIn(2) ? QString(generator.of(kForeign)) : generator.of(kEscapes).toString();
        if (generator.oneIn(6)) {
            text += QStringLiteral("\":\"");
        }
        if (generator.oneIn(12)) {
            text += QChar(u'\0');
        }
    }
    return generator.oneIn(2) ? text : text + QStringLiteral("\"}");
}

// Dictionaries.

QVariant value(Generator &generator) {
    const quint64 bits = generator.bits();
    const quint64 number = bits >> generator.below(64);
    switch (generator.below(12)) {
    case 0:
        return generator.oneIn(2);
    case 1:
        return static_cast<int>(number);
    case 2:
        return static_cast<qlonglong>(number);
    case 3:
        return static_cast<qulonglong>(number);
    case 4: {
        const auto real = std::bit_cast<double>(bits);
        return std::isnan(real) ? std::numeric_limits<double>::quiet_NaN() : real; // one without a sign
    }
    case 5:
        return static_cast<double>(static_cast<qlonglong>(number)) / (generator.oneIn(2) ? 2 : 1000); // halves are ties
    case 6:
        return static_cast<float>(static_cast<qlonglong>(number)) / 64;
    case 7:
        return generator.oneIn(2) ? QVariant(static_cast<short>(number)) : QVariant(static_cast<ushort>(number));
    case 8:
        return generator.oneIn(2) ? QVariant(QVariantList{1}) : QVariant();
    case 9:
        return generator.text(kForeign, 5);
    default:
        return generator.pieces(kEscapes, 6);
    }
}

QVariantMap dictionary(Generator &generator) {
    QVariantMap members;
    for (size_t left = generator.below(6); left > 0; --left) {
        const QString key = generator.oneIn(8) ? generator.pieces(kEscapes, 3) : generator.text(u"abc", 3);
        members.insert(key, value(generator));
    }
    return members;
}

// The comparison.

bool isSame(const QVariant &a, const QVariant &b) {
    if (a.typeId() == QMetaType::Double && b.typeId() == QMetaType::Double) {
        return std::bit_cast<quint64>(a.toDouble()) == std::bit_cast<quint64>(b.toDouble());
    }
    return a.typeId() == b.typeId() && a == b;
}

bool isSame(const std::optional<QVariantMap> &a, const std::optional<QVariantMap> &b) {
    if (!a || !b) {
        return a.has_value() == b.has_value();
    }
    return a->keys() == b->keys() && std::equal(a->begin(), a->end(), b->begin(), b->end(),
                                                [](const QVariant &x, const QVariant &y) { return isSame(x, y); });
}

template <class Result>
struct Scan {
    Result result;
    quint64 at = 0;
    bool error = false;
};

bool isSameText(const QString &text) {
    return isSame(JSONEncoder::createObjFromJSONStr(text), JSONReference::createObjFromJSONStr(text)) &&
           JSONEncoder::stringByAddingJSONEscape(text) == JSONReference::stringByAddingJSONEscape(text) &&
           JSONEncoder::stringByReplacingJSONEscape(text) == JSONReference::stringByReplacingJSONEscape(text);
}

/// Where a scan has failed its position has no meaning.
bool isSameString(const QString &text, quint64 at) {
    Scan<std::optional<QString>> ours{{}, at, false};
    Scan<std::optional<QString>> reference{{}, at, false};
    ours.result = JSONEncoder::jsonStringForStr(text, ours.at, ours.error);
    reference.result = JSONReference::jsonStringForStr(text, reference.at, reference.error);
    return ours.result == reference.result && ours.error == reference.error &&
           (!reference.result || ours.at == reference.at);
}

bool isSameNumber(const QString &text, quint64 at) {
    Scan<QVariant> ours{{}, at, false};
    Scan<QVariant> reference{{}, at, false};
    ours.result = JSONEncoder::jsonNumberForStr(text, ours.at, ours.error);
    reference.result = JSONReference::jsonNumberForStr(text, reference.at, reference.error);
    return isSame(ours.result, reference.result) && ours.error == reference.error &&
           (reference.error || ours.at == reference.at);
}

/// Each character outside of ASCII as its number.
std::string readable(const QString &text) {
    QString result;
    for (const QChar character : text) {
        const bool isPlain = character >= u' ' && character < QChar(127);
        result += isPlain ? QString(character) : QStringLiteral("<%1>").arg(character.unicode(), 4, 16, QChar(u'0'));
    }
    return result.toStdString();
}

void compareTexts(QString (*make)(Generator &), quint64 seed) {
    Generator generator(seed);
    int objects = 0;
    for (int round = 0; round < kRounds; ++round) {
        const QString text = make(generator);
        const auto at = static_cast<quint64>(generator.place(text));
        ASSERT_TRUE(isSameText(text)) << readable(text);
        ASSERT_TRUE(isSameString(text, at)) << readable(text) << " at " << at;
        ASSERT_TRUE(isSameNumber(text, at)) << readable(text) << " at " << at;
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
        const QVariantMap members = dictionary(generator);
        ASSERT_EQ(JSONEncoder::createJSONStrFromDict(members), JSONReference::createJSONStrFromDict(members));
    }
}

} // namespace
} // namespace quillmark

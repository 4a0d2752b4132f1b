#include "platform/values/Value.h"

#include "support/ValuePrinter.h"
#include "utils/Utf16.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

TEST(Value, IsOfTheKindThatItWasMadeFrom) {
    EXPECT_TRUE(Value().isNothing());
    EXPECT_TRUE(Value(false).is<bool>());
    EXPECT_TRUE(Value(0).is<std::int64_t>());
    EXPECT_TRUE(Value(0.5F).is<float>());
    EXPECT_TRUE(Value(0.5).is<double>());
    EXPECT_TRUE(Value("").is<std::string>());
    EXPECT_TRUE(Value(std::string_view()).is<std::string>());
    EXPECT_TRUE(Value(Bytes()).is<Bytes>());
    EXPECT_TRUE(Value(Date()).is<Date>());
    EXPECT_TRUE(Value(List()).is<List>());
    EXPECT_TRUE(Value(Dictionary()).is<Dictionary>());
}

TEST(Value, IsOfNoOtherKind) {
    EXPECT_FALSE(Value(1).isNothing() || Value("").isNothing() || Value(List()).isNothing());
    EXPECT_FALSE(Value(1).is<bool>() || Value(1).is<std::uint64_t>() || Value(1).is<double>());
    EXPECT_FALSE(Value(0.5F).is<double>() || Value(0.5).is<float>());
    EXPECT_FALSE(Value("1").is<Bytes>() || Value(Bytes{"1"}).is<std::string>());
    EXPECT_FALSE(Value(List()).is<Dictionary>() || Value(Dictionary()).is<List>() || Value().is<List>());
}

TEST(Value, OfAnIntegerIsUnsignedOnlyWhereTheSignedOnesEnd) {
    EXPECT_EQ(*Value(static_cast<short>(-3)).as<std::int64_t>(), -3);
    EXPECT_EQ(*Value(std::uint64_t{kMax}).as<std::int64_t>(), kMax);
    EXPECT_EQ(*Value(std::uint64_t{kMax} + 1).as<std::uint64_t>(), std::uint64_t{kMax} + 1);
}

TEST(Value, GivesNoTextAndAnEmptyListOrDictionaryWhenItIsOfAnotherKind) {
    EXPECT_EQ(Value("a").text(), "a");
    EXPECT_EQ(Value(List{1}).list(), List{1});
    EXPECT_EQ(Value(Dictionary{{"a", 1}}).dictionary(), (Dictionary{{"a", 1}}));
    for (const Value &other : {Value(), Value(1), Value(Bytes{"a"})}) {
        EXPECT_EQ(other.text(), std::nullopt);
        EXPECT_TRUE(other.list().empty());
        EXPECT_TRUE(other.dictionary().empty());
    }
}

TEST(Value, SharesItsListOrDictionaryWithItsCopies) {
    const Value list(List{1});
    const Value dictionary(Dictionary{{"a", 1}});
    const Value copies[] = {list, dictionary};
    EXPECT_EQ(copies[0].as<List>(), list.as<List>());
    EXPECT_EQ(copies[1].as<Dictionary>(), dictionary.as<Dictionary>());
}

TEST(Value, StaysAsItIsWhenTheListItWasMadeFromChanges) {
    List list{1};
    const Value value(list);
    list.emplace_back(2);
    EXPECT_EQ(value.list(), List{1});
}

TEST(Value, EqualsOneOfItsKindWithTheSameContent) {
    EXPECT_EQ(Value(), Value());
    EXPECT_EQ(Value(1), Value(1L));
    EXPECT_EQ(Value("a"), Value(std::string("a")));
    EXPECT_EQ(Value(Bytes{"a"}), Value(Bytes{"a"}));
    EXPECT_EQ(Value(List{1, List{"a"}}), Value(List{1, List{"a"}}));
    EXPECT_EQ(Value(Dictionary{{"a", List{1}}}), Value(Dictionary{{"a", List{1}}}));
    EXPECT_NE(Value(1), Value(2));
    EXPECT_NE(Value(List{1, List{"a"}}), Value(List{1, List{"b"}}));
    EXPECT_NE(Value(Dictionary{{"a", 1}}), Value(Dictionary{{"b", 1}}));
}

TEST(Value, EqualsNoneOfAnotherKind) {
    EXPECT_NE(Value(1), Value(1.0));
    EXPECT_NE(Value(1), Value(true));
    EXPECT_NE(Value(1), Value("1"));
    EXPECT_NE(Value(0.5F), Value(0.5));
    EXPECT_NE(Value("a"), Value(Bytes{"a"}));
    EXPECT_NE(Value(), Value(""));
    EXPECT_NE(Value(List()), Value(Dictionary()));
    EXPECT_NE(Value(List{1}), Value(List{1.0}));
}

TEST(Value, OfAKeyThatADictionaryLacksIsNothing) {
    const Dictionary dictionary{{"a", 1}, {"", "no key"}};
    EXPECT_EQ(&valueOf(dictionary, "a"), &dictionary.find("a")->second);
    EXPECT_EQ(valueOf(dictionary, ""), "no key");
    EXPECT_TRUE(valueOf(dictionary, "A").isNothing());
    EXPECT_TRUE(valueOf({}, "a").isNothing());
}

TEST(Value, OfADictionaryStandsInTheOrderOfTheKeys16BitCharacters) {
    const std::string keys[] = {"",           "A",      "a",      "a\U0001F600", "a\uE000",    "aa",
                                "\u00e4",     "\u07FF", "\u65e5", "\uD7FF",      "\U00010000", "\U0001F600",
                                "\U0010FFFF", "\uE000", "\uEFFF", "\uF000",      "\uFFFF"};
    for (const std::string &left : keys) {
        for (const std::string &right : keys) {
            EXPECT_EQ(KeyOrder()(left, right), utf16(left) < utf16(right)) << left << " and " << right;
        }
    }
    EXPECT_EQ((Dictionary{{"\uFFFF", 1}, {"\U0001F600", 2}}).begin()->second, 2);
}

} // namespace
} // namespace quillmark

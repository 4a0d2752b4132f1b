#include "platform/values/Value.h"

#include "support/ValuePrinter.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

using Entries = std::vector<Dictionary::value_type>;

TEST(Dictionary, OrdersItsEntriesByTheir16BitCharacters) {
    const Dictionary dictionary(Entries{{"\uFFFD", 5}, {"b", 3}, {"\U0001F600", 4}, {"", 1}, {"a", 2}});
    std::vector<Value> values;
    for (const auto &[key, value] : dictionary) {
        values.push_back(value);
    }
    EXPECT_EQ(values, (List{1, 2, 3, 4, 5}));
}

TEST(Dictionary, KeepsTheLastEntryOfAKey) {
    EXPECT_EQ(Dictionary(Entries{{"a", 1}, {"a", 2}}), (Dictionary{{"a", 2}}));
    EXPECT_EQ(Dictionary(Entries{{"b", 1}, {"a", 2}, {"b", 3}, {"a", 4}, {"b", 5}}), (Dictionary{{"a", 4}, {"b", 5}}));
}

TEST(Dictionary, FindsItsKeysAndNoOthers) {
    const Dictionary dictionary{{"a", 1}, {"c", 2}};
    EXPECT_EQ(dictionary.find("c")->second, 2);
    for (const char *other : {"", "A", "b", "cc", "d"}) {
        EXPECT_EQ(dictionary.find(other), dictionary.end()) << other;
        EXPECT_FALSE(dictionary.contains(other)) << other;
    }
    EXPECT_FALSE(Dictionary().contains(""));
}

TEST(Dictionary, StaysInOrderWhenItChanges) {
    Dictionary dictionary{{"b", 1}};
    dictionary.insert_or_assign("d", 2);
    dictionary["a"] = 3;
    dictionary["c"] = 4;
    dictionary.insert_or_assign("b", 5);
    EXPECT_EQ(dictionary, (Dictionary{{"a", 3}, {"b", 5}, {"c", 4}, {"d", 2}}));
    EXPECT_TRUE(dictionary["e"].isNothing());
}

TEST(Dictionary, TellsWhetherItHadTheKeyThatIsErased) {
    Dictionary dictionary{{"a", 1}, {"b", 2}, {"c", 3}};
    EXPECT_TRUE(dictionary.erase("b"));
    EXPECT_FALSE(dictionary.erase("b"));
    EXPECT_FALSE(dictionary.erase("d"));
    EXPECT_EQ(dictionary, (Dictionary{{"a", 1}, {"c", 3}}));
    dictionary.clear();
    EXPECT_TRUE(dictionary.empty());
}

} // namespace
} // namespace quillmark

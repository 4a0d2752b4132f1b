#include "utils/IntegerValue.h"

#include "platform/values/Value.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

TEST(IntegerValue, IsTheNumberThatATextBeginsWith) {
    EXPECT_EQ(integerValue("12"), 12);
    EXPECT_EQ(integerValue("12abc34"), 12);
    EXPECT_EQ(integerValue(" \t\n-7"), -7);
    EXPECT_EQ(integerValue("+5"), 5);
    EXPECT_EQ(integerValue("007"), 7);
    EXPECT_EQ(integerValue("1.9"), 1);
}

TEST(IntegerValue, IsZeroWithoutADigit) {
    for (const char *text : {"", "x", "-", "+-5", "--5", ".5", "- 5", "٣"}) {
        EXPECT_EQ(integerValue(text), 0);
    }
}

TEST(IntegerValue, IsTheNearestNumberBeyond64Bits) {
    EXPECT_EQ(integerValue("9223372036854775807"), kMax);
    EXPECT_EQ(integerValue("9223372036854775808"), kMax);
    EXPECT_EQ(integerValue("99999999999999999999999"), kMax);
    EXPECT_EQ(integerValue("-9223372036854775808"), kMin);
    EXPECT_EQ(integerValue("-99999999999999999999999"), kMin);
}

TEST(IntegerValue, TakesNumbersTextsAndNothingElse) {
    EXPECT_EQ(integerValueOf(15), 15);
    EXPECT_EQ(integerValueOf(-1.9), -1);
    EXPECT_EQ(integerValueOf(true), 1);
    EXPECT_EQ(integerValueOf("1303 b"), 1303);
    EXPECT_EQ(integerValueOf(std::numeric_limits<std::uint64_t>::max()), kMax);
    EXPECT_EQ(integerValueOf(1e300), kMax);
    EXPECT_EQ(integerValueOf(-1e300), kMin);
    EXPECT_EQ(integerValueOf(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(integerValueOf(Value()), 0);
    EXPECT_EQ(integerValueOf(List{1}), 0);
}

} // namespace
} // namespace quillmark

#include "platform/values/ScalarText.h"

#include "platform/values/Value.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(ScalarText, OfARealIsTheShortestThatReadsBackAsTheSameOne) {
    EXPECT_EQ(realText(0.1), "0.1");
    EXPECT_EQ(realText(-2.25), "-2.25");
    EXPECT_EQ(realText(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(realText(0.1F), "0.10000000149011612");
    EXPECT_EQ(realText(123456), "123456");
}

TEST(ScalarText, OfARealHasAnExponentWhereThatIsShorter) {
    EXPECT_EQ(realText(100000), "1e+05");
    EXPECT_EQ(realText(1e22), "1e+22");
    EXPECT_EQ(realText(-1e100), "-1e+100");
    EXPECT_EQ(realText(0.00001), "1e-05");
    EXPECT_EQ(realText(std::numeric_limits<double>::denorm_min()), "5e-324");
}

TEST(ScalarText, OfALargeRealEndsInZerosInPlaceOfDigitsBeyondThePrecision) {
    EXPECT_EQ(realText(9007199254740992.0), "9007199254740992");
    EXPECT_EQ(realText(5088143117563431000.0), "5088143117563431000");
    EXPECT_EQ(realText(-123456789012345678.0), "-123456789012345680");
}

TEST(ScalarText, OfZeroHasNoSign) {
    EXPECT_EQ(realText(0.0), "0");
    EXPECT_EQ(realText(-0.0), "0");
}

TEST(ScalarText, IsThatOfTextsNumbersAndBooleans) {
    EXPECT_EQ(scalarText("ü"), "ü");
    EXPECT_EQ(scalarText(""), "");
    EXPECT_EQ(scalarText(-7), "-7");
    EXPECT_EQ(scalarText(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(scalarText(2.5), "2.5");
    EXPECT_EQ(scalarText(2.5F), "2.5");
    EXPECT_EQ(scalarText(true), "true");
    EXPECT_EQ(scalarText(false), "false");
}

TEST(ScalarText, OfASinglePrecisionRealIsThatOfTheSameNumberInDoublePrecision) {
    EXPECT_EQ(scalarText(0.1F), "0.10000000149011612");
    EXPECT_EQ(scalarText(-0.0F), "0");
    EXPECT_EQ(scalarText(std::numeric_limits<float>::infinity()), "inf");
}

TEST(ScalarText, IsAbsentForAnyOtherValue) {
    for (const Value &other : {Value(), Value(Bytes{"a"}), Value(Date()), Value(List{"a"}), Value(Dictionary())}) {
        EXPECT_EQ(scalarText(other), std::nullopt);
    }
}

} // namespace
} // namespace quillmark

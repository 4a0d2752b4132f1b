#include "utils/IntegerValue.h"

#include <gtest/gtest.h>
#include <limits>

namespace quillmark {
namespace {

constexpr qint64 kMax = std::numeric_limits<qint64>::max();
constexpr qint64 kMin = std::numeric_limits<qint64>::min();

TEST(IntegerValue, IsTheNumberThatATextBeginsWith) {
    EXPECT_EQ(integerValue(u"12"), 12);
    EXPECT_EQ(integerValue(u"12abc34"), 12);
    EXPECT_EQ(integerValue(u" \t\n-7"), -7);
    EXPECT_EQ(integerValue(u"+5"), 5);
    EXPECT_EQ(integerValue(u"007"), 7);
    EXPECT_EQ(integerValue(u"1.9"), 1);
}

TEST(IntegerValue, IsZeroWithoutADigit) {
    for (const char16_t *text : {u"", u"x", u"-", u"+-5", u"--5", u".5", u"- 5", u"٣"}) {
        EXPECT_EQ(integerValue(QStringView(text)), 0);
    }
}

TEST(IntegerValue, IsTheNearestNumberBeyond64Bits) {
    EXPECT_EQ(integerValue(u"9223372036854775807"), kMax);
    EXPECT_EQ(integerValue(u"9223372036854775808"), kMax);
    EXPECT_EQ(integerValue(u"99999999999999999999999"), kMax);
    EXPECT_EQ(integerValue(u"-9223372036854775808"), kMin);
    EXPECT_EQ(integerValue(u"-99999999999999999999999"), kMin);
}

TEST(IntegerValue, TakesNumbersTextsAndNothingElse) {
    EXPECT_EQ(integerValueOf(QVariant(15)), 15);
    EXPECT_EQ(integerValueOf(QVariant(-1.9)), -1);
    EXPECT_EQ(integerValueOf(QVariant(true)), 1);
    EXPECT_EQ(integerValueOf(QVariant(QStringLiteral("1303 b"))), 1303);
    EXPECT_EQ(integerValueOf(QVariant(std::numeric_limits<qulonglong>::max())), kMax);
    EXPECT_EQ(integerValueOf(QVariant(1e300)), kMax);
    EXPECT_EQ(integerValueOf(QVariant(-1e300)), kMin);
    EXPECT_EQ(integerValueOf(QVariant(std::numeric_limits<double>::quiet_NaN())), 0);
    EXPECT_EQ(integerValueOf(QVariant()), 0);
    EXPECT_EQ(integerValueOf(QVariant(QVariantList{1})), 0);
}

} // namespace
} // namespace quillmark

#include "utils/BooleanValue.h"

#include "support/ValuePrinter.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(BooleanValue, ReadsBooleansAndNumbers) {
    for (const Value &value :
         {Value(true), Value(-1), Value(0.5), Value(-0.25), Value(1e-300), Value(0.25F), Value(~std::uint64_t{0})}) {
        EXPECT_TRUE(booleanValueOf(value)) << testing::PrintToString(value);
    }
    for (const Value &value : {Value(false), Value(0), Value(0.0)}) {
        EXPECT_FALSE(booleanValueOf(value)) << testing::PrintToString(value);
    }
}

TEST(BooleanValue, ReadsTheBeginningOfATextBehindBlanksAndZeros) {
    for (const char *text : {"YES", "yes", "True", "t", "1", "9", " 007", "\ty"}) {
        EXPECT_TRUE(booleanValueOf(text)) << text;
    }
    for (const char *text : {"", "NO", "false", "0", "000", "-1", "+1", "on", "0 1", "é"}) {
        EXPECT_FALSE(booleanValueOf(text)) << text;
    }
}

TEST(BooleanValue, TakesWhatIsNeitherForFalse) {
    for (const Value &value : {Value(), Value(Bytes{"YES"}), Value(List{true}), Value(Dictionary{{"a", true}}),
                               Value(Date(std::chrono::seconds(1)))}) {
        EXPECT_FALSE(booleanValueOf(value)) << testing::PrintToString(value);
    }
}

} // namespace
} // namespace quillmark

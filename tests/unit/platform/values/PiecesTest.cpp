#include "platform/values/Pieces.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

using Views = std::vector<std::string_view>;

TEST(Pieces, StandBetweenTheSeparators) {
    EXPECT_EQ(pieces("a:bc:d", ':'), (Views{"a", "bc", "d"}));
    EXPECT_EQ(pieces("abc", ':'), Views{"abc"});
}

TEST(Pieces, CanBeEmpty) {
    EXPECT_EQ(pieces("", ':'), Views{""});
    EXPECT_EQ(pieces(":", ':'), (Views{"", ""}));
    EXPECT_EQ(pieces("a::b:", ':'), (Views{"a", "", "b", ""}));
}

} // namespace
} // namespace quillmark

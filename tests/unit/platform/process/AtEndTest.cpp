#include "platform/process/AtEnd.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(AtEnd, MakesItsCallOnceWhenTheScopeIsLeft) {
    int calls = 0;
    {
        const AtEnd end([&calls] { ++calls; });
        EXPECT_EQ(calls, 0);
    }
    EXPECT_EQ(calls, 1);
}

TEST(AtEnd, MakesItsCallWhenAnExceptionLeavesTheScope) {
    int calls = 0;
    try {
        const AtEnd end([&calls] { ++calls; });
        throw 7;
    } catch (int) {
        EXPECT_EQ(calls, 1);
    }
    EXPECT_EQ(calls, 1);
}

TEST(AtEnd, MakesTheLastCallFirst) {
    std::string order;
    {
        const AtEnd first([&order] { order += '1'; });
        const AtEnd second([&order] { order += '2'; });
    }
    EXPECT_EQ(order, "21");
}

TEST(AtEnd, MakesNoCallOnceItIsDismissed) {
    int calls = 0;
    {
        AtEnd end([&calls] { ++calls; });
        end.dismiss();
        EXPECT_EQ(calls, 0);
    }
    EXPECT_EQ(calls, 0);
}

} // namespace
} // namespace quillmark

#include "platform/files/Path.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(Path, SlashesAtTheEndAndBesideAnotherMeanNothing) {
    EXPECT_EQ(withoutNeedlessSlashes("//a///b//"), "/a/b");
    EXPECT_EQ(withoutNeedlessSlashes("a/"), "a");
    EXPECT_EQ(withoutNeedlessSlashes("//"), "/");
    EXPECT_EQ(withoutNeedlessSlashes(""), "");
}

TEST(Path, IsNormalWithoutDotsAndWithoutWhatTwoDotsTakeBack) {
    EXPECT_EQ(normalPath("/a/./b/../c"), "/a/c");
    EXPECT_EQ(normalPath("//a//b//"), "/a/b");
    EXPECT_EQ(normalPath("/a/b/."), "/a/b");
    EXPECT_EQ(normalPath("/a/b/.."), "/a");
    EXPECT_EQ(normalPath("/../a"), "/a");
    EXPECT_EQ(normalPath("/a/.."), "/");
    EXPECT_EQ(normalPath("a/../../b"), "../b");
    EXPECT_EQ(normalPath("/a/...b/.c"), "/a/...b/.c");
    EXPECT_EQ(normalPath("/"), "/");
    EXPECT_EQ(normalPath(""), "");
}

TEST(Path, IsTakenApartAtItsLastSlash) {
    struct Row {
        std::string path;
        std::string last;
        std::string rest;
    };
    const Row rows[] = {
        {"/a/b", "b", "/a"}, {"/a/b/", "b", "/a"}, {"/a//b", "b", "/a"}, {"/a", "a", "/"},
        {"/", "/", "/"},     {"a", "a", ""},       {"", "", ""},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(lastPathComponent(row.path), row.last) << row.path;
        EXPECT_EQ(deletingLastPathComponent(row.path), row.rest) << row.path;
    }
}

TEST(Path, IsPutTogetherWithOneSlash) {
    EXPECT_EQ(appendingPathComponent("/a", "b"), "/a/b");
    EXPECT_EQ(appendingPathComponent("/a/", "/b/"), "/a/b");
    EXPECT_EQ(appendingPathComponent("/", "b"), "/b");
    EXPECT_EQ(appendingPathComponent("", "b"), "b");
    EXPECT_EQ(appendingPathComponent("/a", ""), "/a");
}

} // namespace
} // namespace quillmark

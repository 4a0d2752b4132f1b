#include "platform/Path.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(Path, SlashesAtTheEndAndBesideAnotherMeanNothing) {
    EXPECT_EQ(withoutNeedlessSlashes(QStringLiteral("//a///b//")), QStringLiteral("/a/b"));
    EXPECT_EQ(withoutNeedlessSlashes(QStringLiteral("a/")), QStringLiteral("a"));
    EXPECT_EQ(withoutNeedlessSlashes(QStringLiteral("//")), QStringLiteral("/"));
    EXPECT_EQ(withoutNeedlessSlashes(QString()), QString());
}

TEST(Path, IsTakenApartAtItsLastSlash) {
    struct Row {
        QString path;
        QString last;
        QString rest;
    };
    const Row rows[] = {
        {QStringLiteral("/a/b"), QStringLiteral("b"), QStringLiteral("/a")},
        {QStringLiteral("/a/b/"), QStringLiteral("b"), QStringLiteral("/a")},
        {QStringLiteral("/a//b"), QStringLiteral("b"), QStringLiteral("/a")},
        {QStringLiteral("/a"), QStringLiteral("a"), QStringLiteral("/")},
        {QStringLiteral("/"), QStringLiteral("/"), QStringLiteral("/")},
        {QStringLiteral("a"), QStringLiteral("a"), QString()},
        {QString(), QString(), QString()},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(lastPathComponent(row.path), row.last) << row.path.toStdString();
        EXPECT_EQ(deletingLastPathComponent(row.path), row.rest) << row.path.toStdString();
    }
}

TEST(Path, IsPutTogetherWithOneSlash) {
    EXPECT_EQ(appendingPathComponent(QStringLiteral("/a"), QStringLiteral("b")), QStringLiteral("/a/b"));
    EXPECT_EQ(appendingPathComponent(QStringLiteral("/a/"), QStringLiteral("/b/")), QStringLiteral("/a/b"));
    EXPECT_EQ(appendingPathComponent(QStringLiteral("/"), QStringLiteral("b")), QStringLiteral("/b"));
    EXPECT_EQ(appendingPathComponent(QString(), QStringLiteral("b")), QStringLiteral("b"));
    EXPECT_EQ(appendingPathComponent(QStringLiteral("/a"), QString()), QStringLiteral("/a"));
}

} // namespace
} // namespace quillmark

#include "platform/propertylist/PropertyListFormats.h"
#include "platform/propertylist/PropertyListLimits.h"
#include "support/TemporaryHome.h"
#include "support/ValuePrinter.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

const PropertyListFormats list;

Value writtenAndRead(const Value &value) {
    const auto document = list.toXml(value);
    return document ? list.parse(*document) : Value();
}

TEST(PropertyListWriter, WhatIsWrittenReadsBackTheSame) {
    const Dictionary map = {{"text", "<a> & \"b\"\r\n\té📄 "},
                            {"<&>", ""},
                            {"yes", true},
                            {"no", false},
                            {"low", std::numeric_limits<std::int64_t>::min()},
                            {"high", std::numeric_limits<std::uint64_t>::max()},
                            {"real", 0.1},
                            {"endless", -std::numeric_limits<double>::infinity()},
                            {"date", Date(std::chrono::sys_days(2024y / 3 / 5) + 14h + 15min + 2s)},
                            {"data", Bytes{{"\0\1\xFF", 3}}},
                            {"list", List{1, Dictionary(), List()}}};
    EXPECT_EQ(writtenAndRead(map), Value(map));
    const Value noNumber = writtenAndRead(std::nan(""));
    ASSERT_TRUE(noNumber.is<double>());
    EXPECT_TRUE(std::isnan(*noNumber.as<double>()));
}

TEST(PropertyListWriter, ShorterIntegersAndTextListsAreWrittenToo) {
    EXPECT_EQ(writtenAndRead(Value(5)), Value(5));
    EXPECT_EQ(writtenAndRead(Value(5U)), Value(5));
    EXPECT_EQ(writtenAndRead(List{"a"}), Value(List{"a"}));
}

TEST(PropertyListWriter, TheFormIsTheUsualOne) {
    EXPECT_EQ(*list.toXml(Dictionary{{"a", List{1}}}),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n<dict>\n\t<key>a</key>\n\t<array>\n\t\t<integer>1</integer>\n"
              "\t</array>\n</dict>\n</plist>\n");
}

TEST(PropertyListWriter, WhatHasNoPlaceInAPropertyListIsRefused) {
    EXPECT_FALSE(list.toXml(Value()));
    EXPECT_FALSE(list.toXml(List{Value()}));
    EXPECT_FALSE(list.toXml(Dictionary{{"a", Value()}}));
    EXPECT_FALSE(list.toXml(Date::min()));
}

TEST(PropertyListWriter, TextsThatXmlCannotCarryAreRefused) {
    EXPECT_FALSE(list.toXml(std::string(1, '\0')));
    EXPECT_FALSE(list.toXml("\x1B"));
    EXPECT_FALSE(list.toXml("\xED\xA0\x80"));
    EXPECT_FALSE(list.toXml("\uFFFE"));
    EXPECT_FALSE(list.toXml(Dictionary{{"\1", true}}));
}

TEST(PropertyListWriter, NestingIsBounded) {
    Value value = true;
    for (int depth = 0; depth < kMaximumPropertyListDepth; ++depth) {
        value = List{value};
    }
    EXPECT_TRUE(list.toXml(value));
    EXPECT_FALSE(list.toXml(List{value}));
}

TEST(PropertyListFile, IsReadWhole) {
    const test::TemporaryHome home;
    const std::string file = home.write("a.plist", *list.toXml(Dictionary{{"a", 1}}));
    EXPECT_EQ(valueOf(list.readDictionary(file), "a"), Value(1));
    EXPECT_TRUE(list.read(file).is<Dictionary>());
}

TEST(PropertyListFile, ThatCannotBeReadIsAnAbsentValue) {
    const test::TemporaryHome home;
    EXPECT_TRUE(list.read(home.path("missing")).isNothing());
    EXPECT_TRUE(list.read(home.path()).isNothing());
    EXPECT_TRUE(list.read(std::string()).isNothing());
    EXPECT_TRUE(list.read(std::string(1, '\0')).isNothing());
    EXPECT_TRUE(list.read(home.write("empty", "")).isNothing());
    const std::string pipe = home.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_TRUE(list.read(pipe).isNothing());
}

TEST(PropertyListFile, OfTheWrongShapeIsAnEmptyDictionary) {
    const test::TemporaryHome home;
    EXPECT_TRUE(list.readDictionary(home.write("a", *list.toXml(List{1}))).empty());
}

TEST(PropertyListFile, ThatIsTooLargeIsNotRead) {
    const test::TemporaryHome home;
    const std::string file = home.write("sparse", "<plist><true/></plist>");
    ASSERT_EQ(::truncate(file.c_str(), kMaximumPropertyListMemory + 1), 0);
    EXPECT_TRUE(list.read(file).isNothing());
}

} // namespace
} // namespace quillmark

#include "platform/propertylist/PropertyListFormats.h"
#include "platform/propertylist/PropertyListLimits.h"
#include "support/ValuePrinter.h"

#include <bit>
#include <gtest/gtest.h>

namespace quillmark {
namespace {

Value xmlValue(const std::string &element) { return parseXmlPropertyList("<plist>" + element + "</plist>"); }

/// So many arrays inside one another.
Value nested(int depth) {
    List list;
    while (--depth > 0) {
        list = {Value(list)};
    }
    return list;
}

std::string nestedBinary(size_t depth) {
    std::string objects;
    std::string offsets;
    const auto twoBytes = [](size_t number) {
        return std::string{static_cast<char>(number >> 8), static_cast<char>(number)};
    };
    for (size_t i = 1; i <= depth; ++i) {
        offsets += twoBytes(8 + objects.size());
        objects += i < depth ? '\xA1' + twoBytes(i) : std::string("\xA0");
    }
    return "bplist00" + objects + offsets + std::string(6, '\0') + "\2\2" + std::string(6, '\0') + twoBytes(depth) +
           std::string(14, '\0') + twoBytes(8 + objects.size());
}

TEST(PropertyListRegression, AMarkOfTheByteOrderAtATextsBeginningIsPartOfTheText) {
    EXPECT_EQ(xmlValue("<string>\xEF\xBB\xBF</string>"), Value("\uFEFF"));
    EXPECT_EQ(xmlValue("<string>\xEF\xBB\xBF\xEF\xBB\xBFx\xEF\xBB\xBF</string>"), Value("\uFEFF\uFEFFx\uFEFF"));
    EXPECT_EQ(xmlValue("<string>&amp;\xEF\xBB\xBF</string>"), Value("&\uFEFF"));
}

TEST(PropertyListRegression, ZeroKeepsItsSign) {
    const Value read = parseXmlPropertyList(writeXmlPropertyList(-0.0).value());
    ASSERT_TRUE(read.is<double>());
    EXPECT_EQ(std::bit_cast<std::uint64_t>(*read.as<double>()), std::bit_cast<std::uint64_t>(-0.0));
}

TEST(PropertyListRegression, ARealHasOneSign) {
    EXPECT_EQ(xmlValue("<real>+1.5</real>"), Value(1.5));
    EXPECT_TRUE(xmlValue("<real>+-1.5</real>").isNothing());
}

TEST(PropertyListRegression, BothFormsAndTheWriterAllowTheSameDepth) {
    constexpr int kDeepest = kMaximumPropertyListDepth;
    EXPECT_EQ(parseBinaryPropertyList(nestedBinary(kDeepest)), nested(kDeepest));
    EXPECT_EQ(parseXmlPropertyList(writeXmlPropertyList(nested(kDeepest)).value()), nested(kDeepest));
    EXPECT_TRUE(parseBinaryPropertyList(nestedBinary(kDeepest + 1)).isNothing());
    EXPECT_FALSE(writeXmlPropertyList(nested(kDeepest + 1)).has_value());
}

TEST(PropertyListRegression, AnAmpersandInACharacterDataSectionBesideATextStaysWhatItIs) {
    EXPECT_EQ(xmlValue("<string>a<![CDATA[&lt;]]>&lt;</string>"), Value("a&lt;<"));
}

} // namespace
} // namespace quillmark

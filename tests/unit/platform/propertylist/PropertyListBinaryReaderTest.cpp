#include "platform/propertylist/PropertyListFormats.h"
#include "platform/propertylist/PropertyListLimits.h"
#include "support/ValuePrinter.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace quillmark {
namespace {

/// A binary property list put together by hand: every object's bytes, the root being the first one. Offsets take four
/// bytes, references one.
struct Document {
    std::vector<std::string> objects;
    std::uint64_t top = 0;
    std::optional<std::uint64_t> count = {};
    std::optional<std::uint64_t> table = {};
    int offsetSize = 4;
    int referenceSize = 1;

    static std::string bigEndian(std::uint64_t value, int width) {
        std::string bytes;
        for (int shift = (width - 1) * 8; shift >= 0; shift -= 8) {
            bytes += shift >= 64 ? '\0' : static_cast<char>(value >> static_cast<unsigned>(shift));
        }
        return bytes;
    }
    std::string bytes() const {
        std::string document = "bplist00";
        std::string offsets;
        for (const std::string &object : objects) {
            offsets += bigEndian(document.size(), offsetSize);
            document += object;
        }
        const auto place = document.size();
        document += offsets + std::string(6, '\0') + static_cast<char>(offsetSize) + static_cast<char>(referenceSize);
        document += bigEndian(count.value_or(objects.size()), 8) + bigEndian(top, 8);
        return document + bigEndian(table.value_or(place), 8);
    }
    Value value() const { return PropertyListFormats().parse(bytes()); }
};

std::string bytes(std::initializer_list<int> values) {
    std::string result;
    for (const int value : values) {
        result += static_cast<char>(value);
    }
    return result;
}
Value value(const std::string &object) { return Document{{object}}.value(); }
bool isRefused(const Document &document) { return document.value().isNothing(); }

/// Lists in each other, of which each holds the next one twice.
Document doubling(int levels) {
    Document document;
    for (int level = 0; level < levels; ++level) {
        document.objects.push_back(bytes({0xA2, level + 1, level + 1}));
    }
    document.objects.push_back(bytes({0x09}));
    return document;
}

TEST(PropertyListBinary, EachTypeHasItsValue) {
    EXPECT_EQ(value(bytes({0x08})), Value(false));
    EXPECT_EQ(value(bytes({0x09})), Value(true));
    EXPECT_EQ(value(bytes({0x10, 200})), Value(200));
    EXPECT_EQ(value(bytes({0x11, 1, 0})), Value(256));
    EXPECT_EQ(value(bytes({0x12, 255, 255, 255, 255})), Value(4294967295));
    EXPECT_EQ(value("\x13" + std::string(8, '\xFF')), Value(-1));
    EXPECT_EQ(value(bytes({0x22, 0x3F, 0xC0, 0, 0})), Value(1.5));
    EXPECT_EQ(value(bytes({0x23, 0x3F, 0xF8, 0, 0, 0, 0, 0, 0})), Value(1.5));
    EXPECT_EQ(value(bytes({0x33, 0, 0, 0, 0, 0, 0, 0, 0})),
              Value(Date(std::chrono::sys_days(std::chrono::year(2001) / 1 / 1))));
    EXPECT_EQ(value(bytes({0x42, 'a', 0})), Value(Bytes{{"a\0", 2}}));
    EXPECT_EQ(value(bytes({0x53, 'a', 'b', 'c'})), Value("abc"));
    EXPECT_EQ(value(bytes({0x63, 0, 0xE9, 0xD8, 0x3D, 0xDC, 0xC4})), Value("é📄"));
    EXPECT_EQ(value(bytes({0x80, 7})), Value(Dictionary{{"CF$UID", 7}}));
    EXPECT_EQ((Document{{bytes({0xA2, 1, 1}), bytes({0x09})}}.value()), Value(List{true, true}));
    EXPECT_EQ((Document{{bytes({0xD1, 1, 2}), bytes({0x51, 'k'}), bytes({0x09})}}.value()),
              Value(Dictionary{{"k", true}}));
}

TEST(PropertyListBinary, LongLengthsFollowAsNumbers) {
    const std::string text(300, 'x');
    EXPECT_EQ(value(bytes({0x5F, 0x11, 1, 44}) + text), Value(text));
    EXPECT_EQ(value(bytes({0x4F, 0x10, 0})), Value(Bytes()));
}

TEST(PropertyListBinary, SixteenByteIntegersHoldWhatEightCannot) {
    EXPECT_EQ(value("\x14" + std::string(8, '\0') + std::string(8, '\xFF')),
              Value(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(value("\x14" + std::string(15, '\0') + '\5'), Value(5));
    EXPECT_EQ(value("\x14" + std::string(16, '\xFF')), Value(-1));
    EXPECT_TRUE(value("\x14" + std::string(7, '\0') + '\1' + std::string(8, '\0')).isNothing());
}

TEST(PropertyListBinary, ObjectsThatAreNoValuesAreRefused) {
    EXPECT_TRUE(isRefused({{bytes({0x00})}}));                         // null
    EXPECT_TRUE(isRefused({{bytes({0x0F})}}));                         // fill
    EXPECT_TRUE(isRefused({{bytes({0x15}) + std::string(32, '\0')}})); // an integer of 32 bytes
    EXPECT_TRUE(isRefused({{bytes({0x21, 0, 0})}}));                   // a real of two bytes
    EXPECT_TRUE(isRefused({{bytes({0x32, 0, 0, 0, 0})}}));             // a date of four bytes
    EXPECT_TRUE(isRefused({{bytes({0x71, 'a'})}}));
    EXPECT_TRUE(isRefused({{bytes({0xC0})}}));
    EXPECT_TRUE(isRefused({{bytes({0xF0})}}));
    EXPECT_TRUE(isRefused({{bytes({0x51, 0xE9})}}));                   // no ASCII
    EXPECT_TRUE(isRefused({{bytes({0x61, 0xD8, 0x3D})}}));             // half a surrogate pair
    EXPECT_TRUE(isRefused({{bytes({0x87, 1, 0, 0, 0, 0, 0, 0, 0})}})); // an identifier of more than 32 bits
}

TEST(PropertyListBinary, DatesOutsideTheCalendarAreRefused) {
    const auto date = [](double seconds) {
        return value("\x33" + Document::bigEndian(std::bit_cast<std::uint64_t>(seconds), 8));
    };
    EXPECT_FALSE(date(1e9).isNothing());
    EXPECT_TRUE(date(1e18).isNothing());
    EXPECT_TRUE(date(-1e18).isNothing());
    EXPECT_TRUE(date(std::nan("")).isNothing());
    EXPECT_TRUE(date(std::numeric_limits<double>::infinity()).isNothing());
}

TEST(PropertyListBinary, KeysMustBeTexts) {
    EXPECT_TRUE(isRefused({{bytes({0xD1, 1, 2}), bytes({0x10, 1}), bytes({0x09})}}));
}

TEST(PropertyListBinary, ReferencesAndOffsetsMustLeadToObjects) {
    EXPECT_TRUE(isRefused({{bytes({0xA1, 9})}}));
    EXPECT_TRUE(isRefused({{bytes({0x09})}, 5}));
    for (const std::uint64_t table : {0UL, 7UL, 100000UL, ~0UL}) {
        EXPECT_TRUE(isRefused({.objects = {bytes({0x09})}, .table = table})) << table;
    }
    for (const std::uint64_t count : {0UL, 1UL << 40, ~0UL}) {
        EXPECT_TRUE(isRefused({.objects = {bytes({0x09})}, .count = count})) << count;
    }
}

TEST(PropertyListBinary, SizesOfOffsetsAndReferencesAreChecked) {
    for (const int size : {0, 9, 255}) {
        for (const size_t fromEnd : {26U, 25U}) {
            std::string document = Document{{bytes({0x09})}}.bytes();
            document[document.size() - fromEnd] = static_cast<char>(size);
            EXPECT_TRUE(PropertyListFormats().parse(document).isNothing()) << size << ' ' << fromEnd;
        }
    }
}

TEST(PropertyListBinary, LengthsBeyondTheDocumentAreRefused) {
    EXPECT_TRUE(isRefused({{bytes({0x5F, 0x13, 0x7F, 255, 255, 255, 255, 255, 255, 255})}}));
    EXPECT_TRUE(isRefused({{bytes({0x6F, 0x13, 255, 255, 255, 255, 255, 255, 255, 255})}}));
    EXPECT_TRUE(isRefused({{bytes({0xAF, 0x12, 255, 255, 255, 255})}}));
    EXPECT_TRUE(isRefused({{bytes({0xDF, 0x12, 255, 255, 255, 255})}}));
    EXPECT_TRUE(isRefused({{bytes({0x4F, 0x09})}}));
    EXPECT_TRUE(isRefused({{bytes({0x54, 'a'})}}));
}

TEST(PropertyListBinary, CyclesAreRefused) {
    EXPECT_TRUE(isRefused({{bytes({0xA1, 0})}}));
    EXPECT_TRUE(isRefused({{bytes({0xA1, 1}), bytes({0xD1, 2, 0}), bytes({0x51, 'k'})}}));
}

TEST(PropertyListBinary, ASmallDocumentThatUnfoldsIntoAHugeOneIsRefused) { EXPECT_TRUE(isRefused(doubling(60))); }

TEST(PropertyListBinary, SharedObjectsAreFineWithinBounds) { EXPECT_EQ(doubling(10).value().list().size(), 2U); }

TEST(PropertyListBinary, NestingIsBounded) {
    Document deep;
    deep.referenceSize = 2;
    for (int level = 0; level < 2000; ++level) {
        deep.objects.push_back("\xA1" + Document::bigEndian(static_cast<std::uint64_t>(level + 1), 2));
    }
    deep.objects.push_back(bytes({0x09}));
    EXPECT_TRUE(isRefused(deep));
    deep.top = 2000 - kMaximumPropertyListDepth;
    EXPECT_FALSE(deep.value().isNothing());
}

TEST(PropertyListBinary, EveryTruncationOfADocumentIsRefused) {
    const std::string document =
        Document{{bytes({0xD1, 1, 2}), bytes({0x51, 'k'}), bytes({0x53, 'a', 'b', 'c'})}}.bytes();
    ASSERT_FALSE(PropertyListFormats().parse(document).isNothing());
    for (size_t length = 0; length < document.size(); ++length) {
        EXPECT_TRUE(PropertyListFormats().parse(document.substr(0, length)).isNothing()) << length;
    }
}

TEST(PropertyListBinary, OtherVersionsAreRefused) {
    std::string document = Document{{bytes({0x09})}}.bytes();
    document[6] = '1';
    EXPECT_TRUE(PropertyListFormats().parse(document).isNothing());
}

} // namespace
} // namespace quillmark

#include "platform/propertylist/PropertyListFormats.h"
#include "platform/propertylist/PropertyListLimits.h"
#include "support/Lines.h"
#include "support/ValuePrinter.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace quillmark {
namespace {

using namespace std::chrono_literals;
using test::repeated;

Value parse(const std::string &document) { return PropertyListFormats().parse(document); }

/// The value of one element inside a document.
Value value(const std::string &element) {
    return parse("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                 "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n" +
                 element + "\n</plist>\n");
}
std::optional<std::string> text(const std::string &content) { return value("<string>" + content + "</string>").text(); }
bool isRefused(const std::string &element) { return value(element).isNothing(); }

TEST(PropertyListXml, EachTypeHasItsValue) {
    EXPECT_EQ(value("<string>a</string>"), Value("a"));
    EXPECT_EQ(value("<integer>5</integer>"), Value(5));
    EXPECT_EQ(value("<real>1.5</real>"), Value(1.5));
    EXPECT_EQ(value("<true/>"), Value(true));
    EXPECT_EQ(value("<false/>"), Value(false));
    EXPECT_EQ(value("<data>\n\tYWJj\n</data>"), Value(Bytes{"abc"}));
    EXPECT_EQ(value("<date>2024-03-05T14:15:02Z</date>"),
              Value(Date(std::chrono::sys_days(2024y / 3 / 5) + 14h + 15min + 2s)));
    EXPECT_EQ(value("<array><true/><string/></array>"), Value(List{true, ""}));
    EXPECT_EQ(value("<dict><key>a</key><integer>1</integer></dict>"), Value(Dictionary{{"a", 1}}));
}

TEST(PropertyListXml, BooleansAreNotNumbers) {
    EXPECT_TRUE(value("<true/>").is<bool>());
    EXPECT_TRUE(value("<integer>1</integer>").is<std::int64_t>());
}

TEST(PropertyListXml, EmptyContainersAndTextsAreValues) {
    EXPECT_EQ(value("<dict/>"), Value(Dictionary()));
    EXPECT_EQ(value("<array></array>"), Value(List()));
    EXPECT_TRUE(value("<string></string>").is<std::string>());
    EXPECT_EQ(value("<data/>"), Value(Bytes()));
}

TEST(PropertyListXml, BlanksInTextsAreKept) {
    EXPECT_EQ(text("  a  b "), "  a  b ");
    EXPECT_EQ(text("  "), "  ");
    EXPECT_EQ(text("a\r\nb\n"), "a\nb\n");
}

TEST(PropertyListXml, EntitiesAndCharacterReferencesAreResolved) {
    EXPECT_EQ(text("&lt;&amp;&gt;&quot;&apos;&#65;&#x1F4C4;"), "<&>\"'A📄");
    EXPECT_EQ(text("&amp;lt;"), "&lt;");
}

TEST(PropertyListXml, UnknownAndBrokenReferencesAreRefused) {
    for (const char *content : {"&foo;", "&", "&amp", "&;", "&#;", "&#0;", "&#xD800;", "&#x110000;", "&#12a;", "&#-1;",
                                "&#99999999999999;", "&amp;&bad;"}) {
        EXPECT_TRUE(isRefused(std::string("<string>") + content + "</string>")) << content;
    }
}

TEST(PropertyListXml, EntitiesOfTheDocumentItselfAreNotExpanded) {
    EXPECT_TRUE(
        parse("<!DOCTYPE plist [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]><plist><string>&b;</string></plist>")
            .isNothing());
    EXPECT_TRUE(parse("<!DOCTYPE plist [<!ENTITY f SYSTEM \"file:///etc/passwd\">]><plist><string>&f;</string></plist>")
                    .isNothing());
}

TEST(PropertyListXml, CommentsAndCharacterDataSectionsAreUnderstood) {
    EXPECT_EQ(text("a<!-- no -->b"), "ab");
    EXPECT_EQ(text("<![CDATA[<&amp;>]]>"), "<&amp;>");
    EXPECT_EQ(text("a&lt;<![CDATA[b&]]>c"), "a<b&c");
    EXPECT_EQ(value("<dict><!-- x --><key>a</key><!-- y --><true/></dict>").dictionary().size(), 1U);
}

TEST(PropertyListXml, IntegersReachFromMinus2To63To2To64) {
    EXPECT_EQ(value("<integer>-9223372036854775808</integer>"), Value(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(value("<integer>9223372036854775807</integer>"), Value(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(value("<integer>18446744073709551615</integer>"), Value(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(value("<integer> +0x1F </integer>"), Value(31));
    EXPECT_EQ(value("<integer>-0</integer>"), Value(0));
    for (const char *number :
         {"", "-", "x", "1x", "1.5", "18446744073709551616", "-9223372036854775809", "0x", "--1", "1 2"}) {
        EXPECT_TRUE(isRefused(std::string("<integer>") + number + "</integer>")) << number;
    }
}

TEST(PropertyListXml, RealsIncludeInfinitiesAndWhatIsNoNumber) {
    EXPECT_EQ(value("<real>-1e3</real>"), Value(-1000.0));
    EXPECT_EQ(value("<real>+inf</real>"), Value(std::numeric_limits<double>::infinity()));
    const Value noNumber = value("<real>nan</real>");
    ASSERT_TRUE(noNumber.is<double>());
    EXPECT_TRUE(std::isnan(*noNumber.as<double>()));
    EXPECT_EQ(value("<real>5e-324</real>"), Value(5e-324));
    for (const char *number : {"1e999", "1.5x", ""}) {
        EXPECT_TRUE(isRefused(std::string("<real>") + number + "</real>")) << number;
    }
}

TEST(PropertyListXml, DatesHaveOneForm) {
    for (const char *date : {"", "2024-03-05", "2024-03-05T14:15:02", "2024-02-30T00:00:00Z", "2024-03-05T24:00:00Z",
                             "2024-3-05T14:15:02Z", "2024-03-05 14:15:02Z", "20x4-03-05T14:15:02Z"}) {
        EXPECT_TRUE(isRefused(std::string("<date>") + date + "</date>")) << date;
    }
}

TEST(PropertyListXml, BrokenBase64IsRefused) {
    EXPECT_TRUE(isRefused("<data>YW*j</data>"));
    EXPECT_TRUE(isRefused("<data>=YWJj</data>"));
    EXPECT_EQ(value("<data>YW Jj\tZA = =</data>"), Value(Bytes{"abcd"}));
}

TEST(PropertyListXml, ALaterEntryOfOneKeyReplacesTheEarlier) {
    EXPECT_EQ(valueOf(value("<dict><key>a</key><true/><key>a</key><false/></dict>").dictionary(), "a"), Value(false));
}

TEST(PropertyListXml, MalformedStructureIsRefused) {
    for (const char *element :
         {"<dict><key>a</key></dict>", "<dict><string>a</string><true/></dict>", "<dict><true/></dict>",
          "<dict><key>a<b/></key><true/></dict>", "<array><odd/></array>", "<string><b/></string>", "<key>a</key>",
          "<odd/>", "", "<true/><false/>", "<dict><key>a</key><odd/></dict>"}) {
        EXPECT_TRUE(isRefused(element)) << element;
    }
}

TEST(PropertyListXml, TruncatedAndForeignDocumentsAreRefused) {
    for (const char *document : {"", " ", "x", "<", "<plist>", "<plist><dict>", "<plist><string>a</plist>", "<html/>",
                                 "<plist/>", "<plist version=\"1.0\"></plist>",
                                 "<plist><true/></plist><plist><true/></plist>", "{ a = b; }", "<string>a</string>"}) {
        EXPECT_TRUE(parse(document).isNothing()) << document;
    }
}

TEST(PropertyListXml, EveryTruncationOfADocumentIsRefused) {
    const std::string document =
        "<plist version=\"1.0\"><dict><key>a</key><array><string>b</string></array></dict></plist>";
    ASSERT_FALSE(parse(document).isNothing());
    for (size_t length = 0; length < document.size(); ++length) {
        EXPECT_TRUE(parse(document.substr(0, length)).isNothing()) << length;
    }
}

TEST(PropertyListXml, BadUtf8AndZeroBytesAreRefused) {
    EXPECT_TRUE(isRefused("<string>\xFF\xFE</string>"));
    EXPECT_TRUE(isRefused("<string>\xC3</string>"));
    EXPECT_TRUE(isRefused("<string>\xED\xA0\x80</string>"));
    EXPECT_TRUE(isRefused(std::string("<string>a\0b</string>", 20)));
    EXPECT_TRUE(isRefused("<dict><key>\xFF</key><true/></dict>"));
}

TEST(PropertyListXml, Utf16AndByteOrderMarksAreUnderstood) {
    const std::u16string document = u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><string>é📄</string></plist>";
    const std::string utf16 =
        "\xFF\xFE" + std::string(reinterpret_cast<const char *>(document.data()), document.size() * 2);
    EXPECT_EQ(parse(utf16), Value("é📄"));
    EXPECT_EQ(parse("\xEF\xBB\xBF<plist><string>é</string></plist>"), Value("é"));
}

std::string nested(size_t depth) { return repeated("<array>", depth) + repeated("</array>", depth); }

TEST(PropertyListXml, NestingIsBounded) {
    EXPECT_FALSE(value(nested(kMaximumPropertyListDepth)).isNothing());
    EXPECT_TRUE(isRefused(nested(kMaximumPropertyListDepth + 1)));
    EXPECT_TRUE(isRefused(nested(1000000)));
    EXPECT_TRUE(isRefused(repeated("<dict><key>a</key>", 100000)));
}

TEST(PropertyListXml, MemoryIsBounded) {
    EXPECT_FALSE(value("<array>" + repeated("<true/>", 100000) + "</array>").isNothing());
    EXPECT_TRUE(isRefused("<array>" + repeated("<true/>", 1000000) + "</array>"));
    EXPECT_TRUE(isRefused("<string>" + std::string(40 << 20, 'a') + "</string>"));
    EXPECT_TRUE(isRefused("<array>" + repeated("<data>AAAA</data>", 500000) + "</array>"));
    EXPECT_FALSE(value("<string>" + std::string(4 << 20, 'a') + "</string>").isNothing());
}

} // namespace
} // namespace quillmark

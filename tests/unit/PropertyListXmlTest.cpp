#include "platform/linux/LinuxPropertyList.h"
#include "platform/linux/Utc.h"
#include "support/QtPrinters.h"

#include <QDateTime>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace quillmark {
namespace {

QVariant parse(const QByteArray &document) { return LinuxPropertyList().parse(document); }

/// The value of one element inside a document.
QVariant value(const QByteArray &element) {
    return parse("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                 "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n" +
                 element + "\n</plist>\n");
}
QString text(const QByteArray &content) { return value("<string>" + content + "</string>").toString(); }
bool isRefused(const QByteArray &element) { return !value(element).isValid(); }

TEST(PropertyListXml, EachTypeHasItsValue) {
    EXPECT_EQ(value("<string>a</string>"), QVariant(QStringLiteral("a")));
    EXPECT_EQ(value("<integer>5</integer>"), QVariant(5LL));
    EXPECT_EQ(value("<real>1.5</real>"), QVariant(1.5));
    EXPECT_EQ(value("<true/>"), QVariant(true));
    EXPECT_EQ(value("<false/>"), QVariant(false));
    EXPECT_EQ(value("<data>\n\tYWJj\n</data>"), QVariant(QByteArray("abc")));
    EXPECT_EQ(value("<date>2024-03-05T14:15:02Z</date>"), QVariant(QDateTime({2024, 3, 5}, {14, 15, 2}, kUtc)));
    EXPECT_EQ(value("<array><true/><string/></array>"), QVariant(QVariantList({true, QString()})));
    EXPECT_EQ(value("<dict><key>a</key><integer>1</integer></dict>"),
              QVariant(QVariantMap({{QStringLiteral("a"), 1LL}})));
}

TEST(PropertyListXml, BooleansAreNotNumbers) {
    EXPECT_EQ(value("<true/>").typeId(), QMetaType::Bool);
    EXPECT_EQ(value("<integer>1</integer>").typeId(), QMetaType::LongLong);
}

TEST(PropertyListXml, EmptyContainersAndTextsAreValues) {
    EXPECT_EQ(value("<dict/>"), QVariant(QVariantMap()));
    EXPECT_EQ(value("<array></array>"), QVariant(QVariantList()));
    EXPECT_EQ(value("<string></string>").typeId(), QMetaType::QString);
    EXPECT_EQ(value("<data/>"), QVariant(QByteArray()));
}

TEST(PropertyListXml, BlanksInTextsAreKept) {
    EXPECT_EQ(text("  a  b "), QStringLiteral("  a  b "));
    EXPECT_EQ(text("  "), QStringLiteral("  "));
    EXPECT_EQ(text("a\r\nb\n"), QStringLiteral("a\nb\n"));
}

TEST(PropertyListXml, EntitiesAndCharacterReferencesAreResolved) {
    EXPECT_EQ(text("&lt;&amp;&gt;&quot;&apos;&#65;&#x1F4C4;"), QStringLiteral("<&>\"'A📄"));
    EXPECT_EQ(text("&amp;lt;"), QStringLiteral("&lt;"));
}

TEST(PropertyListXml, UnknownAndBrokenReferencesAreRefused) {
    for (const char *content : {"&foo;", "&", "&amp", "&;", "&#;", "&#0;", "&#xD800;", "&#x110000;", "&#12a;", "&#-1;",
                                "&#99999999999999;", "&amp;&bad;"}) {
        EXPECT_TRUE(isRefused(QByteArray("<string>") + content + "</string>")) << content;
    }
}

TEST(PropertyListXml, EntitiesOfTheDocumentItselfAreNotExpanded) {
    EXPECT_FALSE(
        parse("<!DOCTYPE plist [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]><plist><string>&b;</string></plist>")
            .isValid());
    EXPECT_FALSE(
        parse("<!DOCTYPE plist [<!ENTITY f SYSTEM \"file:///etc/passwd\">]><plist><string>&f;</string></plist>")
            .isValid());
}

TEST(PropertyListXml, CommentsAndCharacterDataSectionsAreUnderstood) {
    EXPECT_EQ(text("a<!-- no -->b"), QStringLiteral("ab"));
    EXPECT_EQ(text("<![CDATA[<&amp;>]]>"), QStringLiteral("<&amp;>"));
    EXPECT_EQ(text("a&lt;<![CDATA[b&]]>c"), QStringLiteral("a<b&c"));
    EXPECT_EQ(value("<dict><!-- x --><key>a</key><!-- y --><true/></dict>").toMap().size(), 1);
}

TEST(PropertyListXml, IntegersReachFromMinus2To63To2To64) {
    EXPECT_EQ(value("<integer>-9223372036854775808</integer>"), QVariant(std::numeric_limits<qint64>::min()));
    EXPECT_EQ(value("<integer>9223372036854775807</integer>"), QVariant(std::numeric_limits<qint64>::max()));
    EXPECT_EQ(value("<integer>18446744073709551615</integer>"), QVariant(std::numeric_limits<quint64>::max()));
    EXPECT_EQ(value("<integer> +0x1F </integer>"), QVariant(31LL));
    EXPECT_EQ(value("<integer>-0</integer>"), QVariant(0LL));
    for (const char *number :
         {"", "-", "x", "1x", "1.5", "18446744073709551616", "-9223372036854775809", "0x", "--1", "1 2"}) {
        EXPECT_TRUE(isRefused(QByteArray("<integer>") + number + "</integer>")) << number;
    }
}

TEST(PropertyListXml, RealsIncludeInfinitiesAndWhatIsNoNumber) {
    EXPECT_EQ(value("<real>-1e3</real>"), QVariant(-1000.0));
    EXPECT_EQ(value("<real>+inf</real>"), QVariant(std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(std::isnan(value("<real>nan</real>").toDouble()));
    EXPECT_EQ(value("<real>5e-324</real>"), QVariant(5e-324));
    EXPECT_TRUE(isRefused("<real>1e999</real>"));
    EXPECT_TRUE(isRefused("<real>1.5x</real>"));
    EXPECT_TRUE(isRefused("<real></real>"));
}

TEST(PropertyListXml, DatesHaveOneForm) {
    for (const char *date : {"", "2024-03-05", "2024-03-05T14:15:02", "2024-02-30T00:00:00Z", "2024-03-05T24:00:00Z",
                             "2024-3-05T14:15:02Z", "2024-03-05 14:15:02Z", "20x4-03-05T14:15:02Z"}) {
        EXPECT_TRUE(isRefused(QByteArray("<date>") + date + "</date>")) << date;
    }
}

TEST(PropertyListXml, BrokenBase64IsRefused) {
    EXPECT_TRUE(isRefused("<data>YW*j</data>"));
    EXPECT_TRUE(isRefused("<data>=YWJj</data>"));
    EXPECT_EQ(value("<data>YW Jj\tZA = =</data>"), QVariant(QByteArray("abcd")));
}

TEST(PropertyListXml, ALaterEntryOfOneKeyReplacesTheEarlier) {
    EXPECT_EQ(value("<dict><key>a</key><true/><key>a</key><false/></dict>").toMap().value(QStringLiteral("a")),
              QVariant(false));
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
        EXPECT_FALSE(parse(document).isValid()) << document;
    }
}

TEST(PropertyListXml, EveryTruncationOfADocumentIsRefused) {
    const QByteArray document =
        "<plist version=\"1.0\"><dict><key>a</key><array><string>b</string></array></dict></plist>";
    ASSERT_TRUE(parse(document).isValid());
    for (qsizetype length = 0; length < document.size(); ++length) {
        EXPECT_FALSE(parse(document.left(length)).isValid()) << length;
    }
}

TEST(PropertyListXml, BadUtf8AndZeroBytesAreRefused) {
    EXPECT_TRUE(isRefused("<string>\xFF\xFE</string>"));
    EXPECT_TRUE(isRefused("<string>\xC3</string>"));
    EXPECT_TRUE(isRefused("<string>\xED\xA0\x80</string>"));
    EXPECT_TRUE(isRefused(QByteArray("<string>a\0b</string>", 20)));
    EXPECT_TRUE(isRefused("<dict><key>\xFF</key><true/></dict>"));
}

TEST(PropertyListXml, Utf16AndByteOrderMarksAreUnderstood) {
    const QString document =
        QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><string>é📄</string></plist>");
    const QByteArray utf16 =
        QByteArray("\xFF\xFE", 2) + QByteArray(reinterpret_cast<const char *>(document.utf16()), document.size() * 2);
    EXPECT_EQ(parse(utf16), QVariant(QStringLiteral("é📄")));
    EXPECT_EQ(parse("\xEF\xBB\xBF<plist><string>é</string></plist>"), QVariant(QStringLiteral("é")));
}

QByteArray nested(int depth) { return QByteArray("<array>").repeated(depth) + QByteArray("</array>").repeated(depth); }

TEST(PropertyListXml, NestingIsBounded) {
    EXPECT_TRUE(value(nested(PropertyList::kMaximumDepth)).isValid());
    EXPECT_TRUE(isRefused(nested(PropertyList::kMaximumDepth + 1)));
    EXPECT_TRUE(isRefused(nested(1000000)));
    EXPECT_TRUE(isRefused(QByteArray("<dict><key>a</key>").repeated(100000)));
}

TEST(PropertyListXml, MemoryIsBounded) {
    EXPECT_TRUE(value("<array>" + QByteArray("<true/>").repeated(100000) + "</array>").isValid());
    EXPECT_TRUE(isRefused("<array>" + QByteArray("<true/>").repeated(1000000) + "</array>"));
    EXPECT_TRUE(isRefused("<string>" + QByteArray(40 << 20, 'a') + "</string>"));
    EXPECT_TRUE(isRefused("<array>" + QByteArray("<data>AAAA</data>").repeated(500000) + "</array>"));
    EXPECT_TRUE(value("<string>" + QByteArray(4 << 20, 'a') + "</string>").isValid());
}

} // namespace
} // namespace quillmark

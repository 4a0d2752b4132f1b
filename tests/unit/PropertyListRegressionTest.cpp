#include "platform/linux/LinuxPropertyList.h"
#include "support/QtPrinters.h"

#include <bit>
#include <gtest/gtest.h>

namespace quillmark {
namespace {

QVariant xmlValue(const QByteArray &element) { return parseXmlPropertyList("<plist>" + element + "</plist>"); }

/// So many arrays inside one another.
QVariant nested(int depth) {
    QVariantList list;
    while (--depth > 0) {
        list = {QVariant(list)};
    }
    return list;
}

QByteArray nestedBinary(int depth) {
    QByteArray objects;
    QByteArray offsets;
    const auto twoBytes = [](qsizetype number) {
        return QByteArray{}.append(static_cast<char>(number >> 8)).append(static_cast<char>(number));
    };
    for (int i = 1; i <= depth; ++i) {
        offsets += twoBytes(8 + objects.size());
        objects += i < depth ? '\xA1' + twoBytes(i) : QByteArray("\xA0");
    }
    return "bplist00" + objects + offsets + QByteArray(6, '\0') + "\2\2" + QByteArray(6, '\0') + twoBytes(depth) +
           QByteArray(14, '\0') + twoBytes(8 + objects.size());
}

TEST(PropertyListRegression, AMarkOfTheByteOrderAtATextsBeginningIsPartOfTheText) {
    EXPECT_EQ(xmlValue("<string>\xEF\xBB\xBF</string>"), QVariant(QStringLiteral("\uFEFF")));
    EXPECT_EQ(xmlValue("<string>\xEF\xBB\xBF\xEF\xBB\xBFx\xEF\xBB\xBF</string>"),
              QVariant(QStringLiteral("\uFEFF\uFEFFx\uFEFF")));
    EXPECT_EQ(xmlValue("<string>&amp;\xEF\xBB\xBF</string>"), QVariant(QStringLiteral("&\uFEFF")));
}

TEST(PropertyListRegression, ZeroKeepsItsSign) {
    const QVariant read = parseXmlPropertyList(writeXmlPropertyList(-0.0).value());
    EXPECT_EQ(std::bit_cast<quint64>(read.toDouble()), std::bit_cast<quint64>(-0.0));
}

TEST(PropertyListRegression, ARealHasOneSign) {
    EXPECT_EQ(xmlValue("<real>+1.5</real>"), QVariant(1.5));
    EXPECT_FALSE(xmlValue("<real>+-1.5</real>").isValid());
}

TEST(PropertyListRegression, BothFormsAndTheWriterAllowTheSameDepth) {
    constexpr int kDeepest = PropertyList::kMaximumDepth;
    EXPECT_EQ(parseBinaryPropertyList(nestedBinary(kDeepest)), nested(kDeepest));
    EXPECT_EQ(parseXmlPropertyList(writeXmlPropertyList(nested(kDeepest)).value()), nested(kDeepest));
    EXPECT_FALSE(parseBinaryPropertyList(nestedBinary(kDeepest + 1)).isValid());
    EXPECT_FALSE(writeXmlPropertyList(nested(kDeepest + 1)).has_value());
}

TEST(PropertyListRegression, AnAmpersandInACharacterDataSectionBesideATextStaysWhatItIs) {
    EXPECT_EQ(xmlValue("<string>a<![CDATA[&lt;]]>&lt;</string>"), QVariant(QStringLiteral("a&lt;<")));
}

} // namespace
} // namespace quillmark

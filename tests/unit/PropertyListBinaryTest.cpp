#include "platform/linux/LinuxPropertyList.h"
#include "platform/linux/Utc.h"
#include "support/QtPrinters.h"

#include <QDateTime>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace quillmark {
namespace {

/// A binary property list put together by hand: every object's bytes, the root being the first one. Offsets take four
/// bytes, references one.
struct Document {
    QList<QByteArray> objects;
    quint64 top = 0;
    std::optional<quint64> count = {};
    std::optional<quint64> table = {};
    int offsetSize = 4;
    int referenceSize = 1;

    static QByteArray bigEndian(quint64 value, int width) {
        QByteArray bytes;
        for (int shift = (width - 1) * 8; shift >= 0; shift -= 8) {
            bytes.append(shift >= 64 ? '\0' : static_cast<char>(value >> static_cast<unsigned>(shift)));
        }
        return bytes;
    }
    QByteArray bytes() const {
        QByteArray document = "bplist00";
        QByteArray offsets;
        for (const QByteArray &object : objects) {
            offsets += bigEndian(static_cast<quint64>(document.size()), offsetSize);
            document += object;
        }
        const auto place = static_cast<quint64>(document.size());
        document += offsets + QByteArray(6, '\0') + static_cast<char>(offsetSize) + static_cast<char>(referenceSize);
        document += bigEndian(count.value_or(static_cast<quint64>(objects.size())), 8) + bigEndian(top, 8);
        return document + bigEndian(table.value_or(place), 8);
    }
    QVariant value() const { return LinuxPropertyList().parse(bytes()); }
};

QByteArray bytes(std::initializer_list<int> values) {
    QByteArray result;
    for (const int value : values) {
        result.append(static_cast<char>(value));
    }
    return result;
}
QVariant value(const QByteArray &object) { return Document{{object}}.value(); }
bool isRefused(const Document &document) { return !document.value().isValid(); }

TEST(PropertyListBinary, EachTypeHasItsValue) {
    EXPECT_EQ(value(bytes({0x08})), QVariant(false));
    EXPECT_EQ(value(bytes({0x09})), QVariant(true));
    EXPECT_EQ(value(bytes({0x10, 200})), QVariant(200LL));
    EXPECT_EQ(value(bytes({0x11, 1, 0})), QVariant(256LL));
    EXPECT_EQ(value(bytes({0x12, 255, 255, 255, 255})), QVariant(4294967295LL));
    EXPECT_EQ(value("\x13" + QByteArray(8, '\xFF')), QVariant(-1LL));
    EXPECT_EQ(value(bytes({0x22, 0x3F, 0xC0, 0, 0})), QVariant(1.5));
    EXPECT_EQ(value(bytes({0x23, 0x3F, 0xF8, 0, 0, 0, 0, 0, 0})), QVariant(1.5));
    EXPECT_EQ(value(bytes({0x33, 0, 0, 0, 0, 0, 0, 0, 0})), QVariant(QDateTime({2001, 1, 1}, {0, 0}, kUtc)));
    EXPECT_EQ(value(bytes({0x42, 'a', 0})), QVariant(QByteArray("a\0", 2)));
    EXPECT_EQ(value(bytes({0x53, 'a', 'b', 'c'})), QVariant(QStringLiteral("abc")));
    EXPECT_EQ(value(bytes({0x63, 0, 0xE9, 0xD8, 0x3D, 0xDC, 0xC4})), QVariant(QStringLiteral("é📄")));
    EXPECT_EQ(value(bytes({0x80, 7})), QVariant(QVariantMap({{QStringLiteral("CF$UID"), 7LL}})));
    EXPECT_EQ((Document{{bytes({0xA2, 1, 1}), bytes({0x09})}}.value()), QVariant(QVariantList({true, true})));
    EXPECT_EQ((Document{{bytes({0xD1, 1, 2}), bytes({0x51, 'k'}), bytes({0x09})}}.value()),
              QVariant(QVariantMap({{QStringLiteral("k"), true}})));
}

TEST(PropertyListBinary, LongLengthsFollowAsNumbers) {
    const QByteArray text(300, 'x');
    EXPECT_EQ(value(bytes({0x5F, 0x11, 1, 44}) + text), QVariant(QString::fromLatin1(text)));
    EXPECT_EQ(value(bytes({0x4F, 0x10, 0})), QVariant(QByteArray()));
}

TEST(PropertyListBinary, SixteenByteIntegersHoldWhatEightCannot) {
    EXPECT_EQ(value("\x14" + QByteArray(8, '\0') + QByteArray(8, '\xFF')),
              QVariant(std::numeric_limits<quint64>::max()));
    EXPECT_EQ(value("\x14" + QByteArray(15, '\0') + '\5'), QVariant(5LL));
    EXPECT_EQ(value("\x14" + QByteArray(16, '\xFF')), QVariant(-1LL));
    EXPECT_FALSE(value("\x14" + QByteArray(7, '\0') + '\1' + QByteArray(8, '\0')).isValid());
}

TEST(PropertyListBinary, ObjectsThatAreNoValuesAreRefused) {
    EXPECT_TRUE(isRefused({{bytes({0x00})}}));                     // null
    EXPECT_TRUE(isRefused({{bytes({0x0F})}}));                     // fill
    EXPECT_TRUE(isRefused({{bytes({0x15}) + QByteArray(32, 0)}})); // an integer of 32 bytes
    EXPECT_TRUE(isRefused({{bytes({0x21, 0, 0})}}));               // a real of two bytes
    EXPECT_TRUE(isRefused({{bytes({0x32, 0, 0, 0, 0})}}));         // a date of four bytes
    EXPECT_TRUE(isRefused({{bytes({0x71, 'a'})}}));
    EXPECT_TRUE(isRefused({{bytes({0xC0})}}));
    EXPECT_TRUE(isRefused({{bytes({0xF0})}}));
    EXPECT_TRUE(isRefused({{bytes({0x51, 0xE9})}}));                   // no ASCII
    EXPECT_TRUE(isRefused({{bytes({0x61, 0xD8, 0x3D})}}));             // half a surrogate pair
    EXPECT_TRUE(isRefused({{bytes({0x87, 1, 0, 0, 0, 0, 0, 0, 0})}})); // an identifier of more than 32 bits
}

TEST(PropertyListBinary, DatesOutsideTheCalendarAreRefused) {
    const auto date = [](double seconds) {
        return value("\x33" + Document::bigEndian(std::bit_cast<quint64>(seconds), 8));
    };
    EXPECT_TRUE(date(1e9).isValid());
    EXPECT_FALSE(date(1e18).isValid());
    EXPECT_FALSE(date(-1e18).isValid());
    EXPECT_FALSE(date(std::nan("")).isValid());
    EXPECT_FALSE(date(std::numeric_limits<double>::infinity()).isValid());
}

TEST(PropertyListBinary, KeysMustBeTexts) {
    EXPECT_TRUE(isRefused({{bytes({0xD1, 1, 2}), bytes({0x10, 1}), bytes({0x09})}}));
}

TEST(PropertyListBinary, ReferencesAndOffsetsMustLeadToObjects) {
    EXPECT_TRUE(isRefused({{bytes({0xA1, 9})}}));
    EXPECT_TRUE(isRefused({{bytes({0x09})}, 5}));
    Document wrongTable{{bytes({0x09})}};
    for (const quint64 table : {quint64{0}, quint64{7}, quint64{100000}, ~quint64{0}}) {
        wrongTable.table = table;
        EXPECT_TRUE(isRefused(wrongTable)) << table;
    }
    Document wrongCount{{bytes({0x09})}};
    for (const quint64 count : {quint64{0}, quint64{1} << 40, ~quint64{0}}) {
        wrongCount.count = count;
        EXPECT_TRUE(isRefused(wrongCount)) << count;
    }
}

TEST(PropertyListBinary, SizesOfOffsetsAndReferencesAreChecked) {
    for (const int size : {0, 9, 255}) {
        QByteArray document = Document{{bytes({0x09})}}.bytes();
        document[document.size() - 26] = static_cast<char>(size);
        EXPECT_FALSE(LinuxPropertyList().parse(document).isValid()) << size;
        document = Document{{bytes({0x09})}}.bytes();
        document[document.size() - 25] = static_cast<char>(size);
        EXPECT_FALSE(LinuxPropertyList().parse(document).isValid()) << size;
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

TEST(PropertyListBinary, ASmallDocumentThatUnfoldsIntoAHugeOneIsRefused) {
    Document doubling;
    for (int level = 0; level < 60; ++level) {
        doubling.objects << bytes({0xA2, level + 1, level + 1});
    }
    doubling.objects << bytes({0x09});
    EXPECT_TRUE(isRefused(doubling));
}

TEST(PropertyListBinary, SharedObjectsAreFineWithinBounds) {
    Document doubling;
    for (int level = 0; level < 10; ++level) {
        doubling.objects << bytes({0xA2, level + 1, level + 1});
    }
    doubling.objects << bytes({0x09});
    EXPECT_EQ(doubling.value().toList().size(), 2);
}

TEST(PropertyListBinary, NestingIsBounded) {
    Document deep;
    deep.referenceSize = 2;
    for (int level = 0; level < 2000; ++level) {
        deep.objects << "\xA1" + Document::bigEndian(static_cast<quint64>(level + 1), 2);
    }
    deep.objects << bytes({0x09});
    EXPECT_TRUE(isRefused(deep));
    deep.top = 2000 - PropertyList::kMaximumDepth;
    EXPECT_TRUE(deep.value().isValid());
}

TEST(PropertyListBinary, EveryTruncationOfADocumentIsRefused) {
    const QByteArray document =
        Document{{bytes({0xD1, 1, 2}), bytes({0x51, 'k'}), bytes({0x53, 'a', 'b', 'c'})}}.bytes();
    ASSERT_TRUE(LinuxPropertyList().parse(document).isValid());
    for (qsizetype length = 0; length < document.size(); ++length) {
        EXPECT_FALSE(LinuxPropertyList().parse(document.left(length)).isValid()) << length;
    }
}

TEST(PropertyListBinary, OtherVersionsAreRefused) {
    QByteArray document = Document{{bytes({0x09})}}.bytes();
    document[6] = '1';
    EXPECT_FALSE(LinuxPropertyList().parse(document).isValid());
}

} // namespace
} // namespace quillmark

#include "platform/linux/LinuxImages.h"
#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"

#include <QtEndian>

namespace quillmark {
namespace {

/// A 24-bit bitmap, every pixel red.
QByteArray bitmap(qint32 width, qint32 height) {
    const auto little = [](auto value) {
        QByteArray bytes(sizeof value, '\0');
        qToLittleEndian(value, bytes.data());
        return bytes;
    };
    QByteArray row;
    for (int x = 0; x < width; ++x) {
        row += QByteArray("\x00\x00\xFF", 3);
    }
    row.append((4 - row.size() % 4) % 4, '\0');
    const QByteArray pixels = row.repeated(height);
    return "BM" + little(quint32(54 + pixels.size())) + little(quint32(0)) + little(quint32(54)) + little(quint32(40)) +
           little(width) + little(height) + little(quint16(1)) + little(quint16(24)) + little(quint32(0)) +
           little(quint32(pixels.size())) + QByteArray(16, '\0') + pixels;
}

TEST(Images, ABitmapIsDecodedToRedGreenBlueAlpha) {
    const test::TemporaryHome home;
    const QString file = home.write(QStringLiteral("logo.bmp"), bitmap(3, 2));
    const auto image = LinuxImages().load(file);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->name, file);
    EXPECT_EQ(image->width, 3);
    EXPECT_EQ(image->height, 2);
    EXPECT_EQ(image->rgba, QByteArray("\xFF\x00\x00\xFF", 4).repeated(6));
}

TEST(Images, EveryTruncationGivesNoImageOrAWholeOne) {
    const QByteArray whole = bitmap(5, 5);
    for (qsizetype length = 0; length < whole.size(); ++length) {
        const auto image = decodeImage(whole.left(length), QStringLiteral("x"));
        EXPECT_TRUE(!image || image->rgba.size() == 5 * 5 * 4) << length;
    }
}

TEST(Images, WhatIsNoPictureGivesNone) {
    const test::TemporaryHome home;
    EXPECT_FALSE(LinuxImages().load(home.path(QStringLiteral("missing"))));
    EXPECT_FALSE(LinuxImages().load(QString()));
    EXPECT_FALSE(LinuxImages().load(home.path()));
    EXPECT_FALSE(LinuxImages().load(home.write(QStringLiteral("empty"), "")));
    EXPECT_FALSE(LinuxImages().load(home.write(QStringLiteral("text"), "BM but not really")));
}

TEST(Images, PicturesBeyond4096PixelsAreRefused) {
    QByteArray huge = bitmap(1, 1);
    qToLittleEndian<qint32>(4097, huge.data() + 18);
    EXPECT_FALSE(decodeImage(huge, QStringLiteral("x")));
    qToLittleEndian<qint32>(0x7FFFFFFF, huge.data() + 18);
    qToLittleEndian<qint32>(0x7FFFFFFF, huge.data() + 22);
    EXPECT_FALSE(decodeImage(huge, QStringLiteral("x")));
}

} // namespace
} // namespace quillmark

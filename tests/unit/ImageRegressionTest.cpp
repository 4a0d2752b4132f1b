#include "platform/linux/LinuxImages.h"

#include <QtEndian>
#include <gtest/gtest.h>

namespace quillmark {
namespace {

/// Packs a run of zeros in the tersest form that the packing method has.
class PackedZeros {
public:
    explicit PackedZeros(qint64 count) {
        bits(1, 1);    // the last block
        bits(1, 2);    // with the fixed code
        code(0x30, 8); // a zero
        for (qint64 packed = 1; packed < count; packed += 258) {
            code(0xC5, 8); // 258 more
            code(0, 5);    // of what stands one place back
        }
        code(0, 7); // the end
        bits(0, 7);
    }
    const QByteArray &bytes() const { return m_bytes; }

private:
    void bits(unsigned value, int count) {
        for (int i = 0; i < count; ++i) {
            m_byte |= ((value >> i) & 1U) << m_filled;
            if (++m_filled == 8) {
                m_bytes.append(static_cast<char>(m_byte));
                m_byte = 0;
                m_filled = 0;
            }
        }
    }
    /// Codes stand with their highest bit first.
    void code(unsigned value, int count) {
        while (count-- > 0) {
            bits((value >> count) & 1U, 1);
        }
    }

    QByteArray m_bytes = QByteArray::fromHex("7801");
    unsigned m_byte = 0;
    int m_filled = 0;
};

QByteArray chunk(const char *type, const QByteArray &contents) {
    QByteArray bytes(4, '\0');
    qToBigEndian(static_cast<quint32>(contents.size()), bytes.data());
    return bytes + type + contents + QByteArray(4, '\0'); // the sums are not looked at
}

/// One transparent pixel, and `count` bytes in place of the few that it takes.
QByteArray onePixelOf(qint64 count) {
    return QByteArray::fromHex("89504e470d0a1a0a") + chunk("IHDR", QByteArray::fromHex("00000001000000010806000000")) +
           chunk("IDAT", PackedZeros(count).bytes()) + chunk("IEND", {});
}

TEST(ImageRegression, ASmallFileThatUnfoldsBeyondTheLargestPictureIsRefused) {
    const QByteArray bomb = onePixelOf(200 << 20);
    EXPECT_LT(bomb.size(), 2 << 20);
    EXPECT_FALSE(decodeImage(bomb, QString()).has_value());
}

TEST(ImageRegression, ALittleMoreDataThanThePictureTakesIsIgnored) {
    const auto image = decodeImage(onePixelOf(1000), QStringLiteral("pixel"));
    ASSERT_TRUE(image.has_value());
    EXPECT_EQ(image->rgba, QByteArray(4, '\0'));
}

TEST(ImageRegression, ABitmapWithoutRowsIsNoPicture) {
    const QByteArray header = "BM" + QByteArray(8, '\0') + QByteArray::fromHex("3600000028000000") +
                              QByteArray::fromHex("01000000") + QByteArray(4, '\0') + QByteArray::fromHex("01001800");
    EXPECT_FALSE(decodeImage(header + QByteArray(100, '\0'), QString()).has_value());
}

} // namespace
} // namespace quillmark

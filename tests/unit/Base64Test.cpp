#include "accounts/KeychainManager.h"
#include "support/QtPrinters.h"
#include "utils/Utf8Text.h"

#include <QCryptographicHash>
#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <random>

namespace quillmark {
namespace {

QString encoded(const QString &text) { return KeychainManager::encryptString(text); }
QString decoded(const QString &text) { return KeychainManager::decryptString(text); }
QString letters(qsizetype count) { return QString(count, u'A'); }

/// What the Base64 filter of the library makes of a text that earlier versions gave to it, read by 1024 bytes.
QByteArray decodedByTheFilter(const QByteArray &text) {
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> filter(BIO_new(BIO_f_base64()), BIO_free_all);
    BIO_set_flags(filter.get(), BIO_FLAGS_BASE64_NO_NL);
    BIO_push(filter.get(), BIO_new_mem_buf(text.constData(), static_cast<int>(text.size())));
    QByteArray bytes;
    std::array<char, 1024> piece{};
    for (int count = 0; (count = BIO_read(filter.get(), piece.data(), static_cast<int>(piece.size()))) > 0;) {
        bytes.append(piece.data(), count);
    }
    return bytes;
}

/// Whether it still leaves out a group that the text's end has cut off. For newer ones that makes the whole text wrong.
bool isTheFilterOfEarlierVersions() { return decodedByTheFilter("YWJjZA") == "abc"; }

TEST(Base64, IsThatOfTheTextsUtf8Bytes) {
    EXPECT_EQ(encoded(QStringLiteral("abc")), QStringLiteral("YWJj"));
    EXPECT_EQ(encoded(QStringLiteral("a")), QStringLiteral("YQ=="));
    EXPECT_EQ(encoded(QStringLiteral("ü€𝄞")), QStringLiteral("w7zigqzwnYSe"));
    EXPECT_EQ(encoded(QStringLiteral("~?~>~>")), QStringLiteral("fj9+Pn4+"));
}

TEST(Base64, IsOnOneLineHoweverLongTheTextIs) {
    const QString line = encoded(letters(100000));
    EXPECT_EQ(line.size(), 133336);
    EXPECT_FALSE(line.contains(u'\n'));
    EXPECT_EQ(decoded(line), letters(100000));
}

TEST(Base64, OfAnEmptyTextIsThatText) {
    for (const QString &none : {QString(), QStringLiteral("")}) {
        EXPECT_EQ(encoded(none).isNull(), none.isNull());
        EXPECT_EQ(decoded(none).isNull(), none.isNull());
        EXPECT_TRUE(encoded(none).isEmpty() && decoded(none).isEmpty());
    }
}

TEST(Base64, ComesBackAsTheSameText) {
    for (const QString &text : {QStringLiteral("abc"), QStringLiteral("ü€𝄞"), QStringLiteral("\uFEFFmark"),
                                QString(QChar()) + u'x', letters(767), letters(768), letters(769)}) {
        EXPECT_EQ(decoded(encoded(text)), text);
    }
}

TEST(Base64, ThatIsNoneDecodesToAnEmptyText) {
    for (const char *const text : {"!!!!", "YW-j", "Y", "YWJ", " YWJj", "YWJj\nYWJj", "Y_Jj"}) {
        EXPECT_EQ(decoded(QString::fromLatin1(text)), QStringLiteral("")) << text;
        EXPECT_FALSE(decoded(QString::fromLatin1(text)).isNull()) << text;
    }
    EXPECT_EQ(decoded(QStringLiteral("€uro")), QStringLiteral(""));
}

TEST(Base64, ThatEndsInTheMiddleOfAGroupLosesItsEnd) { // deliberate
    EXPECT_EQ(decoded(QStringLiteral("YWJjZA")), QStringLiteral("abc"));
    EXPECT_EQ(decoded(QStringLiteral("YWJjZA==")), QStringLiteral("abcd"));
    EXPECT_EQ(decoded(QStringLiteral("YWJj\n")), QStringLiteral("abc"));
}

TEST(Base64, WithAWrongCharacterDecodesUpToThePieceThatHasIt) { // deliberate
    EXPECT_EQ(decoded(letters(1024) + QStringLiteral("!!!!")), QString(768, QChar()));
    EXPECT_EQ(decoded(letters(1020) + QStringLiteral("!!!!") + letters(1024)), QStringLiteral(""));
    EXPECT_EQ(decoded(letters(2048) + QStringLiteral("AAA!AAAA")), QString(1536, QChar()));
}

TEST(Base64, OfBytesThatAreNoTextDecodesToNone) { EXPECT_TRUE(decoded(QStringLiteral("//79")).isNull()); }

TEST(Base64, OddlyPaddedOrSurroundedDecodesAsItAlwaysDid) { // deliberate
    std::minstd_rand random; // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts in every run
    const bool isFilterTheSame = isTheFilterOfEarlierVersions();
    QCryptographicHash results(QCryptographicHash::Sha256);
    const QByteArray alphabet = "YWJjZA/+09=====    \n\r\t--_!\xc3\xbc";
    for (int i = 0; i < 200000; ++i) {
        QByteArray text;
        // Near a piece's end, or short.
        const size_t length = i % 20 == 0 ? 1016 + random() % 16 : random() % 14;
        const size_t variety = random() % 3 == 0 ? static_cast<size_t>(alphabet.size()) : 10;
        for (size_t at = 0; at < length; ++at) {
            const size_t choices = length > 100 && at + 20 < length && at > 4 ? 10 : variety;
            text += alphabet[static_cast<qsizetype>(random() % choices)];
        }
        const QString valid = utf8Text(text);
        if (valid.isEmpty()) {
            continue;
        }
        const QString result = decoded(valid);
        results.addData(result.isNull() ? QByteArray("none") : result.toUtf8() + '\n');
        if (isFilterTheSame) {
            const QString expected = utf8Text(decodedByTheFilter(text));
            ASSERT_EQ(result, expected) << text.toPercentEncoding().toStdString();
            ASSERT_EQ(result.isNull(), expected.isNull()) << text.toPercentEncoding().toStdString();
        }
    }
    // Those of the filter, where it is another one now.
    EXPECT_EQ(results.result().toHex(), "fd5bed817ff981eb948689f58ca7f45e230dac64a62b8b7658cf7801eafeb57d");
}

} // namespace
} // namespace quillmark

#include "accounts/KeychainManager.h"
#include "platform/values/Utf8Text.h"

#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <random>

namespace quillmark {
namespace {

using OptionalText = KeychainManager::OptionalText;

std::optional<std::string> encoded(OptionalText text) { return KeychainManager::encryptString(text); }
std::optional<std::string> decoded(OptionalText text) { return KeychainManager::decryptString(text); }
std::string letters(size_t count) { return std::string(count, 'A'); }

/// What the Base64 filter of the library makes of a text that earlier versions gave to it, read by 1024 bytes.
std::string decodedByTheFilter(std::string_view text) {
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> filter(BIO_new(BIO_f_base64()), BIO_free_all);
    BIO_set_flags(filter.get(), BIO_FLAGS_BASE64_NO_NL);
    BIO_push(filter.get(), BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    std::string bytes;
    std::array<char, 1024> piece{};
    for (int count = 0; (count = BIO_read(filter.get(), piece.data(), static_cast<int>(piece.size()))) > 0;) {
        bytes.append(piece.data(), static_cast<size_t>(count));
    }
    return bytes;
}

/// Whether it still leaves out a group that the text's end has cut off. For newer ones that makes the whole text wrong.
bool isTheFilterOfEarlierVersions() { return decodedByTheFilter("YWJjZA") == "abc"; }

TEST(Base64, IsThatOfTheTextsUtf8Bytes) {
    EXPECT_EQ(encoded("abc"), "YWJj");
    EXPECT_EQ(encoded("a"), "YQ==");
    EXPECT_EQ(encoded("ü€𝄞"), "w7zigqzwnYSe");
    EXPECT_EQ(encoded("~?~>~>"), "fj9+Pn4+");
}

TEST(Base64, IsOnOneLineHoweverLongTheTextIs) {
    const std::string line = encoded(letters(100000)).value();
    EXPECT_EQ(line.size(), 133336U);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_EQ(decoded(line), letters(100000));
}

TEST(Base64, OfAnEmptyTextIsThatText) {
    for (const OptionalText none : {OptionalText(), OptionalText("")}) {
        EXPECT_EQ(encoded(none), none);
        EXPECT_EQ(decoded(none), none);
    }
}

TEST(Base64, ComesBackAsTheSameText) {
    for (const std::string &text : {std::string("abc"), std::string("ü€𝄞"), std::string("\uFEFFmark"),
                                    std::string("\0x", 2), letters(767), letters(768), letters(769)}) {
        EXPECT_EQ(decoded(encoded(text)), text);
    }
}

TEST(Base64, ThatIsNoneDecodesToAnEmptyText) {
    for (const char *const text : {"!!!!", "YW-j", "Y", "YWJ", " YWJj", "YWJj\nYWJj", "Y_Jj"}) {
        EXPECT_EQ(decoded(text), "") << text;
    }
    EXPECT_EQ(decoded("€uro"), "");
}

TEST(Base64, ThatEndsInTheMiddleOfAGroupLosesItsEnd) { // deliberate
    EXPECT_EQ(decoded("YWJjZA"), "abc");
    EXPECT_EQ(decoded("YWJjZA=="), "abcd");
    EXPECT_EQ(decoded("YWJj\n"), "abc");
}

TEST(Base64, WithAWrongCharacterDecodesUpToThePieceThatHasIt) { // deliberate
    EXPECT_EQ(decoded(letters(1024) + "!!!!"), std::string(768, '\0'));
    EXPECT_EQ(decoded(letters(1020) + "!!!!" + letters(1024)), "");
    EXPECT_EQ(decoded(letters(2048) + "AAA!AAAA"), std::string(1536, '\0'));
}

TEST(Base64, OfBytesThatAreNoTextDecodesToNone) { EXPECT_EQ(decoded("//79"), std::nullopt); }

TEST(Base64, OddlyPaddedOrSurroundedDecodesAsItAlwaysDid) { // deliberate
    std::minstd_rand random; // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts in every run
    const bool isFilterTheSame = isTheFilterOfEarlierVersions();
    std::string results;
    const std::string_view alphabet = "YWJjZA/+09=====    \n\r\t--_!\xc3\xbc";
    for (int i = 0; i < 200000; ++i) {
        std::string text;
        // Near a piece's end, or short.
        const size_t length = i % 20 == 0 ? 1016 + random() % 16 : random() % 14;
        const size_t variety = random() % 3 == 0 ? alphabet.size() : 10;
        for (size_t at = 0; at < length; ++at) {
            const size_t choices = length > 100 && at + 20 < length && at > 4 ? 10 : variety;
            text += alphabet[random() % choices];
        }
        if (!utf8Text(text) || text.empty()) {
            continue;
        }
        const std::optional<std::string> result = decoded(text);
        results += result ? *result + '\n' : "none";
        if (isFilterTheSame) {
            ASSERT_EQ(result, utf8Text(decodedByTheFilter(text))) << testing::PrintToString(text);
        }
    }
    // Those of the filter, where it is another one now.
    std::array<unsigned char, 32> digest{};
    ASSERT_EQ(EVP_Digest(results.data(), results.size(), digest.data(), nullptr, EVP_sha256(), nullptr), 1);
    std::array<char, 65> hex{};
    ASSERT_EQ(OPENSSL_buf2hexstr_ex(hex.data(), hex.size(), nullptr, digest.data(), digest.size(), '\0'), 1);
    EXPECT_STREQ(hex.data(), "FD5BED817FF981EB948689F58CA7F45E230DAC64A62B8B7658CF7801EAFEB57D");
}

} // namespace
} // namespace quillmark

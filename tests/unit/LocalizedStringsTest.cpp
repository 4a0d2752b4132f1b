#include "branding/LocalizedStrings.h"
#include "fakes/FakePlatform.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace quillmark {
namespace {

class LocalizedStringsTest : public testing::Test {
protected:
    LocalizedStringsTest() {
        const std::pair<const char *, const char *> texts[] = {
            {"ProductName", "Quillmark"},
            {"CarryfoldProduct", "Carryfold"},
            {"BackupProduct", "Vault"},
            {"TeamFolderProduct", "Team Folder"},
            {"TeamFoldersProduct", "Team Folders"},
            {"Plain", "Just a text"},
            {"Tokens", "{#ProductName#}/{#CarryfoldProduct#}/{#BackupProduct#}"},
            {"Teams", "{#TeamFolderProduct#} and {#TeamFoldersProduct#}"},
            {"Twice", "{#ProductName#} {#ProductName#}"},
            {"Sec_Key", "sectioned"},
        };
        for (const auto &[key, text] : texts) {
            bundle.strings.insert(QString::fromLatin1(key), QString::fromLatin1(text));
        }
    }
    LocalizedStrings &strings() {
        if (!m_strings) {
            m_strings.emplace(bundle);
        }
        return *m_strings;
    }
    QString text(const char *key) { return strings().localisedString(QString::fromLatin1(key)); }
    QString stripped(const char *section, const char *key) {
        return strings().localisedStringStrippingBrandingSection(QString::fromLatin1(section),
                                                                 QString::fromLatin1(key));
    }

    test::FakeBundle bundle;

private:
    std::optional<LocalizedStrings> m_strings;
};

TEST_F(LocalizedStringsTest, AKeyHasTheTextOfTheTable) {
    EXPECT_EQ(text("ProductName"), QStringLiteral("Quillmark"));
    EXPECT_EQ(text("Plain"), QStringLiteral("Just a text"));
}

TEST_F(LocalizedStringsTest, TokensAreReplacedByTheProductNames) {
    EXPECT_EQ(text("Tokens"), QStringLiteral("Quillmark/Carryfold/Vault"));
    EXPECT_EQ(text("Teams"), QStringLiteral("Team Folder and Team Folders"));
    EXPECT_EQ(text("Twice"), QStringLiteral("Quillmark Quillmark"));
}

TEST_F(LocalizedStringsTest, TokensAreReplacedInTheOrderOfTheirTable) {
    bundle.strings[QStringLiteral("ProductName")] = QStringLiteral("{#BackupProduct#}");
    bundle.strings[QStringLiteral("BackupProduct")] = QStringLiteral("{#ProductName#}");
    // The first name brings in a token that a later step replaces; the second one's comes too late.
    EXPECT_EQ(text("Tokens"), QStringLiteral("{#ProductName#}/Carryfold/{#ProductName#}"));
}

TEST_F(LocalizedStringsTest, AnUnknownTokenStays) {
    bundle.strings[QStringLiteral("Odd")] = QStringLiteral("{#productName#} {#Other#} {#ProductName#");
    EXPECT_EQ(text("Odd"), QStringLiteral("{#productName#} {#Other#} {#ProductName#"));
}

TEST_F(LocalizedStringsTest, AMissingKeyIsItsOwnTextWithTokensReplaced) {
    EXPECT_EQ(text("No such key"), QStringLiteral("No such key"));
    EXPECT_EQ(text("{#ProductName#} is gone"), QStringLiteral("Quillmark is gone"));
}

TEST_F(LocalizedStringsTest, AnAbsentKeyGivesAnAbsentText) {
    EXPECT_TRUE(strings().localisedString(QString()).isNull());
    EXPECT_FALSE(strings().localisedString(QStringLiteral("")).isNull());
}

TEST_F(LocalizedStringsTest, ATextStaysAsItWasAtItsFirstLookup) {
    EXPECT_EQ(text("Plain"), QStringLiteral("Just a text"));
    bundle.strings[QStringLiteral("Plain")] = QStringLiteral("changed");
    EXPECT_EQ(text("Plain"), QStringLiteral("Just a text"));
    EXPECT_EQ(bundle.lookups[QStringLiteral("Plain")], 1);
}

TEST_F(LocalizedStringsTest, AMissingKeyIsRememberedToo) {
    text("No such key");
    bundle.strings[QStringLiteral("No such key")] = QStringLiteral("found later");
    EXPECT_EQ(text("No such key"), QStringLiteral("No such key"));
}

TEST_F(LocalizedStringsTest, TheProductNamesAreReadOnce) {
    strings();
    bundle.strings[QStringLiteral("ProductName")] = QStringLiteral("Renamed");
    EXPECT_EQ(text("Twice"), QStringLiteral("Quillmark Quillmark"));
    EXPECT_EQ(text("ProductName"), QStringLiteral("Renamed")); // as a key it is a text like any other
}

TEST_F(LocalizedStringsTest, AProductNameThatIsMissingIsItsKey) {
    bundle.strings.remove(QStringLiteral("BackupProduct"));
    EXPECT_EQ(text("Tokens"), QStringLiteral("Quillmark/Carryfold/BackupProduct"));
}

TEST_F(LocalizedStringsTest, ASectionsTextWinsOverThePlainKeys) {
    bundle.strings[QStringLiteral("Key")] = QStringLiteral("plain");
    const auto of = [this](const char *section) {
        return strings().localisedStringForSection(QString::fromLatin1(section), QStringLiteral("Key"));
    };
    EXPECT_EQ(of("Sec"), QStringLiteral("sectioned"));
    EXPECT_EQ(of("Other"), QStringLiteral("plain"));
}

TEST_F(LocalizedStringsTest, ASectionWhoseTextEqualsItsKeyCountsAsMissing) {
    bundle.strings[QStringLiteral("Key")] = QStringLiteral("plain");
    bundle.strings[QStringLiteral("S_Key")] = QStringLiteral("S_Key");
    EXPECT_EQ(strings().localisedStringForSection(QStringLiteral("S"), QStringLiteral("Key")), QStringLiteral("plain"));
}

TEST_F(LocalizedStringsTest, StrippingRemovesProductNamesAndBlanksFromTheCompositeKey) {
    EXPECT_EQ(stripped("Quillmark Sec", "Carryfold Key Vault"), QStringLiteral("sectioned"));
    EXPECT_EQ(stripped("Other", "Plain"), QStringLiteral("Just a text"));
}

TEST_F(LocalizedStringsTest, StrippingRemovesSlashNAndSlashRAsTwoCharactersEach) {
    EXPECT_EQ(stripped("Se/nc", "/rKey"), QStringLiteral("sectioned")); // deliberate: no line ends are meant
    EXPECT_EQ(stripped("Sec", "Key\n"), QStringLiteral("Key\n"));
}

TEST_F(LocalizedStringsTest, TheSingularIsStrippedBeforeThePluralWhoseRestStays) {
    bundle.strings[QStringLiteral("s_Key")] = QStringLiteral("the rest of the plural");
    EXPECT_EQ(stripped("Team Folders", "Key"), QStringLiteral("the rest of the plural")); // deliberate
}

TEST_F(LocalizedStringsTest, AnEmptyProductNameStripsNothing) {
    bundle.strings[QStringLiteral("BackupProduct")] = QStringLiteral("");
    EXPECT_EQ(stripped("Sec", "Key"), QStringLiteral("sectioned"));
}

TEST_F(LocalizedStringsTest, ManyThreadsMayLookTextsUpAtOnce) {
    strings();
    std::vector<std::thread> threads;
    std::atomic<int> right{0};
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < 500; ++i) {
                right += strings().localisedString(QStringLiteral("key %1 {#ProductName#}").arg(i)) ==
                                 QStringLiteral("key %1 Quillmark").arg(i)
                             ? 1
                             : 0;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(right, 4 * 500);
}

class SharedLocalizedStrings : public testing::Test {
protected:
    SharedLocalizedStrings() {
        const std::pair<const char *, const char *> texts[] = {
            {"Greeting", "%2$@ greets %1$@"}, {"Quick_Fox", "sectioned"}, {"Fox", "plain"}, {"100%", "100% sure"}};
        for (const auto &[key, text] : texts) {
            test::immortalPlatform().bundle.strings.insert(QString::fromLatin1(key), QString::fromLatin1(text));
        }
    }
    ~SharedLocalizedStrings() override { installPlatform(nullptr); }
};

TEST_F(SharedLocalizedStrings, AreMadeOnceEvenWhenManyThreadsAskFirst) {
    LocalizedStrings *seen[4] = {};
    std::vector<std::thread> threads;
    for (LocalizedStrings *&slot : seen) {
        threads.emplace_back([&slot] { slot = &LocalizedStrings::sharedManager(); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (const LocalizedStrings *instance : seen) {
        EXPECT_EQ(instance, &LocalizedStrings::sharedManager());
    }
}

TEST_F(SharedLocalizedStrings, AreBehindTheFreeFunctions) {
    EXPECT_EQ(QMLocalizedString(QStringLiteral("Fox")), QStringLiteral("plain"));
    EXPECT_EQ(QMLocalizedMonoString(QStringLiteral("Quick"), QStringLiteral("Fox")), QStringLiteral("sectioned"));
    EXPECT_EQ(QMLocalizedMonoString(QStringLiteral("Slow"), QStringLiteral("Fox")), QStringLiteral("plain"));
    EXPECT_EQ(QMLocalizedMonoStringStripProduct(QStringLiteral("Qu ick"), QStringLiteral("Fox")),
              QStringLiteral("sectioned"));
}

TEST_F(SharedLocalizedStrings, ATextIsAFormatForItsArguments) {
    EXPECT_EQ(QMLocalizedStringWithArguments(QStringLiteral("Greeting"), QStringLiteral("A"), QStringLiteral("B")),
              QStringLiteral("B greets A"));
    EXPECT_TRUE(QMLocalizedStringWithArguments(QString(), 1).isNull());
}

TEST_F(SharedLocalizedStrings, ATranslationThatDoesNotMatchItsArgumentsComesBackUnformatted) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(QMLocalizedStringWithArguments(QStringLiteral("100%")), QStringLiteral("100% sure"));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("100% sure"), std::string::npos);
}

} // namespace
} // namespace quillmark

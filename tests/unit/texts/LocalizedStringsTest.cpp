#include "texts/LocalizedStrings.h"
#include "fakes/FakePlatform.h"
#include "support/Threads.h"

#include <gmock/gmock.h>

namespace quillmark {
namespace {

class LocalizedStringsTest : public testing::Test {
protected:
    LocalizedStringsTest() {
        bundle.strings = {
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
    }
    LocalizedStrings &strings() {
        if (!m_strings) {
            m_strings.emplace(bundle);
        }
        return *m_strings;
    }
    std::string text(const char *key) { return strings().localisedString(key); }
    std::string stripped(const char *section, const char *key) {
        return strings().localisedStringStrippingBrandingSection(section, key);
    }

    test::FakeBundle bundle;

private:
    std::optional<LocalizedStrings> m_strings;
};

TEST_F(LocalizedStringsTest, AKeyHasTheTextOfTheTable) {
    EXPECT_EQ(text("ProductName"), "Quillmark");
    EXPECT_EQ(text("Plain"), "Just a text");
}

TEST_F(LocalizedStringsTest, TokensAreReplacedByTheProductNames) {
    EXPECT_EQ(text("Tokens"), "Quillmark/Carryfold/Vault");
    EXPECT_EQ(text("Teams"), "Team Folder and Team Folders");
    EXPECT_EQ(text("Twice"), "Quillmark Quillmark");
}

TEST_F(LocalizedStringsTest, TokensAreReplacedInTheOrderOfTheirTable) {
    bundle.strings["ProductName"] = "{#BackupProduct#}";
    bundle.strings["BackupProduct"] = "{#ProductName#}";
    // The first name brings in a token that a later step replaces; the second one's comes too late.
    EXPECT_EQ(text("Tokens"), "{#ProductName#}/Carryfold/{#ProductName#}");
}

TEST_F(LocalizedStringsTest, AnUnknownTokenStays) {
    bundle.strings["Odd"] = "{#productName#} {#Other#} {#ProductName#";
    EXPECT_EQ(text("Odd"), "{#productName#} {#Other#} {#ProductName#");
}

TEST_F(LocalizedStringsTest, AMissingKeyIsItsOwnTextWithTokensReplaced) {
    EXPECT_EQ(text("No such key"), "No such key");
    EXPECT_EQ(text("{#ProductName#} is gone"), "Quillmark is gone");
}

TEST_F(LocalizedStringsTest, AnEmptyKeyGivesAnEmptyText) { EXPECT_EQ(text(""), ""); }

TEST_F(LocalizedStringsTest, ATextStaysAsItWasAtItsFirstLookup) {
    EXPECT_EQ(text("Plain"), "Just a text");
    bundle.strings["Plain"] = "changed";
    EXPECT_EQ(text("Plain"), "Just a text");
    EXPECT_EQ(bundle.lookups["Plain"], 1);
}

TEST_F(LocalizedStringsTest, AMissingKeyIsRememberedToo) {
    text("No such key");
    bundle.strings["No such key"] = "found later";
    EXPECT_EQ(text("No such key"), "No such key");
}

TEST_F(LocalizedStringsTest, TheProductNamesAreReadOnce) {
    strings();
    bundle.strings["ProductName"] = "Renamed";
    EXPECT_EQ(text("Twice"), "Quillmark Quillmark");
    EXPECT_EQ(text("ProductName"), "Renamed"); // as a key it is a text like any other
}

TEST_F(LocalizedStringsTest, AProductNameThatIsMissingIsItsKey) {
    bundle.strings.erase("BackupProduct");
    EXPECT_EQ(text("Tokens"), "Quillmark/Carryfold/BackupProduct");
}

TEST_F(LocalizedStringsTest, ASectionsTextWinsOverThePlainKeys) {
    bundle.strings["Key"] = "plain";
    const auto of = [this](const char *section) { return strings().localisedStringForSection(section, "Key"); };
    EXPECT_EQ(of("Sec"), "sectioned");
    EXPECT_EQ(of("Other"), "plain");
}

TEST_F(LocalizedStringsTest, ASectionWhoseTextEqualsItsKeyCountsAsMissing) {
    bundle.strings["Key"] = "plain";
    bundle.strings["S_Key"] = "S_Key";
    EXPECT_EQ(strings().localisedStringForSection("S", "Key"), "plain");
}

TEST_F(LocalizedStringsTest, StrippingRemovesProductNamesAndBlanksFromTheCompositeKey) {
    EXPECT_EQ(stripped("Quillmark Sec", "Carryfold Key Vault"), "sectioned");
    EXPECT_EQ(stripped("Other", "Plain"), "Just a text");
}

TEST_F(LocalizedStringsTest, StrippingRemovesSlashNAndSlashRAsTwoCharactersEach) {
    EXPECT_EQ(stripped("Se/nc", "/rKey"), "sectioned"); // deliberate: no line ends are meant
    EXPECT_EQ(stripped("Sec", "Key\n"), "Key\n");
}

TEST_F(LocalizedStringsTest, TheSingularIsStrippedBeforeThePluralWhoseRestStays) {
    bundle.strings["s_Key"] = "the rest of the plural";
    EXPECT_EQ(stripped("Team Folders", "Key"), "the rest of the plural"); // deliberate
}

TEST_F(LocalizedStringsTest, AnEmptyProductNameStripsNothing) {
    bundle.strings["BackupProduct"] = "";
    EXPECT_EQ(stripped("Sec", "Key"), "sectioned");
}

TEST_F(LocalizedStringsTest, ManyThreadsMayLookTextsUpAtOnce) {
    strings();
    test::onThreads(4, [this](int /*thread*/) {
        for (int i = 0; i < 500; ++i) {
            const std::string key = "key " + std::to_string(i);
            EXPECT_EQ(strings().localisedString(key + " {#ProductName#}"), key + " Quillmark");
        }
    });
}

class SharedLocalizedStrings : public testing::Test {
protected:
    SharedLocalizedStrings() {
        test::immortalPlatform().bundle.strings = {
            {"Greeting", "%2$@ greets %1$@"}, {"Quick_Fox", "sectioned"}, {"Fox", "plain"}, {"100%", "100% sure"}};
    }
    ~SharedLocalizedStrings() override { installPlatform(nullptr); }
};

TEST_F(SharedLocalizedStrings, AreMadeOnceEvenWhenManyThreadsAskFirst) {
    EXPECT_THAT(test::answersToThreads([] { return &LocalizedStrings::sharedManager(); }),
                testing::Each(&LocalizedStrings::sharedManager()));
}

TEST_F(SharedLocalizedStrings, AreBehindTheFreeFunctions) {
    EXPECT_EQ(QMLocalizedString("Fox"), "plain");
    EXPECT_EQ(QMLocalizedMonoString("Quick", "Fox"), "sectioned");
    EXPECT_EQ(QMLocalizedMonoString("Slow", "Fox"), "plain");
    EXPECT_EQ(QMLocalizedMonoStringStripProduct("Qu ick", "Fox"), "sectioned");
}

TEST_F(SharedLocalizedStrings, ATextIsAFormatForItsArguments) {
    EXPECT_EQ(QMLocalizedStringWithArguments("Greeting", "A", "B"), "B greets A");
}

TEST_F(SharedLocalizedStrings, ATranslationThatDoesNotMatchItsArgumentsComesBackUnformatted) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(QMLocalizedStringWithArguments("100%"), "100% sure");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("100% sure"), std::string::npos);
}

} // namespace
} // namespace quillmark

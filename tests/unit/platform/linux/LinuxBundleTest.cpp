#include "platform/linux/LinuxBundle.h"
#include "platform/propertylist/PropertyListFormats.h"
#include "support/TemporaryHome.h"
#include "support/ValuePrinter.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <utility>

namespace quillmark {
namespace {

class BundleTest : public testing::Test {
protected:
    BundleTest() {
        table("en", "Hello");
        table("de", "Hallo");
        table("pt_BR", "Oi");
    }
    void table(const std::string &language, const std::string &greeting) {
        home.write("Q.app/Contents/Resources/" + language + ".lproj/Localizable.strings",
                   *list.toXml(Dictionary{{"greet", greeting}}));
    }
    LinuxBundle bundle(const std::vector<std::string> &languages = {}) const { return {path, languages, list}; }
    std::string greeting(const std::vector<std::string> &languages) const {
        return bundle(languages).localizedString("greet");
    }

    test::TemporaryHome home;
    PropertyListFormats list;
    const std::string path = home.path("Q.app");
};

TEST_F(BundleTest, ResourcesLieInItsResourcesFolder) {
    home.write("Q.app/Contents/Resources/Config.plist", "x");
    home.write("Q.app/Contents/Resources/bare", "x");
    EXPECT_EQ(bundle().resourcePath(), path + "/Contents/Resources");
    EXPECT_EQ(bundle().pathForResource("Config", "plist"), path + "/Contents/Resources/Config.plist");
    EXPECT_EQ(bundle().pathForResource("bare", ""), path + "/Contents/Resources/bare");
    EXPECT_FALSE(bundle().pathForResource("Config", "txt"));
    EXPECT_FALSE(bundle().pathForResource("", "plist"));
}

TEST_F(BundleTest, ATrailingSlashIsNoPartOfThePath) { EXPECT_EQ(LinuxBundle(path + "//", {}, list).path(), path); }

TEST_F(BundleTest, AProgramOutsideABundleHasItsOwnFolderForResources) {
    EXPECT_EQ(LinuxBundle(home.path(), {}, list).resourcePath(), home.path());
}

TEST_F(BundleTest, TheInformationIsThatOfTheFirstLook) {
    const std::string file = home.write("Q.app/Contents/Info.plist", *list.toXml(Dictionary{{"CFBundleVersion", "1"}}));
    const LinuxBundle subject(path, {}, list);
    EXPECT_EQ(subject.infoDictionary().size(), 1U);
    ASSERT_TRUE(std::filesystem::remove(file));
    EXPECT_EQ(subject.infoDictionary().size(), 1U);
    EXPECT_TRUE(bundle().infoDictionary().empty());
}

TEST_F(BundleTest, TextsAreInTheFirstLanguageThatThereIs) {
    EXPECT_EQ(greeting({"de", "en"}), "Hallo");
    EXPECT_EQ(greeting({"it", "pt_BR"}), "Oi");
    EXPECT_EQ(greeting({"en", "de"}), "Hello");
}

TEST_F(BundleTest, EnglishIsTheLastResort) {
    EXPECT_EQ(greeting({}), "Hello");
    EXPECT_EQ(greeting({"it"}), "Hello");
}

TEST_F(BundleTest, ADamagedTableGivesWayToTheNextLanguage) {
    home.write("Q.app/Contents/Resources/de.lproj/Localizable.strings", "<plist>");
    EXPECT_EQ(greeting({"de"}), "Hello");
}

TEST_F(BundleTest, AMissingKeyIsItsOwnText) {
    EXPECT_EQ(bundle().localizedString("other"), "other");
    EXPECT_EQ(LinuxBundle(home.path("none.app"), {}, list).localizedString("greet"), "greet");
}

TEST_F(BundleTest, ATextThatIsNoTextIsItsKey) {
    home.write("Q.app/Contents/Resources/en.lproj/Localizable.strings", *list.toXml(Dictionary{{"greet", 5}}));
    EXPECT_EQ(greeting({}), "greet");
}

class PreferredLanguages : public testing::Test {
protected:
    using Languages = std::vector<std::string>;

    static Languages of(std::initializer_list<std::pair<const char *, const char *>> environment) {
        for (const char *name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            ::unsetenv(name);
        }
        for (const auto &[name, value] : environment) {
            ::setenv(name, value, 1);
        }
        return LinuxBundle::preferredLanguages();
    }
    ~PreferredLanguages() override { of({}); }
};

TEST_F(PreferredLanguages, AreTheRegionsFirstThenTheLanguageItself) {
    EXPECT_EQ(of({{"LANG", "de_AT.UTF-8@euro"}}), (Languages{"de_AT", "de"}));
    EXPECT_EQ(of({{"LANG", "ja"}}), (Languages{"ja"}));
}

TEST_F(PreferredLanguages, AreThoseOfTheStrongestVariable) {
    EXPECT_EQ(of({{"LANG", "de"}, {"LC_MESSAGES", "fr"}}), (Languages{"fr"}));
    EXPECT_EQ(of({{"LANG", "de"}, {"LC_MESSAGES", "fr"}, {"LC_ALL", "es"}}), (Languages{"es"}));
    EXPECT_EQ(of({{"LANG", "de"}, {"LC_ALL", ""}}), (Languages{"de"}));
    EXPECT_EQ(of({{"LANGUAGE", "fr_CH:es"}, {"LANG", "de_DE"}}), (Languages{"fr_CH", "fr", "es", "de_DE", "de"}));
}

TEST_F(PreferredLanguages, AreNoneInThePlainLocale) {
    EXPECT_EQ(of({}), Languages());
    EXPECT_EQ(of({{"LANG", "C.UTF-8"}, {"LANGUAGE", "de"}}), Languages());
    EXPECT_EQ(of({{"LC_ALL", "POSIX"}, {"LANG", "de"}}), Languages());
}

TEST_F(PreferredLanguages, NeverLeadOutOfTheResourcesFolder) {
    EXPECT_EQ(of({{"LANGUAGE", "../../evil:es"}, {"LANG", "de"}}), (Languages{"es", "de"}));
}

TEST(RunningBundle, OfAProgramOutsideABundleIsItsFolder) {
    EXPECT_TRUE(LinuxBundle::pathOfRunningBundle().ends_with("/tests/unit"));
}

} // namespace
} // namespace quillmark

#include "utils/ProductVersion.h"
#include "fakes/FakePlatform.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

class Version : public testing::Test {
protected:
    std::string version(bool withBuild) { return versionOfBundleAsString(platform.bundle, 1303, withBuild); }
    void tell(const char *key, const Value &value) { platform.bundle.information.insert_or_assign(key, value); }

    test::FakePlatform platform;
};

TEST_F(Version, ABundlesVersionIsItsShortVersionWithItsBuildInParentheses) {
    tell("CFBundleShortVersionString", "2.0.1");
    tell("CFBundleVersion", "77");
    EXPECT_EQ(version(false), "2.0.1");
    EXPECT_EQ(version(true), "2.0.1 (77)");
}

TEST_F(Version, ABundleWithoutADictionaryHasTheFallbackAndTheDefaultBuild) {
    EXPECT_EQ(version(false), "1.14.4");
    EXPECT_EQ(version(true), "1.14.4 (1303)");
}

TEST_F(Version, EachMissingKeyHasItsOwnFallback) {
    tell("CFBundleVersion", 9);
    EXPECT_EQ(version(true), "1.14.4 (9)");
    platform.bundle.information.clear();
    tell("CFBundleShortVersionString", "3.1");
    EXPECT_EQ(version(true), "3.1 (1303)");
}

TEST_F(Version, ABuildThatIsNoNumberIsZero) {
    tell("CFBundleVersion", "beta");
    EXPECT_EQ(version(true), "1.14.4 (0)");
}

TEST_F(Version, TheRunningApplicationsVersionIsThatOfTheFirstCall) {
    tell("CFBundleShortVersionString", "1.14.5");
    const std::string plain = versionOfThisAppAsString(false); // fills both
    tell("CFBundleShortVersionString", "6.0");
    EXPECT_EQ(versionOfThisAppAsString(true), plain + " (1303)");
    EXPECT_EQ(versionOfThisAppAsString(false), plain);
}

TEST_F(Version, TheProgramCarriesItsBuildNumberAndItsWhatString) {
    EXPECT_EQ(Quillmark_ClientVersionNumber, 1303.0);
    EXPECT_STREQ(Quillmark_ClientVersionString, "@(#)PROGRAM:Quillmark Client  PROJECT:QuillmarkLauncher-1303");
}

} // namespace
} // namespace quillmark

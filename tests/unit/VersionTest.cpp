#include "utils/Version.h"
#include "fakes/FakePlatform.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

class Version : public testing::Test {
protected:
    QString version(bool withBuild) { return versionOfBundleAsString(platform.bundle, 1303, withBuild); }
    void tell(const char *key, const QVariant &value) {
        platform.bundle.information.insert(QString::fromLatin1(key), value);
    }

    test::FakePlatform platform;
};

TEST_F(Version, ABundlesVersionIsItsShortVersionWithItsBuildInParentheses) {
    tell("CFBundleShortVersionString", QStringLiteral("2.0.1"));
    tell("CFBundleVersion", QStringLiteral("77"));
    EXPECT_EQ(version(false), QStringLiteral("2.0.1"));
    EXPECT_EQ(version(true), QStringLiteral("2.0.1 (77)"));
}

TEST_F(Version, ABundleWithoutADictionaryHasTheFallbackAndTheDefaultBuild) {
    EXPECT_EQ(version(false), QStringLiteral("1.14.4"));
    EXPECT_EQ(version(true), QStringLiteral("1.14.4 (1303)"));
}

TEST_F(Version, EachMissingKeyHasItsOwnFallback) {
    tell("CFBundleVersion", 9);
    EXPECT_EQ(version(true), QStringLiteral("1.14.4 (9)"));
    platform.bundle.information.clear();
    tell("CFBundleShortVersionString", QStringLiteral("3.1"));
    EXPECT_EQ(version(true), QStringLiteral("3.1 (1303)"));
}

TEST_F(Version, ABuildThatIsNoNumberIsZero) {
    tell("CFBundleVersion", QStringLiteral("beta"));
    EXPECT_EQ(version(true), QStringLiteral("1.14.4 (0)"));
}

TEST_F(Version, TheRunningApplicationsVersionIsThatOfTheFirstCall) {
    tell("CFBundleShortVersionString", QStringLiteral("1.14.5"));
    const QString plain = versionOfThisAppAsString(false); // fills both
    tell("CFBundleShortVersionString", QStringLiteral("6.0"));
    EXPECT_EQ(versionOfThisAppAsString(true), plain + QStringLiteral(" (1303)"));
    EXPECT_EQ(versionOfThisAppAsString(false), plain);
}

TEST_F(Version, TheProgramCarriesItsBuildNumberAndItsWhatString) {
    EXPECT_EQ(Quillmark_ClientVersionNumber, 1303.0);
    EXPECT_STREQ(Quillmark_ClientVersionString, "@(#)PROGRAM:Quillmark Client  PROJECT:QuillmarkLauncher-1303");
}

} // namespace
} // namespace quillmark

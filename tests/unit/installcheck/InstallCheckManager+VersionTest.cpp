#include "support/InstallCheckFixture.h"
#include "utils/Exception.h"
#include "utils/ProductVersion.h"
#include "utils/ReplaceAll.h"

#include <gmock/gmock.h>

namespace quillmark {
namespace {

using test::Lines;

class InstallCheckVersion : public test::InstallCheckFixture {
protected:
    InstallCheckVersion() { setItems({}); }

    /// The application's own version, as the log tells it.
    const std::string own = versionOfThisAppAsString(true);

    bool toolNeedsUpdate(const std::string &output) {
        return manager().doesToolNeedUpdate(itemOf("QMTool", "x", installTool("tool", output)));
    }
    bool bundleNeedsUpdate(const Value &version) {
        return manager().doesBundleNeedUpdate(itemOf("FinderCM", "x", installBundle("A.plugin", version)));
    }
    static bool isSatisfied(const char *required, const ComponentVersion &installed) {
        return InstallCheckManager::checkFrameworkVersion(itemOf({{kVersion, required}}), installed);
    }
};

TEST_F(InstallCheckVersion, ThreeNumbersAreReadBetweenTwoDots) {
    const auto parsed = [](const char *text) { return InstallCheckManager::parseVersionString(text); };
    EXPECT_EQ(parsed("1.2.3"), (ComponentVersion{1, 2, 3}));
    EXPECT_EQ(parsed("1.x.3"), (ComponentVersion{1, 0, 3}));
    EXPECT_EQ(parsed(" 1.-2.+3b"), (ComponentVersion{1, -2, 3}));
    EXPECT_EQ(parsed(".."), (ComponentVersion{0, 0, 0}));
    for (const char *text : {"", "1", "1.2", "1.2.3.4", "1.2.3."}) {
        EXPECT_FALSE(parsed(text)) << text;
    }
}

TEST_F(InstallCheckVersion, TheRequiredVersionIsComparedByMajorThenMinorThenBugfix) {
    EXPECT_TRUE(isSatisfied("2.0.0", {2, 0, 0}));
    EXPECT_FALSE(isSatisfied("2.0.1", {2, 0, 0}));
    EXPECT_FALSE(isSatisfied("2.1.0", {2, 0, 9}));
    EXPECT_FALSE(isSatisfied("3.0.0", {2, 9, 9}));
    EXPECT_TRUE(isSatisfied("1.9.9", {2, 0, 0}));
    EXPECT_TRUE(isSatisfied("2.0.9", {2, 1, 0}));
    EXPECT_TRUE(isSatisfied("2.10.0", {2, 10, 1}));
    EXPECT_FALSE(isSatisfied("2.10.0", {2, 9, 1}));
}

TEST_F(InstallCheckVersion, ARequiredVersionThatCannotBeReadIsNeverSatisfied) {
    startLog();
    for (const char *text : {"", "2.0", "2.0.0.0", "new"}) {
        EXPECT_FALSE(isSatisfied(text, {9, 9, 9})) << text;
    }
    EXPECT_FALSE(InstallCheckManager::checkFrameworkVersion({}, {9, 9, 9}));
    EXPECT_EQ(log(),
              (Lines{"dtl Failed to parse version string \"\"", "dtl Failed to parse version string \"2.0\"",
                     "dtl Failed to parse version string \"2.0.0.0\"", "dtl Failed to parse version string \"new\"",
                     "dtl Failed to parse version string \"(null)\""}));
}

TEST_F(InstallCheckVersion, TheLogTellsHowTheRequiredVersionWasRead) {
    startLog();
    isSatisfied("2.x.1b", {2, 0, 0});
    isSatisfied("-2.0.1", {2, 0, 0});
    EXPECT_EQ(
        log(),
        (Lines{"dtl Found framework version string \"2.x.1b\" parsed as 2.0.1", "dtl Found framework out-of-date",
               "dtl Found framework version string \"-2.0.1\" parsed as -2.0.1", "dtl Found framework up-to-date"}));
}

TEST_F(InstallCheckVersion, AnInstalledBundleTellsItsShortVersion) {
    const auto version = [this](const Value &text) {
        return manager().getBundleVersion(itemOf("Bundle", "x", installBundle("A.fs", text)));
    };
    EXPECT_EQ(version("2.0.1"), (ComponentVersion{2, 0, 1}));
    EXPECT_FALSE(version("2.0"));
    EXPECT_FALSE(version(""));
    EXPECT_FALSE(version(Value()));
    EXPECT_FALSE(version(2.0));
    EXPECT_FALSE(manager().getBundleVersion(itemOf("Bundle", "x", home.path("none"))));
    EXPECT_FALSE(manager().getBundleVersion({}));
}

TEST_F(InstallCheckVersion, AnInstalledFrameworkTellsThatOfItsCurrentVersion) {
    const RequiredItem item = itemOf("Framework", "x", home.path("A.framework"));
    EXPECT_FALSE(manager().getFrameworkVersion(item));
    writeList("A.framework/Versions/Current/Resources/Info.plist",
              Dictionary{{"CFBundleShortVersionString", "2.10.9"}});
    EXPECT_EQ(manager().getFrameworkVersion(item), (ComponentVersion{2, 10, 9}));
    EXPECT_FALSE(manager().getFrameworkVersion({}));
}

TEST_F(InstallCheckVersion, FourNumbersAreReadFromAVersionWithItsBuild) {
    EXPECT_EQ(InstallCheckManager::getVersionFromString("1.14.4 (1303)"), (MicrosoftStyleVersion{1, 14, 4, 1303}));
    EXPECT_EQ(InstallCheckManager::getVersionFromString("version 5"), (MicrosoftStyleVersion{5, 0, 0, 0}));
    EXPECT_EQ(InstallCheckManager::getMacClientVersionAsString(), own);
    EXPECT_EQ(InstallCheckManager::getMacClientVersion(), InstallCheckManager::getVersionFromString(own));
    EXPECT_EQ(InstallCheckManager::getMacClientVersion().minor, 14U);
}

TEST_F(InstallCheckVersion, AToolIsOldByItsMajorAndMinorNumberAlone) {
    for (const char *output : {"Limited 1.13.9.9", "Limited 0.15.0.0", "Limited 1", "Limited 1.2.3.4.5", "", "Limited ",
                               "garbage", "Limited 9.9.9.9 Limited 1.0.0.0", "\xff 9.9.9.9", "9.0.0.0\xc3",
                               "Limited 1.14 (0)",            // three parts are none
                               "Limited 4294967295.0.0.0"}) { // above what a signed number holds
        EXPECT_TRUE(toolNeedsUpdate(output)) << output;
    }
    for (const char *output : {"Limited 1.14.0.0", "Limited 1.14.4 (1)", "Limited 2", "Limited version 1.14.0.0",
                               "1.14.0.0", "Limited 1.14.0.0\nLimitless 0.0.0.0", "Limited 1.15.0.0",
                               "Limited 2.0.0.0"}) { // a newer one is never touched
        EXPECT_FALSE(toolNeedsUpdate(output)) << output;
    }
}

TEST_F(InstallCheckVersion, TheLogTellsWhichToolNeedsToUpdateFromWhatToWhat) {
    startLog();
    toolNeedsUpdate("Tool (C) Someone Limited 1.13.0 (9)\nUsage: none\n");
    toolNeedsUpdate("Tool (C) Someone Limited 1.14.0 (9)\nUsage: none\n");
    EXPECT_EQ(log(), (Lines{"vrb \"~/tool\" needs to update from 1.13.0 (9)\\nUsage: none\\n to " + own,
                            "vrb \"~/tool\" does not need to update from 1.14.0 (9)\\nUsage: none\\n"}));
}

TEST_F(InstallCheckVersion, TheLogTellsAVersionThatCannotBeRead) {
    startLog();
    toolNeedsUpdate("");
    toolNeedsUpdate("some words here");
    toolNeedsUpdate("\xff");
    const std::string to = " to " + own;
    EXPECT_EQ(log(), (Lines{"vrb \"~/tool\" needs to update from " + to,
                            "ERR Failed to extract version from string \"some words here\"",
                            "vrb \"~/tool\" needs to update from some words here" + to,
                            "vrb \"~/tool\" needs to update from (null)" + to}));
}

TEST_F(InstallCheckVersion, AToolThatCannotBeStartedRaisesTheLaunchException) {
    platform.tasks.canStart = false;
    EXPECT_THAT([this] { toolNeedsUpdate("Limited 1.14.0.0"); },
                testing::ThrowsMessage<Exception>("NSInvalidArgumentException (launch path not accessible)"));
}

TEST_F(InstallCheckVersion, AnInstalledBundleIsOldByItsMajorAndMinorNumberAlone) {
    for (const char *version : {"1.13.9", "0.99.0", "-1.14.0", "x.y.z"}) {
        EXPECT_TRUE(bundleNeedsUpdate(version)) << version;
    }
    for (const char *version : {"1.14.0", "1.15.0", "2.0.0", "1.14.x"}) {
        EXPECT_FALSE(bundleNeedsUpdate(version)) << version;
    }
}

TEST_F(InstallCheckVersion, AnInstalledBundleWithoutAVersionNeedsAnUpdateWithoutAWord) {
    startLog();
    for (const Value &version : {Value(), Value(""), Value("2.0"), Value("2.0.0.0"), Value(2.0)}) {
        EXPECT_TRUE(bundleNeedsUpdate(version));
    }
    EXPECT_TRUE(manager().doesBundleNeedUpdate(itemOf("FinderCM", "x", home.path("none"))));
    EXPECT_TRUE(manager().doesBundleNeedUpdate({}));
    EXPECT_TRUE(log().empty());
}

TEST_F(InstallCheckVersion, TheLogTellsWhichBundleNeedsToUpdateFromWhatToWhat) {
    startLog();
    bundleNeedsUpdate("1.13.9");
    bundleNeedsUpdate("1.14.0");
    EXPECT_EQ(log(), (Lines{"vrb \"~/A.plugin\" needs to update from 1.13.9 to " + own,
                            "vrb \"~/A.plugin\" does not need to update from 1.14.0"}));
}

TEST_F(InstallCheckVersion, TheSystemsVersionIsWrittenUpToTheFirstNumberThatCannotBeRead) {
    std::int32_t major = -1;
    std::int32_t minor = -2;
    std::int32_t bugfix = -3;
    EXPECT_TRUE(manager().getMacOSXVersion(major, minor, bugfix));
    EXPECT_EQ((std::array{major, minor, bugfix}), (std::array{10, 6, 8}));

    platform.systemInfo.version = {12, 3, std::nullopt};
    EXPECT_FALSE(manager().getMacOSXVersion(major, minor, bugfix));
    EXPECT_EQ((std::array{major, minor, bugfix}), (std::array{12, 3, 8}));
    platform.systemInfo.version = {13, std::nullopt, std::nullopt};
    EXPECT_FALSE(manager().getMacOSXVersion(major, minor, bugfix));
    EXPECT_EQ((std::array{major, minor, bugfix}), (std::array{13, 3, 8}));
    platform.systemInfo.version = {};
    EXPECT_FALSE(manager().getMacOSXVersion(major, minor, bugfix));
    EXPECT_EQ((std::array{major, minor, bugfix}), (std::array{13, 3, 8}));
}

/// Whether an item with a limit is required, by system.
struct SystemRow {
    SystemVersion system;
    const char *name;
    /// One letter, y or n, for each limit: absent, "10.4", "10.5", "10.6", and every other text.
    const char *lowest;
    const char *highest;
};

// Deliberate, all of it: the two kinds of limit are not each other's mirror, and no system meets a lowest one of 10.4.
constexpr SystemRow kSystems[] = {
    {{10, 3, 9}, "10.3", "ynnnn", "ynyyn"},    {{10, 4, 11}, "10.4", "ynnnn", "yyyyn"},
    {{10, 5, 8}, "10.5", "ynynn", "ynyyn"},    {{10, 6, 8}, "10.6", "ynynn", "ynnyn"},
    {{10, 7, 0}, "10.7", "ynynn", "ynnnn"},    {{10, 15, 7}, "10.15", "ynynn", "ynnnn"},
    {{11, 0, 1}, "11", "ynnyn", "ynnnn"},      {{11, 4, 0}, "11.4", "ynnyn", "ynnnn"},
    {{12, 5, 0}, "12.5", "ynnyn", "ynnnn"},    {{26, 0, 0}, "26", "ynnyn", "ynnnn"},
    {{9, 4, 0}, "9.4", "ynnnn", "ynnnn"},      {{}, "unreadable", "yyyyy", "yyyyy"},
    {{10, 5, {}}, "10.5.?", "yyyyy", "yyyyy"}, {{10, {}, {}}, "10.?", "yyyyy", "yyyyy"},
};

class SystemLimits : public test::InstallCheckFixture, public testing::WithParamInterface<SystemRow> {
protected:
    struct Limit {
        std::optional<std::string> text;
        size_t column;
    };
    static std::vector<Limit> limits() {
        std::vector<Limit> list = {{std::nullopt, 0}, {"10.4", 1}, {"10.5", 2}, {"10.6", 3}};
        for (const char *other : {"", "10.3", "10.7", "10.40", "10.5 ", " 10.5", "10.5.0", "10", "11", "26", "any"}) {
            list.push_back({other, 4});
        }
        return list;
    }
    static RequiredItem itemWith(Key key, const std::optional<std::string> &limit) {
        return limit ? itemOf({{key, *limit}}) : RequiredItem();
    }
};

TEST_P(SystemLimits, DecideWhichItemsAreRequired) {
    platform.systemInfo.version = GetParam().system;
    for (const auto &[limit, column] : limits()) {
        EXPECT_EQ(manager().checkMinMacOSXVersion(itemWith(kMinMacOSXVersion, limit)), GetParam().lowest[column] == 'y')
            << "lowest " << limit.value_or("absent");
        EXPECT_EQ(manager().checkMaxMacOSXVersion(itemWith(kMaxMacOSXVersion, limit)),
                  GetParam().highest[column] == 'y')
            << "highest " << limit.value_or("absent");
    }
}

INSTANTIATE_TEST_SUITE_P(OfSystems, SystemLimits, testing::ValuesIn(kSystems), [](const auto &suite) {
    std::string name = suite.param.name;
    replaceAll(name, ".", "_");
    replaceAll(name, "?", "unreadable");
    return name;
});

TEST_F(InstallCheckVersion, TheFixesForIntelAreRequiredOn105WithAnIntelProcessorAlone) {
    struct {
        SystemVersion system;
        std::optional<bool> isIntel;
        bool areRequired = false;
    } const rows[] = {
        {{10, 5, 0}, true, true},   {{10, 5, 8}, true, true},
        {{10, 5, 8}, false, false}, {{10, 5, 8}, std::nullopt, false},
        {{10, 4, 11}, true, false}, {{10, 6, 0}, true, false},
        {{11, 5, 0}, true, false},  {{10, 5, std::nullopt}, true, false},
        {{}, true, false},
    };
    for (const auto &[system, isIntel, areRequired] : rows) {
        platform.systemInfo.version = system;
        platform.systemInfo.intel = isIntel;
        EXPECT_EQ(manager().areIntel_10_5FixesRequired(), areRequired) << system.minor.value_or(-1);
    }
}

} // namespace
} // namespace quillmark

#include "platform/files/Path.h"
#include "support/InstallCheckFixture.h"
#include "support/Threads.h"
#include "texts/LocalizedStrings.h"

#include <cstdlib>
#include <gmock/gmock.h>

namespace quillmark {
namespace {

using test::Lines;
using test::together;

class StatusEvaluation : public test::InstallCheckFixture {
protected:
    struct Counts {
        std::int32_t repairs;
        std::int32_t missing;
        bool helper;

        bool operator==(const Counts &) const = default;
        friend void PrintTo(const Counts &counts, std::ostream *stream) {
            *stream << counts.repairs << " repairs, " << counts.missing << " missing, helper " << counts.helper;
        }
    };
    Counts counts() {
        return {manager().numberRepairsRequired(), manager().numberItemsMissing(), manager().isHelperRepairRequired()};
    }
    static constexpr Counts kNone{0, 0, false};
    static constexpr Counts kHelperFault{1, 1, true};
    static constexpr Counts kBundleFault{0, 1, false};

    void expect(const RequiredItem &item, const char *status, const Counts &expected) {
        EXPECT_EQ(statusOf(item), status);
        EXPECT_EQ(counts(), expected);
        EXPECT_EQ(manager().checkForRequiredItems(), expected == kNone);
    }
    bool isFileSystemAtFault(const List &items) {
        statusesOf(items);
        return manager().isMacFuseRepairRequired();
    }
    std::string none() const { return home.path("none"); }

    // Items at fault or in order, whatever comes before or behind them.

    RequiredItem missing(const char *type, const char *name = "x") const { return itemOf(type, name, none()); }
    RequiredItem missing(const char *type, Keys more) const { return itemOf(type, "x", none(), more); }
    RequiredItem bundle(const char *installed, const char *required) {
        return itemOf("Bundle", "x", installBundle("A.fs", installed), {{kVersion, required}});
    }
    RequiredItem tool(const char *type, const std::string &version, const std::string &path = kAdministratorsTool) {
        platform.tasks.outputs[path] = "Quillmark Limited " + version;
        return itemOf(type, lastPathComponent(path).c_str(), path);
    }
    RequiredItem plugIn(const char *type, const Value &version, Keys more = {}) {
        return itemOf(type, "x", installBundle("A.plugin", version), more);
    }
    RequiredItem coreApp(mode_t mode) {
        setMode(home.makeFolder("Quillmark.app/Contents/Resources/QuillmarkCore.app"), mode);
        return itemOf({{kInstallType, "CoreApp"}, {kName, "QuillmarkCore"}, {kResource, "QuillmarkCore.app"}});
    }
};

TEST_F(StatusEvaluation, ACoreApplicationWithMode0755IsInOrderWhoeverOwnsIt) {
    expect(coreApp(0755), "OK", kNone);
    const std::string resource = installTool("Quillmark.app/Contents/Resources/core", "");
    expect(itemOf({{kInstallType, "CoreApp"}, {kResource, "core"}}), "OK", kNone);
    EXPECT_TRUE(manager().verifyCoreAppPermissions(itemOf({{kResource, "core"}}))) << resource;
}

TEST_F(StatusEvaluation, ACoreApplicationWithAnyOtherModeHasWrongPermissions) {
    for (const mode_t mode : {0775U, 0754U, 0700U, 0555U, 04755U, 02755U, 01755U, 0777U}) {
        expect(coreApp(mode), "Wrong Permissions", kHelperFault);
    }
    setMode(home.path("Quillmark.app/Contents/Resources/QuillmarkCore.app"), 0755);
}

TEST_F(StatusEvaluation, AMissingCoreApplicationHasWrongPermissions) {
    expect(itemOf({{kInstallType, "CoreApp"}, {kResource, "none.app"}}), "Wrong Permissions", kHelperFault);
}

TEST_F(StatusEvaluation, AFrameworkIsInOrderWhateverIsThere) { // deliberate: there is no rule for frameworks
    expect(missing("Framework"), "OK", kNone);
    expect(missing("Framework", "Mono"), "OK", kNone);
    expect(itemOf("Framework", "Mono", installBundle("A", "0.0.1"), {{kVersion, "9.0.0"}}), "OK", kNone);
}

TEST_F(StatusEvaluation, ABundleIsMissingOrInvalidOrOldOrInOrder) {
    expect(missing("Bundle"), "Missing", kBundleFault);
    expect(itemOf("Bundle", "x", home.makeFolder("Empty.fs"), {{kVersion, "1.0.0"}}), "Invalid", kBundleFault);
    expect(bundle("2.0", "1.0.0"), "Invalid", kBundleFault);
    expect(bundle("2.0.0", "2.0.1"), "Old Version", kBundleFault);
    expect(bundle("2.0.0", "2.0.0"), "OK", kNone);
    expect(bundle("2.0.1", "2.0.0"), "OK", kNone);
}

TEST_F(StatusEvaluation, ABundleWhoseRequiredVersionCannotBeReadIsOld) {
    expect(bundle("2.0.0", "2.0"), "Old Version", kBundleFault);
    expect(itemOf("Bundle", "x", installBundle("A.fs", "2.0.0")), "Old Version", kBundleFault);
}

TEST_F(StatusEvaluation, AToolIsMissingOrOldOrInOrder) {
    expect(missing("QMTool"), "Missing", kHelperFault);
    expect(tool("QMTool", "1.13.9.9"), "Old Version", kHelperFault);
    expect(tool("QMTool", "1.14.0.0"), "OK", kNone);
}

TEST_F(StatusEvaluation, AToolWithAnotherModeOrOwnerHasWrongPermissions) {
    expect(tool("QMTool", "1.14.0.0", kSetUserIdTool), "Wrong Permissions", kHelperFault);
    expect(tool("QMTool", "1.14.0.0", installTool("tool", "")), "Wrong Permissions", kHelperFault);
}

TEST_F(StatusEvaluation, AToolWithGroupWriteBitHasWrongPermissions) {
    expect(tool("QMTool", "1.14.0.0", installTool("tool", "", 0775)), "Wrong Permissions", kHelperFault);
}

TEST_F(StatusEvaluation, AnOldToolIsOldWhateverItsPermissionsAre) {
    expect(tool("QMTool", "1.0.0.0", kSetUserIdTool), "Old Version", kHelperFault);
    expect(tool("QMToolRoot", "1.0.0.0", kAdministratorsTool), "Old Version", kHelperFault);
}

TEST_F(StatusEvaluation, ARootToolIsMissingOrOldOrInOrder) {
    expect(missing("QMToolRoot"), "Missing", kHelperFault);
    expect(tool("QMToolRoot", "0.99.0.0", kSetUserIdTool), "Old Version", kHelperFault);
    expect(tool("QMToolRoot", "1.14.0.0", kSetUserIdTool), "OK", kNone);
}

TEST_F(StatusEvaluation, ARootToolWithoutTheSetUserIdBitHasWrongPermissions) {
    expect(tool("QMToolRoot", "1.14.0.0", kAdministratorsTool), "Wrong Permissions", kHelperFault);
}

TEST_F(StatusEvaluation, ARootToolsPermissionsAreThoseOfTheInstalledToolOfItsName) {
    RequiredItem item = tool("QMToolRoot", "1.14.0.0", kAdministratorsTool);
    item.insert_or_assign(kName, "passwd");
    expect(item, "OK", kNone);
    item.insert_or_assign(kName, "no such tool"); // deliberate: only the wrong permissions count here
    expect(item, "OK", kNone);
    EXPECT_EQ(updateTool.status(), UpdateToolManager::kToolMissing);
}

TEST_F(StatusEvaluation, ARootToolForALaterSystemIsNotRequired) {
    // Deliberate: no 10.x is late enough.
    expect(missing("QMToolRoot", {{kMinMacOSXVersion, "10.6"}}), "Not Required", kNone);
    expect(missing("QMToolRoot", {{kMinMacOSXVersion, "10.5"}}), "Missing", kHelperFault);
}

TEST_F(StatusEvaluation, AContextualMenuIsMissingOrOldOrInOrder) {
    expect(missing("FinderCM"), "Missing", kHelperFault);
    expect(plugIn("FinderCM", "1.13.9"), "Old Version", kHelperFault);
    expect(plugIn("FinderCM", Value()), "Old Version", kHelperFault);
    expect(plugIn("FinderCM", "1.14.0"), "OK", kNone);
    EXPECT_EQ(manager().restartIndex(), -1);
}

TEST_F(StatusEvaluation, AContextualMenuForAnEarlierSystemIsNotRequired) {
    expect(missing("FinderCM", {{kMaxMacOSXVersion, "10.5"}}), "Not Required", kNone);
    expect(missing("FinderCM", {{kMaxMacOSXVersion, "10.6"}}), "Missing", kHelperFault);
}

TEST_F(StatusEvaluation, AnOverlayIsMissingOrOldOrInOrder) {
    expect(missing("FinderOverlayInsert"), "Missing", kHelperFault);
    expect(plugIn("FinderOverlayInsert", "1.14.0"), "OK", kNone);
    EXPECT_EQ(manager().restartIndex(), -1);
    expect(plugIn("FinderOverlayInsert", "1.13.0"), "Old Version", kHelperFault);
    EXPECT_EQ(manager().restartIndex(), 0);
}

TEST_F(StatusEvaluation, AnOverlayForALaterSystemIsNotRequired) {
    expect(plugIn("FinderOverlayInsert", Value(), {{kMinMacOSXVersion, "10.6"}}), "Not Required", kNone);
}

TEST_F(StatusEvaluation, TheLimitOfTheOtherKindDoesNotMatter) {
    expect(missing("QMToolRoot", {{kMaxMacOSXVersion, "10.4"}}), "Missing", kHelperFault);
    expect(missing("FinderCM", {{kMinMacOSXVersion, "10.4"}}), "Missing", kHelperFault);
    expect(missing("QMTool", {{kMinMacOSXVersion, "10.4"}, {kMaxMacOSXVersion, "10.4"}}), "Missing", kHelperFault);
}

TEST_F(StatusEvaluation, WithEveryItemInOrderOrNotRequiredTheAnswerIsYes) {
    const RequiredItem notRequired = plugIn("FinderOverlayInsert", Value(), {{kMinMacOSXVersion, "10.4"}});
    EXPECT_EQ(statusesOf({coreApp(0755), tool("QMTool", "1.14.0.0"), bundle("2.0.0", "2.0.0"), notRequired}),
              (Lines{"OK", "OK", "OK", "Not Required"}));
    EXPECT_TRUE(manager().checkForRequiredItems());
}

TEST_F(StatusEvaluation, EveryFaultIsCountedAndNoneKeepsLaterItemsFromBeingExamined) {
    EXPECT_EQ(statusesOf({missing("QMTool"), missing("Bundle"), missing("QMToolRoot"), missing("Framework"),
                          coreApp(0700), missing("FinderCM"), missing("FinderOverlayInsert")}),
              (Lines{"Missing", "Missing", "Missing", "OK", "Wrong Permissions", "Missing", "Missing"}));
    EXPECT_EQ(counts(), (Counts{5, 6, true}));
}

TEST_F(StatusEvaluation, TheLastBundleAtFaultDecidesWhetherItIsTheFileSystem) { // deliberate: the last one wins
    EXPECT_TRUE(isFileSystemAtFault({missing("Bundle", "QuillmarkFS")}));
    EXPECT_FALSE(isFileSystemAtFault({missing("Bundle", "QuillmarkFS"), missing("Bundle", "Other")}));
    EXPECT_EQ(counts(), (Counts{0, 2, false}));
    EXPECT_FALSE(manager().checkForRequiredItems());
    EXPECT_TRUE(isFileSystemAtFault({missing("Bundle", "Other"), missing("Bundle", "QuillmarkFS")}));
    EXPECT_FALSE(isFileSystemAtFault({missing("Bundle", "quillmarkfs")}));
}

TEST_F(StatusEvaluation, ABundleInOrderLeavesTheFileSystemsFlagAlone) {
    EXPECT_TRUE(isFileSystemAtFault({missing("Bundle", "QuillmarkFS"), bundle("2.0.0", "2.0.0")}));
}

TEST_F(StatusEvaluation, ItemsOfOtherTypesLeaveTheFileSystemsFlagAlone) {
    EXPECT_TRUE(
        isFileSystemAtFault({missing("Bundle", "QuillmarkFS"), missing("QMTool", "x"), missing("FinderCM", "y")}));
    EXPECT_FALSE(isFileSystemAtFault({missing("QMTool", "QuillmarkFS"), missing("Framework", "QuillmarkFS")}));
}

TEST_F(StatusEvaluation, EveryEvaluationBeginsAnewButForTheRecordOfTheRestart) {
    const std::string path = installBundle("A.plugin", "1.0.0");
    const std::string fileSystem = home.path("Q.fs");
    setItems(
        {itemOf("Bundle", "QuillmarkFS", fileSystem, {{kVersion, "1.0.0"}}), itemOf("FinderOverlayInsert", "x", path)});
    manager().updateStatus();
    EXPECT_EQ(counts(), (Counts{1, 2, true}));
    EXPECT_TRUE(manager().isMacFuseRepairRequired());
    EXPECT_EQ(manager().restartIndex(), 1);

    manager().updateStatus();
    EXPECT_EQ(counts(), (Counts{1, 2, true}));
    EXPECT_EQ(manager().requiredItemsStatusList().size(), 2U);

    installBundle("A.plugin", "1.14.0");
    installBundle("Q.fs", "1.0.0");
    EXPECT_TRUE(manager().checkForRequiredItems());
    EXPECT_EQ(counts(), kNone);
    EXPECT_FALSE(manager().isMacFuseRepairRequired());
    EXPECT_EQ(manager().requiredItemsStatusKeys(), (Lines{"OK", "OK"}));
    EXPECT_EQ(manager().restartIndex(), 1); // deliberate: a record for the life of the process
}

TEST_F(StatusEvaluation, OnlyAnOverlayThatIsOldIsRecordedForTheRestart) {
    const std::string old = installBundle("Old.plugin", "1.0.0");
    statusesOf({missing("QMTool"), itemOf("FinderOverlayInsert", "a", old), itemOf("FinderOverlayInsert", "b", old),
                missing("FinderOverlayInsert"), itemOf("FinderCM", "c", old)});
    EXPECT_EQ(manager().restartIndex(), 2);
}

TEST_F(StatusEvaluation, TheStatusesAreLocalisedTextsAndTheirKeysStandBeside) {
    platform.bundle.strings["OK"] = "in Ordnung";
    platform.bundle.strings["Missing"] = "fehlt";
    startLog(kLogLevelVerbose);
    EXPECT_EQ(statusesOf({missing("Framework"), missing("QMTool")}), (Lines{"OK", "Missing"}));
    EXPECT_EQ(manager().requiredItemsStatusList(), (Lines{"in Ordnung", "fehlt"}));
    EXPECT_EQ(log(), (Lines{"vrb Install check: Framework \"x\" is \"in Ordnung\"",
                            "vrb Install check: QMTool \"x\" is \"fehlt\""}));
}

TEST_F(StatusEvaluation, AToolThatCannotBeStartedIsOldAndReported) {
    const std::string path = installTool("tool", "1.14.0.0");
    platform.tasks.unstartable.push_back(path);
    startLog(kLogLevelNormal);
    EXPECT_EQ(statusesOf({itemOf("QMTool", "a", path), itemOf("QMToolRoot", "b", path), missing("FinderCM")}),
              (Lines{"Old Version", "Old Version", "Missing"}));
    const char *line =
        "ERR \"~/tool\" can't be asked for its version (NSInvalidArgumentException (launch path not accessible))";
    EXPECT_EQ(log(), (Lines{line, line}));
    EXPECT_EQ(counts(), (Counts{3, 3, true}));
}

TEST_F(StatusEvaluation, EachToolIsAskedOnceAndOnlyWhenItIsThere) {
    statusesOf({missing("QMTool"), tool("QMTool", "1.14.0.0"), tool("QMToolRoot", "1.14.0.0", kSetUserIdTool)});
    EXPECT_EQ(platform.transcript.calls(), (Lines{"launch /usr/bin/env ", "launch /usr/bin/passwd "}));
}

TEST_F(StatusEvaluation, ALookAheadTellsOfMissingItemsAloneAndAsksNoTool) {
    const auto isAnythingMissing = [this](const RequiredItem &item) {
        setItems({item});
        return manager().isAnythingMissing();
    };
    const std::string tool = installTool("tool", "Limited 1.0.0.0", 0777);
    for (const char *type : {"Bundle", "QMTool", "QMToolRoot", "FinderCM", "FinderOverlayInsert"}) {
        EXPECT_TRUE(isAnythingMissing(itemOf(type, "a", none()))) << type;
        EXPECT_FALSE(isAnythingMissing(itemOf(type, "a", tool))) << type;
    }
    for (const char *type : {"CoreApp", "Framework", "Other"}) {
        EXPECT_FALSE(isAnythingMissing(itemOf(type, "a", none()))) << type;
    }
    const auto later = std::pair(kMinMacOSXVersion, "99.0");
    const auto earlier = std::pair(kMaxMacOSXVersion, "1.0");
    EXPECT_FALSE(isAnythingMissing(itemOf("QMToolRoot", "a", none(), {later})));
    EXPECT_FALSE(isAnythingMissing(itemOf("FinderOverlayInsert", "a", none(), {later})));
    EXPECT_FALSE(isAnythingMissing(itemOf("FinderCM", "a", none(), {earlier})));
    EXPECT_TRUE(platform.transcript.calls().empty());
}

TEST_F(StatusEvaluation, TheLogTellsEveryStepOfItemsInOrder) {
    const RequiredItem core = coreApp(0755);
    const RequiredItem file = bundle("2.0.0", "1.9.12");
    const RequiredItem menu = plugIn("FinderCM", "1.14.4");
    startLog();
    statusesOf({core, missing("Framework", "Mono"), file, tool("QMTool", "1.14.0.0\n"),
                tool("QMToolRoot", "2.0.0.0", kSetUserIdTool), menu});
    EXPECT_EQ(log(),
              together({{"dtl Updating status..."},
                        {"dtl Checking CoreApp \"QuillmarkCore\"...",
                         "dtl Examining \"~/Quillmark.app/Contents/Resources/QuillmarkCore.app\"",
                         "dtl Examining \"~/Quillmark.app/Contents/Resources/QuillmarkCore.app\"",
                         "vrb Install check: CoreApp \"QuillmarkCore\" is \"OK\""},
                        {"dtl Checking Framework \"Mono\"...", "dtl Examining installed \"~/none\"",
                         "vrb Install check: Framework \"Mono\" is \"OK\""},
                        {"dtl Checking Bundle \"x\"...", "dtl Examining installed \"~/A.fs\"",
                         "dtl Found framework version string \"1.9.12\" parsed as 1.9.12",
                         "dtl Found framework up-to-date", "vrb Install check: Bundle \"x\" is \"OK\""},
                        {"dtl Checking QMTool \"env\"...", "dtl Examining installed \"/usr/bin/env\"",
                         "vrb \"/usr/bin/env\" does not need to update from 1.14.0.0\\n",
                         "dtl Examining installed \"/usr/bin/env\"", "vrb Install check: QMTool \"env\" is \"OK\""},
                        {"dtl Checking QMToolRoot \"passwd\"...", "dtl Examining installed \"/usr/bin/passwd\"",
                         "vrb \"/usr/bin/passwd\" does not need to update from 2.0.0.0",
                         "vrb Install check: QMToolRoot \"passwd\" is \"OK\""},
                        {"dtl Checking FinderCM \"x\"...", "dtl Examining installed \"~/A.plugin\"",
                         "vrb \"~/A.plugin\" does not need to update from 1.14.4",
                         "vrb Install check: FinderCM \"x\" is \"OK\""},
                        {"dtl Updated status"}}));
}

TEST_F(StatusEvaluation, TheLogTellsEveryStepOfItemsAtFault) {
    const RequiredItem file = bundle("2.0.0", "2.0.1");
    const std::string empty = home.makeFolder("Empty.plugin");
    const auto later = itemOf("FinderOverlayInsert", "later", none(), {{kMinMacOSXVersion, "10.4"}});
    startLog();
    statusesOf({file, missing("QMTool", "y"), itemOf("FinderCM", "empty", empty), later});
    EXPECT_EQ(log(),
              (Lines{"dtl Updating status...", "dtl Checking Bundle \"x\"...", "dtl Examining installed \"~/A.fs\"",
                     "dtl Found framework version string \"2.0.1\" parsed as 2.0.1", "dtl Found framework out-of-date",
                     "vrb Install check: Bundle \"x\" is \"Old Version\"", "dtl Checking QMTool \"y\"...",
                     "dtl Examining installed \"~/none\"", "vrb Install check: QMTool \"y\" is \"Missing\"",
                     "dtl Checking FinderCM \"empty\"...", "dtl Examining installed \"~/Empty.plugin\"",
                     "vrb Install check: FinderCM \"empty\" is \"Old Version\"",
                     "dtl Checking FinderOverlayInsert \"later\"...", "dtl Examining installed \"~/none\"",
                     "vrb Install check: FinderOverlayInsert \"later\" is \"Not Required\"", "dtl Updated status"}));
}

TEST_F(StatusEvaluation, TheAdministratorsToolsAreToldByOwnerAndMode) {
    const auto verified = [this](const std::string &path) {
        return manager().verifyQMToolPermissions(itemOf({{kInstallPath, path}}));
    };
    EXPECT_TRUE(verified(kAdministratorsTool));
    EXPECT_FALSE(verified(kSetUserIdTool));
    EXPECT_FALSE(verified(installTool("tool", "")));
    // Where this process is the administrator, its own files have the right owner, and it is the mode alone that
    // decides.
    const std::string own = home.write("own", "tool");
    setMode(own, 0755);
    EXPECT_EQ(verified(own), ::geteuid() == 0);
    for (const mode_t mode : {0775U, 0757U, 0754U, 01755U, 02755U, 04755U, 0555U}) {
        setMode(own, mode);
        EXPECT_FALSE(verified(own)) << std::oct << mode;
    }
    EXPECT_FALSE(verified(none()));
    EXPECT_FALSE(manager().verifyCoreAppPermissions(itemOf({{kResource, "none"}})));
}

TEST(InstallCheck, IsOneForTheProcess) {
    test::immortalPlatform();
    const auto managers = [] {
        return std::pair(&InstallCheckManager::sharedManager(), &UpdateToolManager::sharedManager());
    };
    const auto answers = test::answersToThreads(managers); // all of them ask for the first time
    EXPECT_THAT(answers, testing::Each(managers()));
    installPlatform(nullptr);
}

/// Uses managers when those that end with the process are gone already.
extern "C" void useManagers() {
    const std::string text = QMLocalizedString("a text that nobody has asked for yet");
    InstallCheckManager::sharedManager().updateStatus();
    ::_exit(text.empty() || UpdateToolManager::sharedManager().status() != UpdateToolManager::kNothingDone);
}

TEST(InstallCheckDeathTest, ItsManagersLiveAsLongAsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            test::immortalPlatform();
            std::atexit(useManagers); // called behind the destructors of all that is made from now on
            QMLocalizedString("ProductName");
            InstallCheckManager::sharedManager().updateStatus();
            std::exit(EXIT_FAILURE); // NOLINT(concurrency-mt-unsafe)
        },
        testing::ExitedWithCode(EXIT_SUCCESS), "");
}

} // namespace
} // namespace quillmark

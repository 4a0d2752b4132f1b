#include "support/InstallCheckFixture.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <grp.h>

namespace quillmark {
namespace {

using test::Lines;

class InstallCheckCatalogue : public test::InstallCheckFixture {
protected:
    static RequiredItem typed(const Value &type) { return itemOf({{kInstallType, type}}); }
    void expectNothingToDo() {
        EXPECT_TRUE(manager().checkForRequiredItems());
        EXPECT_TRUE(manager().requiredItemsList().empty());
        EXPECT_TRUE(manager().requiredItemsStatusList().empty());
        EXPECT_TRUE(manager().requiredItemsStatusKeys().empty());
        EXPECT_EQ(manager().numberItemsMissing(), 0);
        EXPECT_EQ(manager().numberRepairsRequired(), 0);
    }
    const Lines toldOnce{"ERR The catalogue of required items "
                         "(\"~/Quillmark.app/Contents/Resources/RequiredItems.plist\") can't be read: "
                         "no component is checked"};
};

TEST_F(InstallCheckCatalogue, NothingIsEvaluatedYetWhenItHasBeenRead) {
    setItems({typed("QMTool")});
    EXPECT_EQ(manager().requiredItemsList().size(), 1U);
    EXPECT_TRUE(manager().requiredItemsStatusList().empty());
    EXPECT_EQ(manager().restartIndex(), -1);
    EXPECT_FALSE(manager().isHelperRepairRequired());
    EXPECT_FALSE(manager().isMacFuseRepairRequired());
    EXPECT_TRUE(platform.transcript.calls().empty());
}

TEST_F(InstallCheckCatalogue, TheItemsStayInTheirOrder) {
    List items;
    for (const char *name : {"c", "a", "b"}) {
        items.push_back(itemOf({{kName, name}}));
    }
    setItems(items);
    EXPECT_EQ(manager().requiredItemsList(), items);
}

TEST_F(InstallCheckCatalogue, AnEmptyOneHasNothingToDoAndNothingToTell) {
    startLog();
    setItems({});
    expectNothingToDo();
    EXPECT_EQ(log(), (Lines{"dtl Updating status...", "dtl Updated status"}));
}

TEST_F(InstallCheckCatalogue, AMissingOneHasNothingToDoAndIsReported) {
    startLog(kLogLevelNormal);
    expectNothingToDo();
    EXPECT_EQ(log(), toldOnce);
}

TEST_F(InstallCheckCatalogue, AMalformedOneHasNothingToDoAndIsReported) {
    platform.bundle.resources.emplace_back("RequiredItems.plist");
    home.write("Quillmark.app/Contents/Resources/RequiredItems.plist", "<plist");
    startLog(kLogLevelNormal);
    expectNothingToDo();
    EXPECT_EQ(log(), toldOnce);
}

TEST_F(InstallCheckCatalogue, ARootThatIsNoDictionaryHasNothingToDoAndIsReported) {
    for (const Value &root : {Value(List{typed("QMTool")}), Value("RequiredItems"), Value(1), Value(true)}) {
        startLog(kLogLevelNormal);
        setCatalogue(root);
        expectNothingToDo();
        EXPECT_EQ(log().back(), toldOnce.front());
    }
}

TEST_F(InstallCheckCatalogue, ItemsThatAreNoListAreNoneAndAreReported) {
    startLog(kLogLevelNormal);
    const List others = {Value(), "QMTool", 7, 1.5, true, Bytes{"QMTool"}, Dictionary{{"0", typed("QMTool")}}};
    for (const Value &other : others) {
        setCatalogue(Dictionary{{"RequiredItems", other}});
        expectNothingToDo();
    }
    EXPECT_THAT(log(), testing::Contains(toldOnce.front()).Times(others.size()));
}

TEST_F(InstallCheckCatalogue, ItemsThatAreNoDictionariesAreInOrderAndKeepTheirPlaces) {
    startLog(kLogLevelVerbose);
    EXPECT_EQ(statusesOf({"QMTool", 7, List{1}, Bytes{"x"}, true, itemOf("QMTool", "last", home.path("none"))}),
              (Lines{"OK", "OK", "OK", "OK", "OK", "Missing"}));
    EXPECT_EQ(log().front(), "vrb Install check: (null) \"(null)\" is \"OK\"");
    EXPECT_EQ(manager().numberItemsMissing(), 1);
}

TEST_F(InstallCheckCatalogue, AnItemOfAnUnknownTypeIsInOrder) {
    for (const char *type : {"", "qmtool", "QMTool ", "Tool", "QMToolRootX", "(null)"}) {
        EXPECT_EQ(statusOf(itemOf(type, "x", home.path("none"))), "OK") << type;
        EXPECT_TRUE(manager().checkForRequiredItems());
    }
}

TEST_F(InstallCheckCatalogue, AnItemThatLacksEveryOtherKeyIsMissingUnlessItsTypeNeedsNoPath) {
    setMode(platform.bundle.resourcePath(), 0755);
    List items;
    for (const char *type :
         {"CoreApp", "Framework", "Bundle", "QMTool", "QMToolRoot", "FinderCM", "FinderOverlayInsert"}) {
        items.push_back(typed(type));
    }
    // The core application's path is the resource folder then.
    EXPECT_EQ(statusesOf(items), (Lines{"OK", "OK", "Missing", "Missing", "Missing", "Missing", "Missing"}));
    setMode(platform.bundle.resourcePath(), 0700);
    EXPECT_EQ(statusOf(typed("CoreApp")), "Wrong Permissions");
}

TEST_F(InstallCheckCatalogue, AValueThatIsNoTextCountsAsAbsent) {
    const List others = {7, 1.5, true, Bytes{"QMTool"}, List{"QMTool"}, Dictionary{{"QMTool", 1}}, Date()};
    for (const Value &other : others) {
        EXPECT_EQ(statusOf(typed(other)), "OK");
        EXPECT_EQ(statusOf(itemOf({{kInstallType, "QMTool"}, {kInstallPath, other}})), "Missing");
        EXPECT_EQ(manager().pathToRequiredItemInResources(itemOf({{kResource, other}})),
                  platform.bundle.resourcePath());
        EXPECT_TRUE(manager().checkMinMacOSXVersion(itemOf({{kMinMacOSXVersion, other}})));
        EXPECT_TRUE(manager().checkMaxMacOSXVersion(itemOf({{kMaxMacOSXVersion, other}})));
        EXPECT_FALSE(InstallCheckManager::checkFrameworkVersion(itemOf({{kVersion, other}}), {9, 9, 9}));
    }
}

TEST_F(InstallCheckCatalogue, KeysThatTheLauncherDoesNotReadMayBeThere) {
    const std::string path = installBundle("A.fs", "2.0.0");
    EXPECT_EQ(statusOf(itemOf("Bundle", "A", path,
                              {{kVersion, "2.0.0"},
                               {kImage, 1},
                               {kWebsiteURL, List()},
                               {kLicense, "free"},
                               {kDescription, Dictionary()}})),
              "OK");
}

TEST_F(InstallCheckCatalogue, TenThousandItemsHaveTenThousandStatuses) {
    constexpr int kItems = 10'000;
    List items;
    for (int i = 0; i < kItems; ++i) {
        items.push_back(itemOf(i % 2 == 0 ? "QMTool" : "Framework", "x", home.path(std::to_string(i))));
    }
    const Lines statuses = statusesOf(items);
    EXPECT_EQ(std::ssize(statuses), kItems);
    EXPECT_EQ(std::count(statuses.begin(), statuses.end(), "Missing"), kItems / 2);
    EXPECT_EQ(manager().numberRepairsRequired(), kItems / 2);
    EXPECT_EQ(std::ssize(manager().requiredItemsStatusList()), kItems);
}

TEST_F(InstallCheckCatalogue, AnItemsFilesLieInTheResourceFolder) {
    const RequiredItem item = itemOf({{kResource, "tool"}, {kInstaller, "Tool.pkg"}, {kSignature, "tool.sig"}});
    const std::string folder = platform.bundle.resourcePath();
    EXPECT_EQ(manager().pathToRequiredItemInResources(item), folder + "/tool");
    EXPECT_EQ(manager().pathToRequiredItemInstallerInResources(item), folder + "/Tool.pkg");
    EXPECT_EQ(manager().pathToRequiredItemSignatureInResources(item), folder + "/tool.sig");
    EXPECT_EQ(manager().pathToRequiredItemInResources({}), folder);
    EXPECT_EQ(manager().pathToRequiredItemInstallerInResources({}), folder);
    EXPECT_EQ(manager().pathToRequiredItemSignatureInResources({}), folder);
}

TEST_F(InstallCheckCatalogue, ADanglingLinkIsMissing) {
    const std::string link = home.link("link", home.path("gone"));
    for (const char *type : {"Bundle", "QMTool", "QMToolRoot", "FinderCM", "FinderOverlayInsert"}) {
        EXPECT_EQ(statusOf(itemOf(type, "x", link)), "Missing") << type;
    }
}

TEST_F(InstallCheckCatalogue, ALinkIsFollowedToABundle) {
    const std::string bundle = installBundle("A.fs", "1.14.0");
    const std::string link = home.link("link", bundle);
    EXPECT_EQ(statusOf(itemOf("Bundle", "A", link, {{kVersion, "1.14.0"}})), "OK");
    EXPECT_EQ(statusOf(itemOf("FinderCM", "A", link)), "OK");
}

TEST_F(InstallCheckCatalogue, ALinkToTheAdministratorsToolHasWrongPermissions) {
    const std::string link = home.link("link", kAdministratorsTool); // whoever owns the link decides what runs
    platform.tasks.outputs[link] = "1.14.0.0";
    EXPECT_EQ(statusOf(itemOf("QMTool", "x", link)), "Wrong Permissions");
}

TEST_F(InstallCheckCatalogue, AFileWhereABundleIsMeantIsOneWithoutAVersion) {
    const std::string file = home.write("file", "");
    EXPECT_EQ(statusOf(itemOf("Bundle", "x", file)), "Invalid");
    EXPECT_EQ(statusOf(itemOf("FinderCM", "x", file)), "Old Version");
}

using InstallCheckCatalogueDeathTest = InstallCheckCatalogue;

TEST_F(InstallCheckCatalogueDeathTest, WhatCannotBeReachedIsMissing) {
    const std::string folder = home.makeFolder("locked");
    const std::string tool = installTool("locked/tool", "1.14.0.0");
    const std::string bundle = installBundle("locked/A.fs", "1.14.0");
    setItems({itemOf("QMTool", "x", tool), itemOf("Bundle", "A", bundle)});
    manager(); // has the catalogue before the folder is closed
    setMode(folder, 0);
    const auto evaluateAsNobody = [this] {
        constexpr uid_t kNobody = 65534;
        const bool isNobody = ::geteuid() != 0 || (::setgroups(0, nullptr) == 0 && ::setuid(kNobody) == 0);
        manager().updateStatus();
        const bool isMissing = manager().requiredItemsStatusKeys() == Lines{"Missing", "Missing"};
        std::_Exit(isNobody && isMissing ? 0 : 1);
    };
    EXPECT_EXIT(evaluateAsNobody(), testing::ExitedWithCode(0), "");
    setMode(folder, 0700);
}

} // namespace
} // namespace quillmark

#include "support/InstallCheckFixture.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <random>

namespace quillmark {
namespace {

using test::Lines;
using test::together;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/// Repairs of catalogues whose items have the statuses that a test wants. The update tool succeeds until it is told
/// otherwise.
class InstallCheckRepair : public test::InstallCheckFixture {
protected:
    InstallCheckRepair() {
        platform.tasks.usualStatus = 0;
        platform.systemInfo.version = {10, 6, 8};
    }

    struct Wanted {
        const char *type = nullptr;
        const char *status = nullptr;
    };

    /// An item that the evaluation finds in that status, with a name of its own.
    RequiredItem itemWith(const Wanted &wanted, const std::string &name, bool hasInstaller = true) {
        const std::string type = wanted.type;
        const std::string status = wanted.status;
        RequiredItem item = itemOf({{kInstallType, type},
                                    {kName, name},
                                    {kResource, name + ".resource"},
                                    {kSignature, name + ".sig"},
                                    {kVersion, "1.14.4"}});
        if (hasInstaller) {
            item.insert_or_assign(kInstaller, name + ".pkg");
        }
        if (type == "CoreApp") {
            const std::string resource = home.write("Quillmark.app/Contents/Resources/" + name + ".resource", "core");
            setMode(resource, status == "OK" ? 0755 : 0700);
        } else if (status == "Not Required") {
            item.insert_or_assign(type == "FinderCM" ? kMaxMacOSXVersion : kMinMacOSXVersion,
                                  type == "FinderCM" ? "10.5" : "10.6");
        } else if (status != "Missing") {
            item.insert_or_assign(kInstallPath, pathWith(type, status, name));
        } else {
            item.insert_or_assign(kInstallPath, home.path("none/" + name));
        }
        return item;
    }

    std::string pathWith(const std::string &type, const std::string &status, const std::string &name) {
        if (!type.starts_with("QMTool")) {
            const Value version = status == "Invalid" ? Value() : Value(status == "OK" ? "1.14.4" : "1.13.0");
            return installBundle("bundles/" + name, version);
        }
        if (status == "OK") {
            const std::string path = type == "QMTool" ? kAdministratorsTool : kSetUserIdTool;
            platform.tasks.outputs[path] = "Limited 1.14.4.1303";
            return path;
        }
        return installTool("tools/" + name, status == "Old Version" ? "Limited 1.13.0.0" : "Limited 1.14.4.1303");
    }

    void evaluate(const List &items) {
        setItems(items);
        manager().updateStatus();
        platform.transcript.clear();
    }
    std::string resource(const std::string &file) const { return platform.bundle.resourcePath() + '/' + file; }
    static std::string tool(const std::string &arguments) { return "run /usr/bin/updateqm " + arguments; }

    /// What the reinstallation of the update tool asks for.
    Lines updateToolRequests(const std::string &name = "updateqm") const {
        return {"AuthorizationCreate", "AuthorizationCopyRights system.privilege.admin 13",
                "AuthorizationExecuteWithPrivileges " + resource(name + ".resource") + " repair " +
                    resource(name + ".sig"),
                "AuthorizationFree"};
    }

    const Lines &calls() const { return platform.transcript.calls(); }
    Lines requestsOf(const Wanted &wanted, bool hasInstaller = true) {
        const RequiredItem item = itemWith(wanted, "item", hasInstaller);
        evaluate({item});
        EXPECT_EQ(manager().requiredItemsStatusKeys(), Lines{wanted.status});
        m_isSuccess = manager().runRepairPass();
        return calls();
    }

    bool m_isSuccess = false;
};

TEST_F(InstallCheckRepair, TheUpdateToolIsInstalledFirstWhateverItsPlaceAndStatus) {
    const List items{itemWith({"QMTool", "Missing"}, "first"), itemWith({"QMToolRoot", "Not Required"}, "updateqm")};
    evaluate(items);
    EXPECT_TRUE(manager().runRepairPass());
    EXPECT_EQ(calls(), together({updateToolRequests(),
                                 {tool("repairother " + resource("first.resource") + ' ' + resource("first.sig"))}}));
}

TEST_F(InstallCheckRepair, EveryItemOfThatNameIsInstalledWhateverItsType) {
    const List items{itemWith({"QMTool", "Missing"}, "updateqm"), itemWith({"QMToolRoot", "Missing"}, "updateqm")};
    evaluate(items);
    EXPECT_TRUE(manager().runRepairPass());
    EXPECT_EQ(calls(), together({updateToolRequests(), updateToolRequests()}));
}

TEST_F(InstallCheckRepair, AFailureOfTheUpdateToolIsTheEnd) {
    evaluate({itemWith({"QMToolRoot", "Missing"}, "updateqm"), itemWith({"QMTool", "Missing"}, "other")});
    for (std::int32_t *status : {&platform.authorization.createStatus, &platform.authorization.rightsStatus,
                                 &platform.authorization.executeStatus}) {
        *status = kAuthorizationCanceled;
        platform.transcript.clear();
        EXPECT_FALSE(manager().runRepairPass());
        EXPECT_THAT(calls(), Not(Contains(HasSubstr("repairother"))));
        EXPECT_TRUE(platform.clock.sleeps().empty());
        *status = 0;
    }
}

TEST_F(InstallCheckRepair, PausesForTwoSecondsAfterTheUpdateToolAndAtTheEnd) {
    evaluate({});
    EXPECT_TRUE(manager().runRepairPass());
    EXPECT_EQ(platform.clock.sleeps(), std::vector<std::chrono::microseconds>(2, std::chrono::seconds(2)));
    EXPECT_TRUE(calls().empty());
}

TEST_F(InstallCheckRepair, TheSecondPauseDoesNotFollowAFailure) {
    evaluate({itemWith({"Bundle", "Invalid"}, "a")});
    EXPECT_FALSE(manager().runRepairPass());
    EXPECT_EQ(platform.clock.sleeps().size(), 1U);
}

TEST_F(InstallCheckRepair, AStatusHasItsRequestByTheKindOfTheItem) {
    const std::string payload = resource("item.resource");
    const std::string signature = resource("item.sig");
    const std::string package = resource("item.pkg");
    const struct {
        Wanted wanted;
        std::string request;
    } rows[] = {
        {{"CoreApp", "Wrong Permissions"}, tool("repaircore " + payload)},
        {{"QMTool", "Missing"}, tool("repairother " + payload + ' ' + signature)},
        {{"QMTool", "Old Version"}, tool("repairother " + payload + ' ' + signature)},
        {{"QMTool", "Wrong Permissions"}, tool("repairpermissionsother item")},
        {{"Bundle", "Missing"}, tool("repairpackage " + package)},
        {{"Bundle", "Old Version"}, tool("repairpackage " + package)},
    };
    for (const auto &[wanted, request] : rows) {
        EXPECT_EQ(requestsOf(wanted), Lines{request}) << wanted.type << ' ' << wanted.status;
        EXPECT_TRUE(m_isSuccess) << wanted.type << ' ' << wanted.status;
    }
    for (const char *type : {"CoreApp", "QMTool", "Bundle", "Framework", "FinderCM", "FinderOverlayInsert"}) {
        EXPECT_EQ(requestsOf({type, "OK"}), Lines()) << type;
        EXPECT_TRUE(m_isSuccess) << type;
    }
    for (const char *type : {"QMToolRoot", "FinderCM", "FinderOverlayInsert"}) {
        EXPECT_EQ(requestsOf({type, "Not Required"}), Lines()) << type;
        EXPECT_TRUE(m_isSuccess) << type;
    }
    EXPECT_EQ(requestsOf({"Bundle", "Invalid"}), Lines());
    EXPECT_FALSE(m_isSuccess); // deliberate
}

TEST_F(InstallCheckRepair, ArchivesAreInstalledAtTheirPlaces) {
    for (const char *type : {"FinderCM", "FinderOverlayInsert"}) {
        for (const char *status : {"Missing", "Old Version"}) {
            const Lines requests = requestsOf({type, status});
            const std::string place = textOf(manager().requiredItemsList()[0].dictionary(), kInstallPath).value();
            EXPECT_EQ(requests, Lines{tool("repairzipitem " + resource("item.resource") + ' ' + resource("item.sig") +
                                           ' ' + place)});
        }
    }
}

TEST_F(InstallCheckRepair, RootToolsAreInstalledAndTheFinderStartsAnew) {
    const Lines requests = requestsOf({"QMToolRoot", "Old Version"});
    ASSERT_FALSE(requests.empty());
    EXPECT_EQ(requests.front(), tool("repairotherroot " + resource("item.resource") + ' ' + resource("item.sig")));
    EXPECT_EQ(requests.back(), "launchApplication /System/Library/CoreServices/Finder.app");
}

TEST_F(InstallCheckRepair, WithoutAnInstallerBundlesAndFrameworksAreLeftAsTheyAre) {
    EXPECT_TRUE(requestsOf({"Bundle", "Missing"}, false).empty());
    EXPECT_TRUE(m_isSuccess);
    EXPECT_TRUE(requestsOf({"Bundle", "Invalid"}, false).empty());
    EXPECT_TRUE(m_isSuccess);
}

TEST_F(InstallCheckRepair, AnUnexpectedStatusMeansSuccessForSomeKindsAndFailureForOthers) {
    // Deliberate. The items are given by hand, since no evaluation finds them like this.
    evaluate({});
    const RequiredItem unknown = itemOf({{kName, "x"}});
    EXPECT_TRUE(manager().repairCoreApp(unknown));
    EXPECT_TRUE(manager().repairZIPArchiveItem(unknown));
    EXPECT_FALSE(manager().repairQMTool(unknown));
    EXPECT_FALSE(manager().repairQMToolRoot(unknown));
    EXPECT_FALSE(manager().repairFramework(unknown));
    EXPECT_FALSE(manager().repairBundle(unknown));
    EXPECT_TRUE(calls().empty());
}

TEST_F(InstallCheckRepair, TheFirstFailureLeavesTheLaterItemsAsTheyAre) {
    evaluate({itemWith({"QMTool", "Missing"}, "a"), itemWith({"QMTool", "Missing"}, "b"),
              itemWith({"QMTool", "Missing"}, "c")});
    platform.transcript.failAt("run", 2);
    EXPECT_FALSE(manager().runRepairPass());
    EXPECT_EQ(calls().size(), 2U);
}

TEST_F(InstallCheckRepair, TheItemWhoseRepairFailedIsNamedInTheLog) {
    evaluate({itemWith({"QMToolRoot", "Missing"}, "updateqm"), itemWith({"Bundle", "Invalid"}, "a")});
    startLog(kLogLevelError);
    EXPECT_FALSE(manager().runRepairPass());
    platform.authorization.createStatus = kAuthorizationDenied;
    EXPECT_FALSE(manager().runRepairPass());
    EXPECT_EQ(log(), (Lines{"ERR \"a\" could not be repaired", "ERR \"updateqm\" could not be repaired"}));
}

TEST_F(InstallCheckRepair, AnOldSystemOnIntelIsMendedAfterTheItemsAlsoWhenTheyNeedNothing) {
    platform.systemInfo.version = {10, 5, 8};
    evaluate({});
    EXPECT_TRUE(manager().runRepairPass());
    EXPECT_EQ(calls(), Lines{tool("repairintel10_5 " + resource("Fixes10_5.zip") + ' ' + resource("Fixes10_5.plist"))});
    platform.tasks.usualStatus = 1;
    EXPECT_FALSE(manager().runRepairPass());
    platform.systemInfo.intel = false;
    EXPECT_TRUE(manager().runRepairPass());
}

TEST_F(InstallCheckRepair, ItemsThatAreEqualHaveTheStatusOfTheFirst) {
    const RequiredItem item = itemWith({"QMTool", "Missing"}, "twin");
    evaluate({item, item});
    EXPECT_TRUE(manager().runRepairPass());
    EXPECT_EQ(calls().size(), 2U);
}

TEST_F(InstallCheckRepair, EachStepIsToldBeforeItIsTaken) {
    evaluate({itemWith({"QMTool", "Missing"}, "a"), itemWith({"QMToolRoot", "OK"}, "updateqm")});
    Lines steps;
    EXPECT_TRUE(manager().runRepairPass([&](const std::string &name, const std::string &step) {
        steps.push_back(name + ": " + step + " (" + std::to_string(calls().size()) + ')');
    }));
    EXPECT_EQ(steps, (Lines{"updateqm: installing the update tool (0)", "a: repairing what is \"Missing\" (4)"}));
}

/// The requests of one pass, written down step by step as the rules have them.
class Reference : public InstallCheckRepair {
protected:
    struct Entry {
        std::string type;
        std::string status;
        std::string name;
        bool hasInstaller;
        std::string installPath;
    };

    bool request(const std::string &arguments) {
        expected.push_back(tool(arguments));
        return ++runs != failingRun;
    }
    std::string file(const Entry &entry, const char *suffix) const { return resource(entry.name + suffix); }

    bool repair(const Entry &entry) {
        const bool isMissingOrOld = entry.status == "Missing" || entry.status == "Old Version";
        const std::string both = file(entry, ".resource") + ' ' + file(entry, ".sig");
        if (entry.type == "CoreApp") {
            return entry.status != "Wrong Permissions" || request("repaircore " + file(entry, ".resource"));
        }
        if (entry.type == "QMTool") {
            if (isMissingOrOld) {
                return request("repairother " + both);
            }
            return entry.status == "Wrong Permissions" && request("repairpermissionsother " + entry.name);
        }
        if (entry.type == "QMToolRoot") {
            if (isMissingOrOld) {
                if (!request("repairotherroot " + both)) {
                    return false;
                }
                expected.emplace_back("launchedApplications");
                expected.emplace_back("launchApplication /System/Library/CoreServices/Finder.app");
                return true;
            }
            return entry.status == "Wrong Permissions" && request("repairpermissionsotherroot " + entry.name);
        }
        if (entry.type == "Framework" || entry.type == "Bundle") {
            return isMissingOrOld && request("repairpackage " + file(entry, ".pkg"));
        }
        return !isMissingOrOld || request("repairzipitem " + both + ' ' + entry.installPath);
    }

    bool isTreated(const Entry &entry) const {
        if (entry.type == "Unknown") {
            return false;
        }
        if (entry.type == "CoreApp") {
            return entry.status != "OK";
        }
        if (entry.type == "QMTool") {
            return entry.name != "updateqm" && entry.status != "OK";
        }
        if (entry.status == "OK" || entry.status == "Not Required") {
            return false;
        }
        if (entry.type == "QMToolRoot") {
            return entry.name != "updateqm";
        }
        return (entry.type != "Framework" && entry.type != "Bundle") || entry.hasInstaller;
    }

    bool pass(const std::vector<Entry> &entries) {
        for (const Entry &entry : entries) {
            if (entry.name == "updateqm") {
                expected = together({expected, updateToolRequests()});
            }
        }
        return std::ranges::all_of(entries, [this](const Entry &entry) { return !isTreated(entry) || repair(entry); });
    }

    Lines expected;
    int runs = 0;
    int failingRun = 0;
};

TEST_F(Reference, GivesTheSameRequestsForManyCatalogues) {
    std::vector<Wanted> kinds;
    for (const auto &[type, statuses] : std::initializer_list<std::pair<const char *, std::vector<const char *>>>{
             {"CoreApp", {"OK", "Wrong Permissions"}},
             {"Framework", {"OK"}},
             {"Bundle", {"OK", "Missing", "Invalid", "Old Version"}},
             {"QMTool", {"OK", "Missing", "Old Version", "Wrong Permissions"}},
             {"QMToolRoot", {"Not Required", "Missing", "Old Version"}},
             {"FinderCM", {"Not Required", "Missing", "Old Version", "OK"}},
             {"FinderOverlayInsert", {"OK", "Missing", "Old Version"}},
             {"Unknown", {"OK"}}}) {
        for (const char *status : statuses) {
            kinds.push_back({type, status});
        }
    }
    std::mt19937 random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same catalogues every time
    const auto below = [&random](size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random); };
    for (int round = 0; round < 400; ++round) {
        std::vector<Entry> entries;
        List items;
        const size_t count = below(7);
        for (size_t index = 0; index < count; ++index) {
            const Wanted &wanted = kinds[below(kinds.size())];
            const std::string name =
                below(4) == 0 ? "updateqm" : 'r' + std::to_string(round) + 'i' + std::to_string(index);
            const bool hasInstaller = below(3) != 0;
            const RequiredItem item = itemWith(wanted, name, hasInstaller);
            items.push_back(item);
            entries.push_back({wanted.type, {}, name, hasInstaller, textOf(item, kInstallPath).value_or("")});
        }
        evaluate(items);
        for (size_t index = 0; index < count; ++index) { // tools of one name share their file
            entries[index].status = manager().requiredItemsStatusKeys()[index];
        }
        expected.clear();
        runs = 0;
        failingRun = static_cast<int>(below(6)); // 0 lets none fail
        platform.transcript.failAt("run", failingRun);
        const bool isExpectedToSucceed = pass(entries);
        EXPECT_EQ(manager().runRepairPass(), isExpectedToSucceed) << "round " << round;
        ASSERT_EQ(calls(), expected) << "round " << round;
    }
}

} // namespace
} // namespace quillmark

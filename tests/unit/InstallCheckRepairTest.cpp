#include "support/InstallCheckFixture.h"

#include <algorithm>
#include <random>

namespace quillmark {
namespace {

using test::listOf;

/// Repairs of catalogues whose items have the statuses that a test wants. The update tool succeeds until it is told
/// otherwise.
class InstallCheckRepair : public test::InstallCheckFixture {
protected:
    InstallCheckRepair() {
        platform.tasks.usualStatus = 0;
        platform.systemInfo.version = {10, 6, 8};
    }

    struct Wanted {
        const char *type;
        const char *status;
    };

    /// An item that the evaluation finds in that status, with a name of its own.
    RequiredItem itemWith(const Wanted &wanted, const QString &name, bool hasInstaller = true) {
        const QString type = QString::fromUtf8(wanted.type);
        const QString status = QString::fromUtf8(wanted.status);
        RequiredItem item = itemOf({{kInstallType, type},
                                    {kName, name},
                                    {kResource, name + QStringLiteral(".resource")},
                                    {kSignature, name + QStringLiteral(".sig")},
                                    {kVersion, QStringLiteral("1.14.4")}});
        if (hasInstaller) {
            item.insert(kInstaller, name + QStringLiteral(".pkg"));
        }
        if (type == u"CoreApp") {
            const QString resource = home.write(
                QStringLiteral("Quillmark.app/Contents/Resources/") + item.value(kResource).toString(), "core");
            setMode(resource, status == u"OK" ? 0755 : 0700);
        } else if (status == u"Not Required") {
            item.insert(type == u"FinderCM" ? kMaxMacOSXVersion : kMinMacOSXVersion,
                        type == u"FinderCM" ? QStringLiteral("10.5") : QStringLiteral("10.6"));
        } else if (status != u"Missing") {
            item.insert(kInstallPath, pathWith(type, status, name));
        } else {
            item.insert(kInstallPath, home.path(QStringLiteral("none/") + name));
        }
        return item;
    }

    QString pathWith(const QString &type, const QString &status, const QString &name) {
        if (!type.startsWith(u"QMTool")) {
            const QVariant version =
                status == u"Invalid" ? QVariant()
                                     : QVariant(status == u"OK" ? QStringLiteral("1.14.4") : QStringLiteral("1.13.0"));
            return installBundle(QStringLiteral("bundles/") + name, version);
        }
        if (status == u"OK") {
            const QString &path = type == u"QMTool" ? kAdministratorsTool : kSetUserIdTool;
            platform.tasks.outputs.insert(path, "Limited 1.14.4.1303");
            return path;
        }
        return installTool(QStringLiteral("tools/") + name,
                           status == u"Old Version" ? "Limited 1.13.0.0" : "Limited 1.14.4.1303");
    }

    void evaluate(const QVariantList &items) {
        setItems(items);
        manager().updateStatus();
        platform.transcript.clear();
    }
    QString resource(const QString &file) const { return platform.bundle.resourcePath() + u'/' + file; }
    static QString tool(const QString &arguments) { return QStringLiteral("run /usr/bin/updateqm ") + arguments; }

    /// What the reinstallation of the update tool asks for.
    QStringList updateToolRequests(const QString &name = QStringLiteral("updateqm")) const {
        return {QStringLiteral("AuthorizationCreate"),
                QStringLiteral("AuthorizationCopyRights system.privilege.admin 13"),
                QStringLiteral("AuthorizationExecuteWithPrivileges %1 repair %2")
                    .arg(resource(name + QStringLiteral(".resource")), resource(name + QStringLiteral(".sig"))),
                QStringLiteral("AuthorizationFree")};
    }

    QStringList requestsOf(const Wanted &wanted, bool hasInstaller = true) {
        const RequiredItem item = itemWith(wanted, QStringLiteral("item"), hasInstaller);
        evaluate({item});
        EXPECT_EQ(manager().requiredItemsStatusKeys(), QStringList{QString::fromUtf8(wanted.status)});
        m_isSuccess = manager().runRepairPass();
        return platform.transcript.calls();
    }

    bool m_isSuccess = false;
};

TEST_F(InstallCheckRepair, TheUpdateToolIsInstalledFirstWhateverItsPlaceAndStatus) {
    const QVariantList items{itemWith({"QMTool", "Missing"}, QStringLiteral("first")),
                             itemWith({"QMToolRoot", "Not Required"}, QStringLiteral("updateqm"))};
    evaluate(items);
    EXPECT_TRUE(manager().runRepairPass());
    EXPECT_EQ(platform.transcript.calls(),
              updateToolRequests() + QStringList{tool(QStringLiteral("repairother %1 %2")
                                                          .arg(resource(QStringLiteral("first.resource")),
                                                               resource(QStringLiteral("first.sig"))))});
}

TEST_F(InstallCheckRepair, EveryItemOfThatNameIsInstalledWhateverItsType) {
    const QVariantList items{itemWith({"QMTool", "Missing"}, QStringLiteral("updateqm")),
                             itemWith({"QMToolRoot", "Missing"}, QStringLiteral("updateqm"))};
    evaluate(items);
    EXPECT_TRUE(manager().runRepairPass());
    EXPECT_EQ(platform.transcript.calls(), updateToolRequests() + updateToolRequests());
}

TEST_F(InstallCheckRepair, AFailureOfTheUpdateToolIsTheEnd) {
    evaluate({itemWith({"QMToolRoot", "Missing"}, QStringLiteral("updateqm")),
              itemWith({"QMTool", "Missing"}, QStringLiteral("other"))});
    for (qint32 *status : {&platform.authorization.createStatus, &platform.authorization.rightsStatus,
                           &platform.authorization.executeStatus}) {
        *status = kAuthorizationCanceled;
        platform.transcript.clear();
        EXPECT_FALSE(manager().runRepairPass());
        EXPECT_FALSE(platform.transcript.calls().join(u' ').contains(u"repairother"));
        EXPECT_TRUE(platform.clock.sleeps().empty());
        *status = 0;
    }
}

TEST_F(InstallCheckRepair, PausesForTwoSecondsAfterTheUpdateToolAndAtTheEnd) {
    evaluate({});
    EXPECT_TRUE(manager().runRepairPass());
    EXPECT_EQ(platform.clock.sleeps(), std::vector<std::chrono::microseconds>(2, std::chrono::seconds(2)));
    EXPECT_TRUE(platform.transcript.calls().isEmpty());
}

TEST_F(InstallCheckRepair, TheSecondPauseDoesNotFollowAFailure) {
    evaluate({itemWith({"Bundle", "Invalid"}, QStringLiteral("a"))});
    EXPECT_FALSE(manager().runRepairPass());
    EXPECT_EQ(platform.clock.sleeps().size(), 1U);
}

TEST_F(InstallCheckRepair, AStatusHasItsRequestByTheKindOfTheItem) {
    const QString payload = resource(QStringLiteral("item.resource"));
    const QString signature = resource(QStringLiteral("item.sig"));
    const QString package = resource(QStringLiteral("item.pkg"));
    const struct {
        Wanted wanted;
        QString request; // null when there is none
        bool isSuccess;
    } rows[] = {
        {{"CoreApp", "OK"}, QString(), true},
        {{"CoreApp", "Wrong Permissions"}, tool(QStringLiteral("repaircore ") + payload), true},
        {{"QMTool", "OK"}, QString(), true},
        {{"QMTool", "Missing"}, tool(QStringLiteral("repairother %1 %2").arg(payload, signature)), true},
        {{"QMTool", "Old Version"}, tool(QStringLiteral("repairother %1 %2").arg(payload, signature)), true},
        {{"QMTool", "Wrong Permissions"}, tool(QStringLiteral("repairpermissionsother item")), true},
        {{"QMToolRoot", "Not Required"}, QString(), true},
        {{"Bundle", "OK"}, QString(), true},
        {{"Bundle", "Missing"}, tool(QStringLiteral("repairpackage ") + package), true},
        {{"Bundle", "Old Version"}, tool(QStringLiteral("repairpackage ") + package), true},
        {{"Bundle", "Invalid"}, QString(), false}, // deliberate
        {{"Framework", "OK"}, QString(), true},
        {{"FinderCM", "OK"}, QString(), true},
        {{"FinderCM", "Not Required"}, QString(), true},
        {{"FinderOverlayInsert", "OK"}, QString(), true},
        {{"FinderOverlayInsert", "Not Required"}, QString(), true},
    };
    for (const auto &row : rows) {
        const QStringList requests = requestsOf(row.wanted);
        EXPECT_EQ(requests, row.request.isNull() ? QStringList() : QStringList{row.request})
            << row.wanted.type << ' ' << row.wanted.status;
        EXPECT_EQ(m_isSuccess, row.isSuccess) << row.wanted.type << ' ' << row.wanted.status;
    }
}

TEST_F(InstallCheckRepair, ArchivesAreInstalledAtTheirPlaces) {
    for (const char *type : {"FinderCM", "FinderOverlayInsert"}) {
        for (const char *status : {"Missing", "Old Version"}) {
            const QStringList requests = requestsOf({type, status});
            const QString place = manager().requiredItemsList()[0].toMap().value(kInstallPath).toString();
            EXPECT_EQ(requests, QStringList{tool(QStringLiteral("repairzipitem %1 %2 %3")
                                                     .arg(resource(QStringLiteral("item.resource")),
                                                          resource(QStringLiteral("item.sig")), place))});
        }
    }
}

TEST_F(InstallCheckRepair, RootToolsAreInstalledAndTheFinderStartsAnew) {
    const QStringList requests = requestsOf({"QMToolRoot", "Old Version"});
    ASSERT_FALSE(requests.isEmpty());
    EXPECT_EQ(requests.first(),
              tool(QStringLiteral("repairotherroot %1 %2")
                       .arg(resource(QStringLiteral("item.resource")), resource(QStringLiteral("item.sig")))));
    EXPECT_EQ(requests.last(), QStringLiteral("launchApplication /System/Library/CoreServices/Finder.app"));
}

TEST_F(InstallCheckRepair, WithoutAnInstallerBundlesAndFrameworksAreLeftAsTheyAre) {
    EXPECT_TRUE(requestsOf({"Bundle", "Missing"}, false).isEmpty());
    EXPECT_TRUE(m_isSuccess);
    EXPECT_TRUE(requestsOf({"Bundle", "Invalid"}, false).isEmpty());
    EXPECT_TRUE(m_isSuccess);
}

TEST_F(InstallCheckRepair, AnUnexpectedStatusMeansSuccessForSomeKindsAndFailureForOthers) {
    // Deliberate. The items are given by hand, since no evaluation finds them like this.
    evaluate({});
    const RequiredItem unknown = itemOf({{kName, QStringLiteral("x")}});
    EXPECT_TRUE(manager().repairCoreApp(unknown));
    EXPECT_TRUE(manager().repairZIPArchiveItem(unknown));
    EXPECT_FALSE(manager().repairQMTool(unknown));
    EXPECT_FALSE(manager().repairQMToolRoot(unknown));
    EXPECT_FALSE(manager().repairFramework(unknown));
    EXPECT_FALSE(manager().repairBundle(unknown));
    EXPECT_TRUE(platform.transcript.calls().isEmpty());
}

TEST_F(InstallCheckRepair, TheFirstFailureLeavesTheLaterItemsAsTheyAre) {
    evaluate({itemWith({"QMTool", "Missing"}, QStringLiteral("a")),
              itemWith({"QMTool", "Missing"}, QStringLiteral("b")),
              itemWith({"QMTool", "Missing"}, QStringLiteral("c"))});
    platform.transcript.failAt(QStringLiteral("run"), 2);
    EXPECT_FALSE(manager().runRepairPass());
    EXPECT_EQ(platform.transcript.calls().size(), 2);
}

TEST_F(InstallCheckRepair, TheItemWhoseRepairFailedIsNamedInTheLog) {
    evaluate({itemWith({"QMToolRoot", "Missing"}, QStringLiteral("updateqm")),
              itemWith({"Bundle", "Invalid"}, QStringLiteral("a"))});
    startLog(kLogLevelError);
    EXPECT_FALSE(manager().runRepairPass());
    platform.authorization.createStatus = kAuthorizationDenied;
    EXPECT_FALSE(manager().runRepairPass());
    EXPECT_EQ(log(), listOf({"ERR \"a\" could not be repaired", "ERR \"updateqm\" could not be repaired"}));
}

TEST_F(InstallCheckRepair, AnOldSystemOnIntelIsMendedAfterTheItemsAlsoWhenTheyNeedNothing) {
    platform.systemInfo.version = {10, 5, 8};
    evaluate({});
    EXPECT_TRUE(manager().runRepairPass());
    EXPECT_EQ(platform.transcript.calls(), QStringList{tool(QStringLiteral("repairintel10_5 %1 %2")
                                                                .arg(resource(QStringLiteral("Fixes10_5.zip")),
                                                                     resource(QStringLiteral("Fixes10_5.plist"))))});
    platform.tasks.usualStatus = 1;
    EXPECT_FALSE(manager().runRepairPass());
    platform.systemInfo.intel = false;
    EXPECT_TRUE(manager().runRepairPass());
}

TEST_F(InstallCheckRepair, ItemsThatAreEqualHaveTheStatusOfTheFirst) {
    const RequiredItem item = itemWith({"QMTool", "Missing"}, QStringLiteral("twin"));
    evaluate({item, item});
    EXPECT_TRUE(manager().runRepairPass());
    EXPECT_EQ(platform.transcript.calls().size(), 2);
}

TEST_F(InstallCheckRepair, EachStepIsToldBeforeItIsTaken) {
    evaluate({itemWith({"QMTool", "Missing"}, QStringLiteral("a")),
              itemWith({"QMToolRoot", "OK"}, QStringLiteral("updateqm"))});
    QStringList steps;
    EXPECT_TRUE(manager().runRepairPass([&](const QString &name, const QString &step) {
        steps << QStringLiteral("%1: %2 (%3)").arg(name, step).arg(platform.transcript.calls().size());
    }));
    EXPECT_EQ(steps, listOf({"updateqm: installing the update tool (0)", "a: repairing what is \"Missing\" (4)"}));
}

/// The requests of one pass, written down step by step as the rules have them.
class Reference : public InstallCheckRepair {
protected:
    struct Entry {
        QString type;
        QString status;
        QString name;
        bool hasInstaller;
        QString installPath;
    };

    bool request(const QString &arguments) {
        expected << tool(arguments);
        return ++runs != failingRun;
    }
    QString file(const Entry &entry, const char *suffix) const {
        return resource(entry.name + QString::fromUtf8(suffix));
    }

    bool repair(const Entry &entry) {
        const bool isMissingOrOld = entry.status == u"Missing" || entry.status == u"Old Version";
        const QString both = file(entry, ".resource") + u' ' + file(entry, ".sig");
        if (entry.type == u"CoreApp") {
            return entry.status != u"Wrong Permissions" ||
                   request(QStringLiteral("repaircore ") + file(entry, ".resource"));
        }
        if (entry.type == u"QMTool") {
            if (isMissingOrOld) {
                return request(QStringLiteral("repairother ") + both);
            }
            return entry.status == u"Wrong Permissions" &&
                   request(QStringLiteral("repairpermissionsother ") + entry.name);
        }
        if (entry.type == u"QMToolRoot") {
            if (isMissingOrOld) {
                if (!request(QStringLiteral("repairotherroot ") + both)) {
                    return false;
                }
                expected << QStringLiteral("launchedApplications")
                         << QStringLiteral("launchApplication /System/Library/CoreServices/Finder.app");
                return true;
            }
            return entry.status == u"Wrong Permissions" &&
                   request(QStringLiteral("repairpermissionsotherroot ") + entry.name);
        }
        if (entry.type == u"Framework" || entry.type == u"Bundle") {
            return isMissingOrOld && request(QStringLiteral("repairpackage ") + file(entry, ".pkg"));
        }
        return !isMissingOrOld || request(QStringLiteral("repairzipitem %1 %2").arg(both, entry.installPath));
    }

    bool isTreated(const Entry &entry) const {
        if (entry.type == u"Unknown") {
            return false;
        }
        if (entry.type == u"CoreApp") {
            return entry.status != u"OK";
        }
        if (entry.type == u"QMTool") {
            return entry.name != u"updateqm" && entry.status != u"OK";
        }
        if (entry.status == u"OK" || entry.status == u"Not Required") {
            return false;
        }
        if (entry.type == u"QMToolRoot") {
            return entry.name != u"updateqm";
        }
        return (entry.type != u"Framework" && entry.type != u"Bundle") || entry.hasInstaller;
    }

    bool pass(const std::vector<Entry> &entries) {
        for (const Entry &entry : entries) {
            if (entry.name == u"updateqm") {
                expected += updateToolRequests();
            }
        }
        return std::all_of(entries.begin(), entries.end(),
                           [this](const Entry &entry) { return !isTreated(entry) || repair(entry); });
    }

    QStringList expected;
    int runs = 0;
    int failingRun = 0;
};

TEST_F(Reference, GivesTheSameRequestsForManyCatalogues) {
    constexpr Wanted kKinds[] = {{"CoreApp", "OK"},
                                 {"CoreApp", "Wrong Permissions"},
                                 {"Framework", "OK"},
                                 {"Bundle", "OK"},
                                 {"Bundle", "Missing"},
                                 {"Bundle", "Invalid"},
                                 {"Bundle", "Old Version"},
                                 {"QMTool", "OK"},
                                 {"QMTool", "Missing"},
                                 {"QMTool", "Old Version"},
                                 {"QMTool", "Wrong Permissions"},
                                 {"QMToolRoot", "Not Required"},
                                 {"QMToolRoot", "Missing"},
                                 {"QMToolRoot", "Old Version"},
                                 {"FinderCM", "Not Required"},
                                 {"FinderCM", "Missing"},
                                 {"FinderCM", "Old Version"},
                                 {"FinderCM", "OK"},
                                 {"FinderOverlayInsert", "OK"},
                                 {"FinderOverlayInsert", "Missing"},
                                 {"FinderOverlayInsert", "Old Version"},
                                 {"Unknown", "OK"}};
    std::mt19937 random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same catalogues every time
    const auto below = [&random](size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random); };
    for (int round = 0; round < 400; ++round) {
        std::vector<Entry> entries;
        QVariantList items;
        const size_t count = below(7);
        for (size_t index = 0; index < count; ++index) {
            const Wanted &wanted = kKinds[below(std::size(kKinds))];
            const bool isTool = QString::fromUtf8(wanted.type).startsWith(u"QMTool");
            const QString name =
                isTool && below(4) == 0 ? QStringLiteral("updateqm") : QStringLiteral("r%1i%2").arg(round).arg(index);
            const bool hasInstaller = below(3) != 0;
            const RequiredItem item = itemWith(wanted, name, hasInstaller);
            items << item;
            entries.push_back(
                {QString::fromUtf8(wanted.type), QString(), name, hasInstaller, item.value(kInstallPath).toString()});
        }
        evaluate(items);
        for (size_t index = 0; index < count; ++index) { // tools of one name share their file
            entries[index].status = manager().requiredItemsStatusKeys()[static_cast<qsizetype>(index)];
        }
        expected.clear();
        runs = 0;
        failingRun = static_cast<int>(below(6)); // 0 lets none fail
        platform.transcript.failAt(QStringLiteral("run"), failingRun);
        const bool isExpectedToSucceed = pass(entries);
        EXPECT_EQ(manager().runRepairPass(), isExpectedToSucceed) << "round " << round;
        ASSERT_EQ(platform.transcript.calls(), expected) << "round " << round;
    }
}

} // namespace
} // namespace quillmark

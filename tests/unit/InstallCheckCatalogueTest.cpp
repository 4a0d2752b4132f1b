#include "support/InstallCheckFixture.h"

#include <grp.h>

namespace quillmark {
namespace {

using test::listOf;

class InstallCheckCatalogue : public test::InstallCheckFixture {
protected:
    static RequiredItem typed(const QVariant &type) { return itemOf({{kInstallType, type}}); }
    void expectNothingToDo() {
        EXPECT_TRUE(manager().checkForRequiredItems());
        EXPECT_TRUE(manager().requiredItemsList().isEmpty());
        EXPECT_TRUE(manager().requiredItemsStatusList().isEmpty());
        EXPECT_TRUE(manager().requiredItemsStatusKeys().isEmpty());
        EXPECT_EQ(manager().numberItemsMissing(), 0);
        EXPECT_EQ(manager().numberRepairsRequired(), 0);
    }
    const QStringList toldOnce = listOf({"ERR The catalogue of required items "
                                         "(\"~/Quillmark.app/Contents/Resources/RequiredItems.plist\") can't be read: "
                                         "no component is checked"});
};

TEST_F(InstallCheckCatalogue, NothingIsEvaluatedYetWhenItHasBeenRead) {
    setItems({typed(QStringLiteral("QMTool"))});
    EXPECT_EQ(manager().requiredItemsList().size(), 1);
    EXPECT_TRUE(manager().requiredItemsStatusList().isEmpty());
    EXPECT_EQ(manager().restartIndex(), -1);
    EXPECT_FALSE(manager().isHelperRepairRequired());
    EXPECT_FALSE(manager().isMacFuseRepairRequired());
    EXPECT_TRUE(platform.transcript.calls().isEmpty());
}

TEST_F(InstallCheckCatalogue, TheItemsStayInTheirOrder) {
    QVariantList items;
    for (const char *name : {"c", "a", "b"}) {
        items << itemOf({{kName, QString::fromUtf8(name)}});
    }
    setItems(items);
    EXPECT_EQ(manager().requiredItemsList(), items);
}

TEST_F(InstallCheckCatalogue, AnEmptyOneHasNothingToDoAndNothingToTell) {
    startLog();
    setItems({});
    expectNothingToDo();
    EXPECT_EQ(log(), listOf({"dtl Updating status...", "dtl Updated status"}));
}

TEST_F(InstallCheckCatalogue, AMissingOneHasNothingToDoAndIsReported) {
    startLog(kLogLevelNormal);
    expectNothingToDo();
    EXPECT_EQ(log(), toldOnce);
}

TEST_F(InstallCheckCatalogue, AMalformedOneHasNothingToDoAndIsReported) {
    platform.bundle.resources << QStringLiteral("RequiredItems.plist");
    home.write(QStringLiteral("Quillmark.app/Contents/Resources/RequiredItems.plist"), "<plist");
    startLog(kLogLevelNormal);
    expectNothingToDo();
    EXPECT_EQ(log(), toldOnce);
}

TEST_F(InstallCheckCatalogue, ARootThatIsNoDictionaryHasNothingToDoAndIsReported) {
    for (const QVariant &root : {QVariant(QVariantList{typed(QStringLiteral("QMTool"))}),
                                 QVariant(QStringLiteral("RequiredItems")), QVariant(1), QVariant(true)}) {
        startLog(kLogLevelNormal);
        setCatalogue(root);
        expectNothingToDo();
        EXPECT_EQ(log().last(), toldOnce.first());
    }
}

TEST_F(InstallCheckCatalogue, ItemsThatAreNoListAreNoneAndAreReported) {
    startLog(kLogLevelNormal);
    const QVariantList others = {QVariant(),
                                 QStringLiteral("QMTool"),
                                 7,
                                 1.5,
                                 true,
                                 QByteArray("QMTool"),
                                 QVariantMap{{QStringLiteral("0"), typed(QStringLiteral("QMTool"))}}};
    for (const QVariant &other : others) {
        setCatalogue(QVariantMap{{QStringLiteral("RequiredItems"), other}});
        expectNothingToDo();
    }
    EXPECT_EQ(log().count(toldOnce.first()), others.size());
}

TEST_F(InstallCheckCatalogue, ItemsThatAreNoDictionariesAreInOrderAndKeepTheirPlaces) {
    startLog(kLogLevelVerbose);
    EXPECT_EQ(statusesOf({QStringLiteral("QMTool"), 7, QVariantList{1}, QByteArray("x"), true,
                          itemOf("QMTool", "last", home.path(QStringLiteral("none")))}),
              listOf({"OK", "OK", "OK", "OK", "OK", "Missing"}));
    EXPECT_EQ(log().first(), QStringLiteral("vrb Install check: (null) \"(null)\" is \"OK\""));
    EXPECT_EQ(manager().numberItemsMissing(), 1);
}

TEST_F(InstallCheckCatalogue, AnItemOfAnUnknownTypeIsInOrder) {
    for (const char *type : {"", "qmtool", "QMTool ", "Tool", "QMToolRootX", "(null)"}) {
        EXPECT_EQ(statusOf(itemOf(type, "x", home.path(QStringLiteral("none")))), QStringLiteral("OK")) << type;
        EXPECT_TRUE(manager().checkForRequiredItems());
    }
}

TEST_F(InstallCheckCatalogue, AnItemThatLacksEveryOtherKeyIsMissingUnlessItsTypeNeedsNoPath) {
    setMode(platform.bundle.resourcePath(), 0755);
    QVariantList items;
    for (const char *type :
         {"CoreApp", "Framework", "Bundle", "QMTool", "QMToolRoot", "FinderCM", "FinderOverlayInsert"}) {
        items << typed(QString::fromUtf8(type));
    }
    // The core application's path is the resource folder then.
    EXPECT_EQ(statusesOf(items), listOf({"OK", "OK", "Missing", "Missing", "Missing", "Missing", "Missing"}));
    setMode(platform.bundle.resourcePath(), 0700);
    EXPECT_EQ(statusOf(typed(QStringLiteral("CoreApp"))), QStringLiteral("Wrong Permissions"));
}

TEST_F(InstallCheckCatalogue, AValueThatIsNoTextCountsAsAbsent) {
    const QVariantList others = {7,
                                 1.5,
                                 true,
                                 QByteArray("QMTool"),
                                 QVariantList{QStringLiteral("QMTool")},
                                 QVariantMap{{QStringLiteral("QMTool"), 1}},
                                 QDateTime::currentDateTimeUtc()};
    for (const QVariant &other : others) {
        EXPECT_EQ(statusOf(typed(other)), QStringLiteral("OK"));
        EXPECT_EQ(statusOf(itemOf({{kInstallType, QStringLiteral("QMTool")}, {kInstallPath, other}})),
                  QStringLiteral("Missing"));
        EXPECT_EQ(manager().pathToRequiredItemInResources(itemOf({{kResource, other}})),
                  platform.bundle.resourcePath());
        EXPECT_TRUE(manager().checkMinMacOSXVersion(itemOf({{kMinMacOSXVersion, other}})));
        EXPECT_TRUE(manager().checkMaxMacOSXVersion(itemOf({{kMaxMacOSXVersion, other}})));
        EXPECT_FALSE(InstallCheckManager::checkFrameworkVersion(itemOf({{kVersion, other}}), {9, 9, 9}));
    }
}

TEST_F(InstallCheckCatalogue, KeysThatTheLauncherDoesNotReadMayBeThere) {
    const QString path = installBundle(QStringLiteral("A.fs"), QStringLiteral("2.0.0"));
    EXPECT_EQ(statusOf(itemOf("Bundle", "A", path,
                              {{kVersion, QStringLiteral("2.0.0")},
                               {kImage, 1},
                               {kWebsiteURL, QVariantList()},
                               {kLicense, QStringLiteral("free")},
                               {kDescription, QVariantMap()}})),
              QStringLiteral("OK"));
}

TEST_F(InstallCheckCatalogue, TenThousandItemsHaveTenThousandStatuses) {
    constexpr qsizetype kItems = 10'000;
    QVariantList items;
    for (qsizetype i = 0; i < kItems; ++i) {
        items << itemOf(i % 2 == 0 ? "QMTool" : "Framework", "x", home.path(QString::number(i)));
    }
    const QStringList statuses = statusesOf(items);
    EXPECT_EQ(statuses.size(), kItems);
    EXPECT_EQ(statuses.count(QStringLiteral("Missing")), kItems / 2);
    EXPECT_EQ(manager().numberRepairsRequired(), kItems / 2);
    EXPECT_EQ(manager().requiredItemsStatusList().size(), kItems);
}

TEST_F(InstallCheckCatalogue, AnItemsFilesLieInTheResourceFolder) {
    const RequiredItem item = itemOf({{kResource, QStringLiteral("tool")},
                                      {kInstaller, QStringLiteral("Tool.pkg")},
                                      {kSignature, QStringLiteral("tool.sig")}});
    const QString folder = platform.bundle.resourcePath();
    EXPECT_EQ(manager().pathToRequiredItemInResources(item), folder + QStringLiteral("/tool"));
    EXPECT_EQ(manager().pathToRequiredItemInstallerInResources(item), folder + QStringLiteral("/Tool.pkg"));
    EXPECT_EQ(manager().pathToRequiredItemSignatureInResources(item), folder + QStringLiteral("/tool.sig"));
    EXPECT_EQ(manager().pathToRequiredItemInResources({}), folder);
    EXPECT_EQ(manager().pathToRequiredItemInstallerInResources({}), folder);
    EXPECT_EQ(manager().pathToRequiredItemSignatureInResources({}), folder);
}

TEST_F(InstallCheckCatalogue, ADanglingLinkIsMissing) {
    const QString link = home.path(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(home.path(QStringLiteral("gone")), link));
    for (const char *type : {"Bundle", "QMTool", "QMToolRoot", "FinderCM", "FinderOverlayInsert"}) {
        EXPECT_EQ(statusOf(itemOf(type, "x", link)), QStringLiteral("Missing")) << type;
    }
}

TEST_F(InstallCheckCatalogue, ALinkIsFollowedToABundle) {
    const QString bundle = installBundle(QStringLiteral("A.fs"), QStringLiteral("1.14.0"));
    const QString link = home.path(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(bundle, link));
    EXPECT_EQ(statusOf(itemOf("Bundle", "A", link, {{kVersion, QStringLiteral("1.14.0")}})), QStringLiteral("OK"));
    EXPECT_EQ(statusOf(itemOf("FinderCM", "A", link)), QStringLiteral("OK"));
}

TEST_F(InstallCheckCatalogue, ALinkToTheAdministratorsToolHasWrongPermissions) {
    const QString link = home.path(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(kAdministratorsTool, link)); // whoever owns the link decides what runs
    platform.tasks.outputs.insert(link, "1.14.0.0");
    EXPECT_EQ(statusOf(itemOf("QMTool", "x", link)), QStringLiteral("Wrong Permissions"));
}

TEST_F(InstallCheckCatalogue, AFileWhereABundleIsMeantIsOneWithoutAVersion) {
    const QString file = home.write(QStringLiteral("file"), "");
    EXPECT_EQ(statusOf(itemOf("Bundle", "x", file)), QStringLiteral("Invalid"));
    EXPECT_EQ(statusOf(itemOf("FinderCM", "x", file)), QStringLiteral("Old Version"));
}

using InstallCheckCatalogueDeathTest = InstallCheckCatalogue;

TEST_F(InstallCheckCatalogueDeathTest, WhatCannotBeReachedIsMissing) {
    const QString folder = home.makeFolder(QStringLiteral("locked"));
    const QString tool = installTool(QStringLiteral("locked/tool"), "1.14.0.0");
    const QString bundle = installBundle(QStringLiteral("locked/A.fs"), QStringLiteral("1.14.0"));
    setItems({itemOf("QMTool", "x", tool), itemOf("Bundle", "A", bundle)});
    manager(); // has the catalogue before the folder is closed
    setMode(folder, 0);
    const auto evaluateAsNobody = [this] {
        constexpr uid_t kNobody = 65534;
        const bool isNobody = ::geteuid() != 0 || (::setgroups(0, nullptr) == 0 && ::setuid(kNobody) == 0);
        manager().updateStatus();
        const bool isMissing = manager().requiredItemsStatusKeys() == listOf({"Missing", "Missing"});
        std::_Exit(isNobody && isMissing ? 0 : 1);
    };
    EXPECT_EXIT(evaluateAsNobody(), testing::ExitedWithCode(0), "");
    setMode(folder, 0700);
}

} // namespace
} // namespace quillmark

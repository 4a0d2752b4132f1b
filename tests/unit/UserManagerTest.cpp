#include "accounts/UserManager.h"

#include "accounts/KeyList.h"
#include "accounts/KeychainManager.h"
#include "branding/BrandingManager.h"
#include "platform/Path.h"
#include "support/LogFixture.h"

#include <QFileInfo>
#include <limits>
#include <unistd.h>

namespace quillmark {
namespace {

using Limits = std::numeric_limits<qint32>;

class Observer final : public UserManager::RemovalObserver {
public:
    int calls = 0;
    void removeUserFinished() override { ++calls; }
};

class UserManagerTest : public test::LogFixture {
protected:
    UserManagerTest() {
        platform.bundle.strings.insert(QStringLiteral("ProductName"), QStringLiteral("Quillmark"));
        _setStandardStreams(nullptr, nullptr);
    }

    static UserRecord record(const QString &name, const UserRecord &more = {}) {
        UserRecord result = more;
        result.insert(kUserUserName, name);
        return result;
    }
    void setList(const QVariantList &list) { platform.userDefaults.stored.insert(kUserList, list); }
    void select(const QString &name) { platform.userDefaults.stored.insert(kLastUsedUserName, name); }
    /// A list of one user, who is the selected one, with one setting.
    void setSetting(Key key, const QVariant &value) {
        setList({record(kAnna, {{key, value}})});
        select(kAnna);
    }
    /// The names of the stored list.
    QStringList names() const {
        QStringList result;
        for (const QVariant &entry : manager.userList()) {
            result << entry.toMap().value(kUserUserName, QStringLiteral("-")).toString();
        }
        return result;
    }
    QString keychainText(const QString &user) const {
        const auto item = platform.keychain.items.find({"Quillmark", user.toStdString()});
        return item != platform.keychain.items.end() ? QString::fromStdString(item->second) : QString();
    }
    int synchronizations() const {
        return static_cast<int>(platform.transcript.calls().count(QStringLiteral("synchronize")));
    }
    /// Runs what was to run on a thread of its own.
    void runThreads() {
        const auto bodies = std::move(platform.mainThread.threads);
        platform.mainThread.threads.clear();
        for (const auto &body : bodies) {
            body();
        }
    }
    /// A cache with a file in it, at LOCATION/.QM/NAME.
    QString makeCache(const QString &name) {
        home.write(QStringLiteral("Data/.QM/") + name + QStringLiteral("/part/file"), "cached");
        return home.path(QStringLiteral("Data/.QM/") + name);
    }
    void removeWithCache(const UserRecord &settings) {
        setList({record(kAnna, settings)});
        manager.removeUser(kAnna, true);
        runThreads();
    }

    static inline const QString kAnna = QStringLiteral("anna");
    static inline const QString kBert = QStringLiteral("bert");

private:
    LocalizedStrings m_strings{platform.bundle};
    KeychainManager m_keychain{platform.keychain, m_strings};

protected:
    UserManager manager{platform.platform, m_keychain};
};

// Records

TEST_F(UserManagerTest, AnUnknownUserHasANewRecordOfSixDefaults) {
    EXPECT_EQ(manager.userWithUserName(kAnna), (UserRecord{{QStringLiteral("ConnectionSpeedDown"), 512},
                                                           {QStringLiteral("ConnectionSpeedUp"), 64},
                                                           {QStringLiteral("ConnectionCount"), 4},
                                                           {QStringLiteral("DownloadBandwidth"), 100},
                                                           {QStringLiteral("UploadBandwidth"), 100},
                                                           {QStringLiteral("EncryptTransfers"), 1}}));
    EXPECT_FALSE(manager.doesUserKeyExists(kAnna));
    EXPECT_TRUE(manager.userList().isEmpty());
}

TEST_F(UserManagerTest, TheFirstRecordOfANameIsTheUsers) {
    setList({record(kBert), record(kAnna, {{kUserFirstName, 1}}), record(kAnna, {{kUserFirstName, 2}})});
    EXPECT_EQ(manager.userWithUserName(kAnna).value(kUserFirstName), 1);
    EXPECT_TRUE(manager.doesUserKeyExists(kAnna));
}

TEST_F(UserManagerTest, NamesAreComparedExactly) {
    setList({record(kAnna)});
    EXPECT_FALSE(manager.doesUserKeyExists(QStringLiteral("Anna")));
    EXPECT_FALSE(manager.doesUserKeyExists(QStringLiteral("anna ")));
    EXPECT_FALSE(manager.doesUserKeyExists(QString()));
}

TEST_F(UserManagerTest, EntriesThatAreNoRecordsBelongToNobodyAndStay) {
    const QVariantList odd{
        QStringLiteral("anna"),         7,          QVariantList{1},
        UserRecord{{kUserUserName, 5}}, QVariant(), UserRecord{{kUserFirstName, QStringLiteral("x")}}};
    setList(odd);
    EXPECT_FALSE(manager.doesUserKeyExists(kAnna));
    EXPECT_FALSE(manager.doesUserKeyExists(QStringLiteral("5")));
    EXPECT_FALSE(manager.doesUserKeyExists(QStringLiteral("")));
    manager.saveUser(record(kAnna), kAnna);
    EXPECT_EQ(manager.userList(), odd + QVariantList{record(kAnna)});
}

TEST_F(UserManagerTest, AListThatIsNoneIsEmpty) {
    platform.userDefaults.stored.insert(kUserList, QStringLiteral("anna"));
    EXPECT_TRUE(manager.userList().isEmpty());
    manager.saveUser(record(kAnna), kAnna);
    EXPECT_EQ(names(), QStringList{kAnna});
}

TEST_F(UserManagerTest, AChangedListIsSeenAtOnce) {
    for (int round = 0; round < 100; ++round) {
        setList({record(kAnna, {{kUserFirstName, round}})});
        EXPECT_EQ(manager.userWithUserName(kAnna).value(kUserFirstName), round);
    }
    setList({});
    EXPECT_FALSE(manager.doesUserKeyExists(kAnna));
}

TEST_F(UserManagerTest, EveryReaderSeesOneConnection) { // deliberate: whatever the record holds
    setList({record(kAnna, {{kUserConnectionCount, 4}})});
    for (const QString &user : {kAnna, kBert}) {
        EXPECT_EQ(manager.objectForKey(kUserConnectionCount, user), 1);
        EXPECT_EQ(manager.objectForKeyAsString(kUserConnectionCount, user), QStringLiteral("1"));
        EXPECT_EQ(manager.objectForKeyAsInt(kUserConnectionCount, user, 7), 1);
        EXPECT_EQ(manager.objectForKeyAsLong(kUserConnectionCount, user, 7), 1);
        EXPECT_EQ(manager.objectForKeyAsArray(kUserConnectionCount, user), 4); // but for this one
    }
}

TEST_F(UserManagerTest, ValuesComeBackAsTheyAreStored) {
    const QVariantList list{1, QStringLiteral("two")};
    setList({record(kAnna, {{kUserFirstName, list}, {kUserLastName, 2.5}})});
    EXPECT_EQ(manager.objectForKey(kUserFirstName, kAnna), list);
    EXPECT_EQ(manager.objectForKeyAsArray(kUserFirstName, kAnna), list);
    EXPECT_EQ(manager.objectForKeyAsArray(kUserLastName, kAnna), 2.5); // deliberate: unconverted
    EXPECT_EQ(manager.objectForKeyAsString(kUserLastName, kAnna).typeId(), QMetaType::Double);
    EXPECT_FALSE(manager.objectForKey(kUserCacheName, kAnna).isValid());
    EXPECT_FALSE(manager.objectForKeyAsString(kUserCacheName, kAnna).isValid());
}

TEST_F(UserManagerTest, NumbersAreReadFromNumbersAndTexts) {
    const auto read = [this](const QVariant &value) {
        setList({record(kAnna, {{kUserAccountType, value}})});
        return std::pair(manager.objectForKeyAsInt(kUserAccountType, kAnna, -5),
                         manager.objectForKeyAsLong(kUserAccountType, kAnna, -5));
    };
    const auto both = [](qint64 number) { return std::pair(static_cast<qint32>(number), number); };
    EXPECT_EQ(read(9), both(9));
    EXPECT_EQ(read(true), both(1));
    EXPECT_EQ(read(2.9), both(2));
    EXPECT_EQ(read(2.9F), both(2));
    EXPECT_EQ(read(QVariant::fromValue(12L)), both(12));
    EXPECT_EQ(read(QVariant::fromValue(12UL)), both(12));
    EXPECT_EQ(read(QStringLiteral(" 12 apples")), both(12));
    EXPECT_EQ(read(QStringLiteral("apples")), both(0));
    EXPECT_EQ(read(QVariantList{1}), both(-5));
    EXPECT_EQ(read(QByteArray("1")), both(-5));
    EXPECT_EQ(read(QVariant()), both(-5));
    EXPECT_EQ(read(qint64{1} << 40), std::pair(Limits::max(), qint64{1} << 40));
    EXPECT_EQ(read(QStringLiteral("-99999999999")), std::pair(Limits::min(), qint64{-99999999999}));
}

TEST_F(UserManagerTest, AMissingValueOfAnUnknownUserIsThatOfANewRecord) { // deliberate: the two differ
    setList({record(kAnna)});
    EXPECT_EQ(manager.objectForKeyAsInt(kUserEncryptTransfers, kBert, 0), 1);
    EXPECT_EQ(manager.objectForKeyAsInt(kUserEncryptTransfers, kAnna, 0), 0);
    EXPECT_EQ(manager.objectForKeyAsInt(kUserAccountType, kBert, 10), 10);
}

TEST_F(UserManagerTest, ASettingOfAnUnknownUserMakesARecordAtTheEnd) {
    setList({record(kBert)});
    manager.setObject(QStringLiteral("Anna"), kUserFirstName, kAnna);
    UserRecord expected = UserManager::setupUserDefaults();
    expected.insert(kUserFirstName, QStringLiteral("Anna"));
    expected.insert(kUserUserName, kAnna);
    EXPECT_EQ(manager.userList(), (QVariantList{record(kBert), expected}));
    EXPECT_EQ(synchronizations(), 1);
}

TEST_F(UserManagerTest, ARecordMovesToTheEndWhenItIsSaved) {
    setList({record(kAnna), record(kBert), record(kAnna, {{kUserFirstName, 2}})});
    manager.setObject(3, kUserLastName, kAnna, false); // the flag has no effect
    EXPECT_EQ(manager.userList(), (QVariantList{record(kBert), record(kAnna, {{kUserLastName, 3}})}));
}

TEST_F(UserManagerTest, TheNameOfARecordCannotBeSetApartFromItsUser) {
    setList({record(kAnna)});
    manager.setObject(kBert, kUserUserName, kAnna);
    EXPECT_EQ(names(), QStringList{kAnna});
}

TEST_F(UserManagerTest, AnAbsentValueChangesNothing) {
    manager.setObject(QVariant(), kUserFirstName, kAnna);
    manager.setObject(QVariant(), kUserPassword, kAnna);
    EXPECT_TRUE(platform.transcript.calls().isEmpty());
}

TEST_F(UserManagerTest, ARemovedSettingIsGoneAndSaved) {
    setList({record(kAnna, {{kUserFirstName, 1}, {kUserLastName, 2}}), record(kBert)});
    manager.removeObjectForKey(kUserFirstName, kAnna);
    EXPECT_EQ(manager.userList(), (QVariantList{record(kBert), record(kAnna, {{kUserLastName, 2}})}));
    EXPECT_EQ(synchronizations(), 1);
}

TEST_F(UserManagerTest, ARemovedSettingOfAnUnknownUserLeavesARecordWithoutAName) { // deliberate: cleaning drops it
    manager.removeObjectForKey(kUserEncryptTransfers, kAnna);
    UserRecord expected = UserManager::setupUserDefaults();
    expected.remove(kUserEncryptTransfers);
    EXPECT_EQ(manager.userList(), QVariantList{expected});
}

TEST_F(UserManagerTest, SavingTakesTheRecordAsItIs) {
    setList({record(kAnna), record(kBert)});
    manager.saveUser(record(kBert, {{kUserFirstName, 1}}), kAnna);
    EXPECT_EQ(manager.userList(), (QVariantList{record(kBert), record(kBert, {{kUserFirstName, 1}})}));
}

// Secrets

TEST_F(UserManagerTest, APasswordGoesToTheKeychainAlone) {
    setList({record(kAnna)});
    manager.setObject(QStringLiteral("s3cret"), kUserPassword, kAnna);
    EXPECT_EQ(manager.userList(), QVariantList{record(kAnna)});
    EXPECT_EQ(keychainText(kAnna), QStringLiteral(R"({"password":"s3cret"})"));
    EXPECT_EQ(manager.objectForKey(kUserPassword, kAnna), QStringLiteral("s3cret"));
    EXPECT_EQ(manager.objectForKeyAsString(kUserPassword, kAnna), QStringLiteral("s3cret"));
    EXPECT_EQ(synchronizations(), 0);
}

TEST_F(UserManagerTest, AnEncryptionKeyGoesToTheKeychainAlone) {
    manager.setObject(QStringLiteral("k3y"), kUserEncryptionKey, kAnna);
    EXPECT_TRUE(manager.userList().isEmpty());
    EXPECT_EQ(keychainText(kAnna), QStringLiteral(R"({"encryptionKey":"k3y"})"));
    EXPECT_EQ(manager.objectForKey(kUserEncryptionKey, kAnna), QStringLiteral("k3y"));
    EXPECT_EQ(manager.objectForKeyAsString(kUserEncryptionKey, kAnna), QStringLiteral("k3y"));
}

TEST_F(UserManagerTest, SecretsThatAreNotThereAreAbsent) {
    EXPECT_FALSE(manager.objectForKey(kUserPassword, kAnna).isValid());
    EXPECT_FALSE(manager.objectForKey(kUserEncryptionKey, kAnna).isValid());
}

TEST_F(UserManagerTest, RemovingASecretsKeyLeavesTheKeychainAlone) { // deliberate
    manager.setObject(QStringLiteral("s3cret"), kUserPassword, kAnna);
    manager.removeObjectForKey(kUserPassword, kAnna);
    EXPECT_EQ(manager.objectForKey(kUserPassword, kAnna), QStringLiteral("s3cret"));
}

// Renaming

TEST_F(UserManagerTest, AnAccountThatIsRenamedTakesTheEndOfTheList) {
    setList({record(kAnna, {{kAccountId, 5}, {kUserFirstName, 1}}), record(kBert, {{kAccountId, 6}})});
    manager.updateUserWithUsername(QStringLiteral("new"), 5);
    EXPECT_EQ(manager.userList(),
              (QVariantList{record(kBert, {{kAccountId, 6}}),
                            record(QStringLiteral("new"), {{kAccountId, 5}, {kUserFirstName, 1}})}));
    EXPECT_EQ(synchronizations(), 1);
}

TEST_F(UserManagerTest, AccountNumbersMayBeTexts) {
    setList({record(kAnna, {{kAccountId, QStringLiteral("5")}})});
    manager.updateUserWithUsername(kBert, 5);
    EXPECT_EQ(names(), QStringList{kBert});
}

TEST_F(UserManagerTest, RenamingAnUnknownAccountChangesNothing) {
    setList({record(kAnna), record(kBert, {{kAccountId, 6}})});
    manager.updateUserWithUsername(QStringLiteral("new"), 0);
    EXPECT_EQ(names(), QStringList({kAnna, kBert}));
    EXPECT_EQ(synchronizations(), 0);
}

TEST_F(UserManagerTest, RenamingReplacesOtherRecordsOfTheOldNames) {
    const UserRecord account{{kAccountId, 5}};
    setList({record(kAnna), record(kAnna, account), record(kBert, account), record(QStringLiteral("c"))});
    manager.updateUserWithUsername(QStringLiteral("new"), 5);
    EXPECT_EQ(names(), QStringList({QStringLiteral("c"), QStringLiteral("new"), QStringLiteral("new")}));
}

TEST_F(UserManagerTest, RenamingToANameThatTheAccountHasHadKeepsItsLastRecord) {
    setList(
        {record(kAnna, {{kAccountId, 5}, {kUserFirstName, 1}}), record(kBert, {{kAccountId, 5}, {kUserFirstName, 2}})});
    manager.updateUserWithUsername(kBert, 5);
    EXPECT_EQ(manager.userList(), QVariantList{record(kBert, {{kAccountId, 5}, {kUserFirstName, 2}})});
}

TEST_F(UserManagerTest, ARecordWithoutANameGetsACopyWithOne) {
    const UserRecord nameless{{kAccountId, 5}};
    setList({nameless});
    manager.updateUserWithUsername(kAnna, 5);
    EXPECT_EQ(manager.userList(), (QVariantList{nameless, record(kAnna, nameless)}));
}

TEST_F(UserManagerTest, ARecordWithoutANameTakesNoPlaceOfOneWithAnEmptyName) {
    const UserRecord nameless{{kAccountId, 5}};
    const UserRecord empty = record(QStringLiteral(""));
    setList({nameless, empty});
    manager.updateUserWithUsername(kAnna, 5);
    EXPECT_EQ(manager.userList(), (QVariantList{nameless, empty, record(kAnna, nameless)}));
}

// The selected user

TEST_F(UserManagerTest, WithoutASelectedUserItsNameIsEmptyAndThePreviousOneAbsent) {
    EXPECT_EQ(manager.lastUsedUserName(), QStringLiteral(""));
    EXPECT_FALSE(manager.lastUsedUserName().isNull());
    EXPECT_TRUE(manager.previousAddUserName().isNull());
    select(kAnna);
    EXPECT_EQ(manager.lastUsedUserName(), kAnna);
    platform.userDefaults.stored.insert(kLastUsedUserName, 5);
    EXPECT_EQ(manager.lastUsedUserName(), QStringLiteral(""));
}

TEST_F(UserManagerTest, BothNamesAreStoredAndRemoved) {
    manager.setLastUsedUserName(kAnna);
    manager.setPreviousAddUserName(kBert);
    EXPECT_EQ(platform.userDefaults.stored, (QVariantMap{{kLastUsedUserName, kAnna}, {kPreviousAddUserName, kBert}}));
    EXPECT_EQ(manager.previousAddUserName(), kBert);
    manager.setLastUsedUserName(QString());
    manager.setPreviousAddUserName(QString());
    EXPECT_TRUE(platform.userDefaults.stored.isEmpty());
}

TEST_F(UserManagerTest, WithoutASelectedUserTheAccessorsReadANewRecord) {
    EXPECT_EQ(manager.selectedUserAccountType(), 10);
    EXPECT_FALSE(manager.isBusinessUser());
    EXPECT_TRUE(manager.selectedUserEnableBackup());
    EXPECT_TRUE(manager.selectedUserEnableQMDisk());
    EXPECT_TRUE(manager.selectedUserHasQMDisk());
    EXPECT_TRUE(manager.selectedUserAllowSharing());
    EXPECT_FALSE(manager.isShowingTeamFolders());
    EXPECT_TRUE(manager.isConsumerSharing());
    EXPECT_FALSE(manager.isSimplifiedWelcome());
    EXPECT_TRUE(manager.selectedUserEncryptTransfers()); // as a new record has it
    EXPECT_FALSE(manager.selectedUserEncryptNewFiles());
    EXPECT_FALSE(manager.ignoreServerExclusions());
    EXPECT_FALSE(manager.selectedUserHaveClientIdent());
    EXPECT_TRUE(manager.selectedUserClientIdent().isNull());
    EXPECT_TRUE(manager.selectedUserCachePath().isNull());
}

TEST_F(UserManagerTest, EveryTwoValuedAccessorHasItsOwnRuleAndDefault) {
    struct Row {
        bool (UserManager::*accessor)() const = nullptr;
        Key key = kUserUserName;
        bool whenAbsent = false;
        bool when0 = false;
        bool when1 = false;
        bool when9 = false;
    };
    const Row rows[] = {
        {&UserManager::isBusinessUser, kUserAccountType, false, false, false, true},
        {&UserManager::isShowingTeamFolders, kUserShowTeamFolders, false, false, true, true},
        {&UserManager::selectedUserShowTeamFolders, kUserShowTeamFolders, false, false, true, false},
        {&UserManager::isConsumerSharing, kUserShowTeamFolders, true, true, false, false},
        {&UserManager::isBusinessSharing, kUserShowTeamFolders, false, false, true, true},
        {&UserManager::isSimplifiedWelcome, kUserShowTeamFolders, false, false, true, true},
        {&UserManager::isSimplifiedWelcome, kUserAccountType, false, false, false, true},
        {&UserManager::selectedUserAllowQMDisk, kUserAllowQMDisk, true, false, true, false},
        {&UserManager::selectedUserEnableQMDisk, kUserAllowQMDisk, true, false, true, false},
        {&UserManager::selectedUserEnableQMDisk, kUserEnableQMDisk, true, false, true, false},
        {&UserManager::selectedUserHasQMDisk, kUserEnableQMDisk, true, false, true, false},
        {&UserManager::selectedUserAllowBackup, kUserAllowBackup, true, false, true, false},
        {&UserManager::selectedUserEnableBackup, kUserAllowBackup, true, false, true, false},
        {&UserManager::selectedUserEnableBackup, kUserEnableBackup, true, false, true, false},
        {&UserManager::selectedUserAllowSharing, kUserAllowSharing, true, false, true, false},
        {&UserManager::selectedUserEncryptTransfers, kUserEncryptTransfers, false, false, true, false},
        {&UserManager::selectedUserEncryptNewFiles, kUserEncryptNewFiles, false, false, true, false},
        {&UserManager::ignoreServerExclusions, kIgnoreServerExclusions, false, false, true, true},
    };
    for (const Row &row : rows) {
        const auto answer = [&](const QVariant &value) {
            setSetting(row.key, value);
            return (manager.*row.accessor)();
        };
        const std::string name = QString(row.key).toStdString();
        setList({record(kAnna)});
        select(kAnna);
        EXPECT_EQ((manager.*row.accessor)(), row.whenAbsent) << name;
        EXPECT_EQ(answer(0), row.when0) << name;
        EXPECT_EQ(answer(1), row.when1) << name;
        EXPECT_EQ(answer(QStringLiteral("1")), row.when1) << name;
        EXPECT_EQ(answer(9), row.when9) << name;
        EXPECT_EQ(answer(QVariantList{1}), row.whenAbsent) << name;
    }
}

TEST_F(UserManagerTest, TeamFoldersGiveADriveToThoseWhoHaveNone) {
    setList({record(kAnna, {{kUserAllowQMDisk, 0}, {kUserShowTeamFolders, 1}})});
    select(kAnna);
    EXPECT_FALSE(manager.selectedUserEnableQMDisk());
    EXPECT_TRUE(manager.selectedUserHasQMDisk());
}

TEST_F(UserManagerTest, TextsOfTheSelectedUserAreAbsentWhenTheyAreNoTexts) {
    setList({record(kAnna, {{kUserClientIdent, QStringLiteral("id")},
                            {kCacheLocation, QStringLiteral("/Volumes/Data")},
                            {kUserCacheName, QStringLiteral("u1")}})});
    select(kAnna);
    EXPECT_EQ(manager.selectedUserClientIdent(), QStringLiteral("id"));
    EXPECT_TRUE(manager.selectedUserHaveClientIdent());
    EXPECT_EQ(manager.selectedUserCacheLocation(), QStringLiteral("/Volumes/Data"));
    EXPECT_EQ(manager.selectedUserCacheName(), QStringLiteral("u1"));
    EXPECT_EQ(manager.selectedUserCachePath(), QStringLiteral("/Volumes/Data/.QM/u1"));
    setSetting(kUserClientIdent, QStringLiteral(""));
    EXPECT_FALSE(manager.selectedUserHaveClientIdent());
    setSetting(kUserClientIdent, 5);
    EXPECT_TRUE(manager.selectedUserClientIdent().isNull());
}

TEST_F(UserManagerTest, ACacheLiesInAHiddenFolderOfItsLocation) {
    const auto pathFor = [this](const UserRecord &settings) {
        setList({record(kAnna, settings)});
        return manager.userCachePath(kAnna);
    };
    EXPECT_EQ(pathFor({{kCacheLocation, QStringLiteral("/Data/")}, {kUserCacheName, QStringLiteral("u1")}}),
              QStringLiteral("/Data/.QM/u1"));
    EXPECT_EQ(pathFor({{kCacheLocation, QStringLiteral("/")}, {kUserCacheName, QStringLiteral("u1")}}),
              QStringLiteral("/.QM/u1"));
    EXPECT_EQ(pathFor({{kCacheLocation, QStringLiteral("/Data//x/")}, {kUserCacheName, QStringLiteral("u1//")}}),
              QStringLiteral("/Data/x/.QM/u1"));
    EXPECT_EQ(pathFor({{kCacheLocation, QStringLiteral("")}, {kUserCacheName, QStringLiteral("u1")}}),
              QStringLiteral(".QM/u1"));
    EXPECT_TRUE(pathFor({{kUserCacheName, QStringLiteral("u1")}}).isNull());
    EXPECT_TRUE(pathFor({{kCacheLocation, QStringLiteral("/Data")}}).isNull());
    EXPECT_TRUE(manager.userCachePath(kBert).isNull());
}

TEST_F(UserManagerTest, TheBrandIsThatOfTheSelectedUser) {
    const auto brand = [this] { return manager.objectForKeyAsInt(kUserBrandID, manager.lastUsedUserName(), -1); };
    EXPECT_EQ(brand(), -1);
    setSetting(kUserBrandID, 15);
    EXPECT_EQ(brand(), 15);
    select(kBert);
    EXPECT_EQ(brand(), -1);
}

// Removal

TEST_F(UserManagerTest, RemovingAUserHappensOnAThreadOfItsOwnAndIsToldOnTheMainOne) {
    setList({record(kAnna), record(kBert), record(kAnna)});
    select(kAnna);
    manager.setObject(QStringLiteral("s3cret"), kUserPassword, kAnna);
    Observer observer;
    manager.removeUser(kAnna, false, &observer);
    EXPECT_EQ(names().size(), 3); // nothing has happened yet
    runThreads();
    EXPECT_EQ(names(), QStringList{kBert});
    EXPECT_EQ(manager.lastUsedUserName(), QStringLiteral(""));
    EXPECT_EQ(synchronizations(), 1);
    EXPECT_EQ(observer.calls, 0);
    platform.mainThread.pump();
    EXPECT_EQ(observer.calls, 1);
    EXPECT_EQ(manager.objectForKey(kUserPassword, kAnna), QStringLiteral("s3cret")); // deliberate: it is kept
}

TEST_F(UserManagerTest, AnotherSelectedUserStaysSelectedAndNobodyNeedsToBeTold) {
    setList({record(kAnna), record(kBert)});
    select(kBert);
    manager.removeUser(kAnna, false);
    runThreads();
    EXPECT_EQ(manager.lastUsedUserName(), kBert);
    EXPECT_EQ(platform.mainThread.pump(), 0);
}

TEST_F(UserManagerTest, ACacheIsDeletedOnlyWhenThatIsWished) {
    const QString cache = makeCache(QStringLiteral("u1"));
    const QString others = makeCache(QStringLiteral("u2"));
    const UserRecord settings{{kCacheLocation, home.path(QStringLiteral("Data"))},
                              {kUserCacheName, QStringLiteral("u1")}};
    setList({record(kAnna, settings)});
    manager.removeUser(kAnna, false);
    runThreads();
    EXPECT_TRUE(QFileInfo::exists(cache));
    removeWithCache(settings);
    EXPECT_FALSE(QFileInfo::exists(cache));
    EXPECT_TRUE(QFileInfo::exists(others));
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(UserManagerTest, ALinkInACacheIsDeletedAndNotFollowed) {
    const QString precious = home.write(QStringLiteral("Documents/letter"), "kept");
    const QString cache = makeCache(QStringLiteral("u1"));
    QFile::link(home.path(QStringLiteral("Documents")), cache + QStringLiteral("/part/link"));
    const UserRecord settings{{kCacheLocation, home.path(QStringLiteral("Data"))},
                              {kUserCacheName, QStringLiteral("u1")}};
    removeWithCache(settings);
    EXPECT_FALSE(QFileInfo::exists(cache));
    EXPECT_EQ(test::readAll(precious), "kept");

    // The cache itself may be a link, too.
    QFile::link(home.path(QStringLiteral("Documents")), cache);
    removeWithCache(settings);
    EXPECT_FALSE(QFileInfo(cache).isSymLink());
    EXPECT_EQ(test::readAll(precious), "kept");
}

TEST_F(UserManagerTest, ACacheOutsideTheCachesFolderIsRefusedAndTheRecordRemovedAllTheSame) {
    const QString precious = home.write(QStringLiteral("Data/letter"), "kept");
    const QString other = makeCache(QStringLiteral("u2")) + QStringLiteral("/part/file");
    const QString log = logToFile(kLogLevelError);
    const QString location = home.path(QStringLiteral("Data"));
    for (const QString &name :
         {QStringLiteral(".."), QStringLiteral("u1/../.."), QStringLiteral("../letter"), precious, QStringLiteral("/"),
          QStringLiteral(""), QStringLiteral("."), QStringLiteral("u2/.."), QStringLiteral("./u2")}) {
        removeWithCache({{kCacheLocation, location}, {kUserCacheName, name}});
        EXPECT_TRUE(names().isEmpty()) << name.toStdString();
        EXPECT_EQ(linesOf(log).last(), QStringLiteral("ERR The cache \"%1\" of \"anna\" is not removed: its name is "
                                                      "no name of a folder")
                                           .arg(appendingPathComponent(location + QStringLiteral("/.QM"), name)));
    }
    removeWithCache({{kCacheLocation, QStringLiteral("Data")}, {kUserCacheName, QStringLiteral("u2")}});
    EXPECT_EQ(linesOf(log).last(),
              QStringLiteral("ERR The cache \"Data/.QM/u2\" of \"anna\" is not removed: its location "
                             "is no absolute path"));
    EXPECT_EQ(test::readAll(precious), "kept");
    EXPECT_EQ(test::readAll(other), "cached");
}

TEST_F(UserManagerTest, ACacheBehindALinkInItsNameIsRefused) {
    const QString precious = home.write(QStringLiteral("Documents/u1/letter"), "kept");
    const QString log = logToFile(kLogLevelError);
    home.makeFolder(QStringLiteral("Data/.QM"));
    QFile::link(home.path(QStringLiteral("Documents")), home.path(QStringLiteral("Data/.QM/link")));
    removeWithCache({{kCacheLocation, home.path(QStringLiteral("Data"))}, {kUserCacheName, QStringLiteral("link/u1")}});
    EXPECT_EQ(linesOf(log).size(), 1);
    EXPECT_TRUE(linesOf(log).last().endsWith(u"is not removed: a link lies in its way"));
    EXPECT_EQ(test::readAll(precious), "kept");
}

TEST_F(UserManagerTest, ACacheThatWasMovedToABiggerDiskIsDeletedThere) {
    const QString others = home.write(QStringLiteral("Big/u2/file"), "cached");
    home.write(QStringLiteral("Big/u1/part/file"), "cached");
    const QString link = home.makeFolder(QStringLiteral("Data")) + QStringLiteral("/.QM");
    QFile::link(home.path(QStringLiteral("Big")), link);
    removeWithCache({{kCacheLocation, home.path(QStringLiteral("Data"))}, {kUserCacheName, QStringLiteral("u1")}});
    EXPECT_FALSE(QFileInfo::exists(home.path(QStringLiteral("Big/u1"))));
    EXPECT_EQ(test::readAll(others), "cached");
    EXPECT_TRUE(QFileInfo(link).isSymLink());
}

TEST_F(UserManagerTest, ACacheThatStaysIsTold) {
    struct Watching final : UserManager::RemovalObserver {
        QStringList told;
        void removeUserFinished() override { told << QStringLiteral("finished"); }
        void cacheStays(const QString &path, const QString &reason) override { told << path << reason; }
    };
    const auto toldOf = [this](const QString &name) {
        setList({record(kAnna, {{kCacheLocation, home.path(QStringLiteral("Data"))}, {kUserCacheName, name}})});
        Watching watching;
        manager.removeUser(kAnna, true, &watching);
        runThreads();
        platform.mainThread.pump();
        EXPECT_TRUE(names().isEmpty());
        return watching.told;
    };
    const QString caches = home.makeFolder(QStringLiteral("Data")) + QStringLiteral("/.QM");
    const QString finished = QStringLiteral("finished");
    for (const QString &target : {QStringLiteral("/proc"), home.path(QStringLiteral("unplugged"))}) {
        QFile::link(target, caches); // nobody's but root's, and nothing at all
        if (::geteuid() != 0 || target != u"/proc") {
            EXPECT_EQ(toldOf(QStringLiteral("u1")),
                      QStringList({caches + QStringLiteral("/u1"),
                                   QStringLiteral("the link \"%1\" leads to no folder of the user's").arg(caches),
                                   finished}));
        }
        QFile::remove(caches);
    }
    const QString kept = home.write(QStringLiteral("Elsewhere/file"), "kept");
    home.makeFolder(QStringLiteral("Data/.QM"));
    QFile::link(home.path(QStringLiteral("Elsewhere")), caches + QStringLiteral("/u1"));
    EXPECT_EQ(toldOf(QStringLiteral("u1")),
              QStringList({home.path(QStringLiteral("Elsewhere")),
                           QStringLiteral("only a link to it was the user's cache"), finished}));
    EXPECT_EQ(test::readAll(kept), "kept");
    makeCache(QStringLiteral("u1"));
    EXPECT_EQ(toldOf(QStringLiteral("u1/")), QStringList{finished}); // a slash at the end means nothing
    EXPECT_FALSE(QFileInfo::exists(caches + QStringLiteral("/u1")));
    EXPECT_EQ(toldOf(QStringLiteral("..")).size(), 3);
}

TEST_F(UserManagerTest, ACacheThatIsNotThereIsNoFault) {
    const QString log = logToFile(kLogLevelError);
    removeWithCache({{kCacheLocation, home.path()}, {kUserCacheName, QStringLiteral("none")}});
    removeWithCache({});
    EXPECT_TRUE(names().isEmpty());
    EXPECT_TRUE(linesOf(log).isEmpty());
}

// Housekeeping

TEST_F(UserManagerTest, CleaningDropsRecordsWithoutAName) {
    setList({UserRecord{{kUserFirstName, 1}}, record(kAnna), QStringLiteral("no record"), record(kBert)});
    select(kAnna);
    manager.load();
    EXPECT_EQ(names(), QStringList({kAnna, kBert}));
    EXPECT_EQ(manager.lastUsedUserName(), kAnna);
    EXPECT_EQ(synchronizations(), 1);
}

TEST_F(UserManagerTest, CleaningDropsAUserByNameAsWell) {
    setList({record(kAnna), UserRecord{}, record(kBert), record(kAnna)});
    select(kAnna);
    manager.removeIncompleteUser(kAnna);
    EXPECT_EQ(names(), QStringList{kBert});
    EXPECT_FALSE(platform.userDefaults.stored.contains(kLastUsedUserName));
}

TEST_F(UserManagerTest, PreferencesThatCannotBeWrittenAreToldOfAndValuesStay) {
    const QString log = logToFile(kLogLevelError);
    platform.transcript.failAt(QStringLiteral("synchronize"), 1);
    EXPECT_FALSE(manager.setObject(1, kUserFirstName, kAnna));
    EXPECT_EQ(linesOf(log),
              QStringList{QStringLiteral("ERR The preferences \"/preferences.plist\" can't be written; what "
                                         "was set is kept until this program ends")});
    EXPECT_EQ(manager.objectForKey(kUserFirstName, kAnna), 1);
    EXPECT_TRUE(manager.save());
    platform.keychain.status = kKeychainInteractionNotAllowed;
    EXPECT_FALSE(manager.setObject(QStringLiteral("s3cret"), kUserPassword, kAnna));
    EXPECT_FALSE(manager.setObject(QStringLiteral("k3y"), kUserEncryptionKey, kAnna));
}

TEST_F(UserManagerTest, NothingIsChangedWhileThePreferencesCannotBeRead) {
    const QString log = logToFile(kLogLevelError);
    const QVariantList list{record(kAnna, {{kAccountId, 5}})};
    setList(list);
    select(kAnna);
    int refused = 0;
    const auto isRefused = [&](const std::function<bool()> &change) {
        platform.transcript.failAt(QStringLiteral("change"), 1);
        EXPECT_FALSE(change());
        ++refused;
        EXPECT_EQ(linesOf(log).size(), refused);
        EXPECT_EQ(linesOf(log).last(),
                  QStringLiteral("ERR The preferences \"/preferences.plist\" can't be read; nothing was changed"));
        EXPECT_EQ(platform.userDefaults.stored, (QVariantMap{{kUserList, list}, {kLastUsedUserName, kAnna}}));
    };
    isRefused([this] { return manager.setObject(1, kUserFirstName, kBert); });
    isRefused([this] { return manager.removeObjectForKey(kAccountId, kAnna); });
    isRefused([this] { return manager.saveUser(record(kBert), kBert); });
    isRefused([this] { return manager.updateUserWithUsername(kBert, 5); });
    isRefused([this] { return manager.removeIncompleteUser(kAnna); });
    isRefused([this] { return manager.load(); });
    isRefused([this] {
        manager.removeUser(kAnna, false);
        runThreads();
        return false;
    });
}

TEST_F(UserManagerTest, ManyUsersAreNoBurden) {
    constexpr int kUsers = 10'000;
    QVariantList list;
    for (int i = 0; i < kUsers; ++i) {
        list << record(QString::number(i), {{kAccountId, i % 2}});
    }
    setList(list);
    for (int i = 0; i < kUsers; ++i) {
        ASSERT_EQ(manager.objectForKeyAsInt(kAccountId, QString::number(i), -1), i % 2);
    }
    manager.updateUserWithUsername(QStringLiteral("new"), 1);
    EXPECT_EQ(manager.userList().size(), kUsers);
    EXPECT_EQ(names().count(QStringLiteral("new")), kUsers / 2);
    EXPECT_EQ(synchronizations(), 1);
}

} // namespace
} // namespace quillmark

#include "accounts/UserManager.h"

#include "accounts/KeyList.h"
#include "accounts/KeychainManager.h"
#include "platform/files/Path.h"
#include "support/LogFixture.h"
#include "support/ValuePrinter.h"
#include "texts/LocalizedStrings.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <unistd.h>

namespace quillmark {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;
using Limits = std::numeric_limits<std::int32_t>;

/// Writes down what it is told.
class Observer final : public UserManager::RemovalObserver {
public:
    Texts told;
    void removeUserFinished() override { told.emplace_back("finished"); }
    void cacheStays(const std::string &path, const std::string &reason) override {
        told.insert(told.end(), {path, reason});
    }
};

class UserManagerTest : public test::LogFixture {
protected:
    UserManagerTest() {
        platform.bundle.strings["ProductName"] = "Quillmark";
        _setStandardStreams(nullptr, nullptr);
    }

    static UserRecord record(const std::string &name, const UserRecord &more = {}) {
        UserRecord result = more;
        result[kUserUserName] = name;
        return result;
    }
    void setList(const List &list) { platform.userDefaults.stored[kUserList] = list; }
    void setList(const List &list, const std::string &selected) {
        setList(list);
        select(selected);
    }
    void select(const std::string &name) { platform.userDefaults.stored[kLastUsedUserName] = name; }
    /// A list of one user, who is the selected one, with one setting.
    void setSetting(Key key, const Value &value) { setList({record(kAnna, {{key, value}})}, kAnna); }
    /// The names of the stored list.
    Texts names() const {
        Texts result;
        for (const Value &entry : manager.userList()) {
            result.push_back(valueOf(entry.dictionary(), kUserUserName).text().value_or("-"));
        }
        return result;
    }
    std::optional<std::string> keychainText(const std::string &user) const {
        const auto item = platform.keychain.items.find({"Quillmark", user});
        return item != platform.keychain.items.end() ? std::optional(item->second) : std::nullopt;
    }
    std::ptrdiff_t synchronizations() const { return std::ranges::count(platform.transcript.calls(), "synchronize"); }
    /// Runs what was to run on a thread of its own.
    void runThreads() {
        for (const auto &body : std::exchange(platform.mainThread.threads, {})) {
            body();
        }
    }
    /// A cache with a file in it, at LOCATION/.QM/NAME.
    std::string makeCache(const std::string &name) {
        home.write("Data/.QM/" + name + "/part/file", "cached");
        return home.path("Data/.QM/" + name);
    }
    UserRecord cacheSettings(const std::string &name) const {
        return {{kCacheLocation, home.path("Data")}, {kUserCacheName, name}};
    }
    void removeWithCache(const UserRecord &settings) {
        setList({record(kAnna, settings)});
        manager.removeUser(kAnna, true);
        runThreads();
    }

    static inline const std::string kAnna = "anna";
    static inline const std::string kBert = "bert";

private:
    LocalizedStrings m_strings{platform.bundle};
    KeychainManager m_keychain{platform.keychain, m_strings};

protected:
    UserManager manager{m_keychain};
};

// Records

TEST_F(UserManagerTest, AnUnknownUserHasANewRecordOfSixDefaults) {
    EXPECT_EQ(manager.userWithUserName(kAnna), (UserRecord{{"ConnectionSpeedDown", 512},
                                                           {"ConnectionSpeedUp", 64},
                                                           {"ConnectionCount", 4},
                                                           {"DownloadBandwidth", 100},
                                                           {"UploadBandwidth", 100},
                                                           {"EncryptTransfers", 1}}));
    EXPECT_FALSE(manager.doesUserKeyExists(kAnna));
    EXPECT_TRUE(manager.userList().empty());
}

TEST_F(UserManagerTest, TheFirstRecordOfANameIsTheUsers) {
    setList({record(kBert), record(kAnna, {{kUserFirstName, 1}}), record(kAnna, {{kUserFirstName, 2}})});
    EXPECT_EQ(valueOf(manager.userWithUserName(kAnna), kUserFirstName), 1);
    EXPECT_TRUE(manager.doesUserKeyExists(kAnna));
}

TEST_F(UserManagerTest, NamesAreComparedExactly) {
    setList({record(kAnna)});
    EXPECT_FALSE(manager.doesUserKeyExists("Anna"));
    EXPECT_FALSE(manager.doesUserKeyExists("anna "));
    EXPECT_FALSE(manager.doesUserKeyExists(std::nullopt));
}

TEST_F(UserManagerTest, EntriesThatAreNoRecordsBelongToNobodyAndStay) {
    List odd{"anna", 7, List{1}, UserRecord{{kUserUserName, 5}}, Value(), UserRecord{{kUserFirstName, "x"}}};
    setList(odd);
    EXPECT_FALSE(manager.doesUserKeyExists(kAnna));
    EXPECT_FALSE(manager.doesUserKeyExists("5"));
    EXPECT_FALSE(manager.doesUserKeyExists(""));
    manager.saveUser(record(kAnna), kAnna);
    odd.emplace_back(record(kAnna));
    EXPECT_EQ(manager.userList(), odd);
}

TEST_F(UserManagerTest, AListThatIsNoneIsEmpty) {
    platform.userDefaults.stored[kUserList] = "anna";
    EXPECT_TRUE(manager.userList().empty());
    manager.saveUser(record(kAnna), kAnna);
    EXPECT_EQ(names(), Texts{kAnna});
}

TEST_F(UserManagerTest, AChangedListIsSeenAtOnce) {
    for (int round = 0; round < 100; ++round) {
        setList({record(kAnna, {{kUserFirstName, round}})});
        EXPECT_EQ(valueOf(manager.userWithUserName(kAnna), kUserFirstName), round);
    }
    setList({});
    EXPECT_FALSE(manager.doesUserKeyExists(kAnna));
}

TEST_F(UserManagerTest, EveryReaderSeesOneConnection) { // deliberate: whatever the record holds
    setList({record(kAnna, {{kUserConnectionCount, 4}})});
    for (const std::string &user : {kAnna, kBert}) {
        EXPECT_EQ(manager.objectForKey(kUserConnectionCount, user), 1);
        EXPECT_EQ(manager.objectForKeyAsString(kUserConnectionCount, user), "1");
        EXPECT_EQ(manager.objectForKeyAsInt(kUserConnectionCount, user, 7), 1);
        EXPECT_EQ(manager.objectForKeyAsLong(kUserConnectionCount, user, 7), 1);
        EXPECT_EQ(manager.objectForKeyAsArray(kUserConnectionCount, user), 4); // but for this one
    }
}

TEST_F(UserManagerTest, ValuesComeBackAsTheyAreStored) {
    const List list{1, "two"};
    setList({record(kAnna, {{kUserFirstName, list}, {kUserLastName, 2.5}})});
    EXPECT_EQ(manager.objectForKey(kUserFirstName, kAnna), list);
    EXPECT_EQ(manager.objectForKeyAsArray(kUserFirstName, kAnna), list);
    EXPECT_EQ(manager.objectForKeyAsArray(kUserLastName, kAnna), 2.5); // deliberate: unconverted
    EXPECT_TRUE(manager.objectForKeyAsString(kUserLastName, kAnna).is<double>());
    EXPECT_TRUE(manager.objectForKey(kUserCacheName, kAnna).isNothing());
    EXPECT_TRUE(manager.objectForKeyAsString(kUserCacheName, kAnna).isNothing());
}

TEST_F(UserManagerTest, NumbersAreReadFromNumbersAndTexts) {
    const auto read = [this](const Value &value) {
        setList({record(kAnna, {{kUserAccountType, value}})});
        return std::pair(manager.objectForKeyAsInt(kUserAccountType, kAnna, -5),
                         manager.objectForKeyAsLong(kUserAccountType, kAnna, -5));
    };
    const auto both = [](std::int64_t number) { return std::pair(static_cast<std::int32_t>(number), number); };
    EXPECT_EQ(read(9), both(9));
    EXPECT_EQ(read(true), both(1));
    EXPECT_EQ(read(2.9), both(2));
    EXPECT_EQ(read(2.9F), both(2));
    EXPECT_EQ(read(12L), both(12));
    EXPECT_EQ(read(12UL), both(12));
    EXPECT_EQ(read(" 12 apples"), both(12));
    EXPECT_EQ(read("apples"), both(0));
    EXPECT_EQ(read(List{1}), both(-5));
    EXPECT_EQ(read(Bytes{"1"}), both(-5));
    EXPECT_EQ(read(Value()), both(-5));
    EXPECT_EQ(read(std::int64_t{1} << 40), std::pair(Limits::max(), std::int64_t{1} << 40));
    EXPECT_EQ(read("-99999999999"), std::pair(Limits::min(), std::int64_t{-99999999999}));
}

TEST_F(UserManagerTest, AMissingValueOfAnUnknownUserIsThatOfANewRecord) { // deliberate: the two differ
    setList({record(kAnna)});
    EXPECT_EQ(manager.objectForKeyAsInt(kUserEncryptTransfers, kBert, 0), 1);
    EXPECT_EQ(manager.objectForKeyAsInt(kUserEncryptTransfers, kAnna, 0), 0);
    EXPECT_EQ(manager.objectForKeyAsInt(kUserAccountType, kBert, 10), 10);
}

TEST_F(UserManagerTest, ASettingOfAnUnknownUserMakesARecordAtTheEnd) {
    setList({record(kBert)});
    manager.setObject("Anna", kUserFirstName, kAnna);
    UserRecord expected = UserManager::setupUserDefaults();
    expected[kUserFirstName] = "Anna";
    expected[kUserUserName] = kAnna;
    EXPECT_EQ(manager.userList(), (List{record(kBert), expected}));
    EXPECT_EQ(synchronizations(), 1);
}

TEST_F(UserManagerTest, ARecordMovesToTheEndWhenItIsSaved) {
    setList({record(kAnna), record(kBert), record(kAnna, {{kUserFirstName, 2}})});
    manager.setObject(3, kUserLastName, kAnna, false); // the flag has no effect
    EXPECT_EQ(manager.userList(), (List{record(kBert), record(kAnna, {{kUserLastName, 3}})}));
}

TEST_F(UserManagerTest, TheNameOfARecordCannotBeSetApartFromItsUser) {
    setList({record(kAnna)});
    manager.setObject(kBert, kUserUserName, kAnna);
    EXPECT_EQ(names(), Texts{kAnna});
}

TEST_F(UserManagerTest, AnAbsentValueChangesNothing) {
    manager.setObject(Value(), kUserFirstName, kAnna);
    manager.setObject(Value(), kUserPassword, kAnna);
    EXPECT_TRUE(platform.transcript.calls().empty());
}

TEST_F(UserManagerTest, ARemovedSettingIsGoneAndSaved) {
    setList({record(kAnna, {{kUserFirstName, 1}, {kUserLastName, 2}}), record(kBert)});
    manager.removeObjectForKey(kUserFirstName, kAnna);
    EXPECT_EQ(manager.userList(), (List{record(kBert), record(kAnna, {{kUserLastName, 2}})}));
    EXPECT_EQ(synchronizations(), 1);
}

TEST_F(UserManagerTest, ARemovedSettingOfAnUnknownUserLeavesARecordWithoutAName) { // deliberate: cleaning drops it
    manager.removeObjectForKey(kUserEncryptTransfers, kAnna);
    UserRecord expected = UserManager::setupUserDefaults();
    expected.erase(kUserEncryptTransfers);
    EXPECT_EQ(manager.userList(), List{expected});
}

TEST_F(UserManagerTest, SavingTakesTheRecordAsItIs) {
    setList({record(kAnna), record(kBert)});
    manager.saveUser(record(kBert, {{kUserFirstName, 1}}), kAnna);
    EXPECT_EQ(manager.userList(), (List{record(kBert), record(kBert, {{kUserFirstName, 1}})}));
}

// Secrets

TEST_F(UserManagerTest, APasswordGoesToTheKeychainAlone) {
    setList({record(kAnna)});
    manager.setObject("s3cret", kUserPassword, kAnna);
    EXPECT_EQ(manager.userList(), List{record(kAnna)});
    EXPECT_EQ(keychainText(kAnna), R"({"password":"s3cret"})");
    EXPECT_EQ(manager.objectForKey(kUserPassword, kAnna), "s3cret");
    EXPECT_EQ(manager.objectForKeyAsString(kUserPassword, kAnna), "s3cret");
    EXPECT_EQ(synchronizations(), 0);
}

TEST_F(UserManagerTest, AnEncryptionKeyGoesToTheKeychainAlone) {
    manager.setObject("k3y", kUserEncryptionKey, kAnna);
    EXPECT_TRUE(manager.userList().empty());
    EXPECT_EQ(keychainText(kAnna), R"({"encryptionKey":"k3y"})");
    EXPECT_EQ(manager.objectForKey(kUserEncryptionKey, kAnna), "k3y");
    EXPECT_EQ(manager.objectForKeyAsString(kUserEncryptionKey, kAnna), "k3y");
}

TEST_F(UserManagerTest, SecretsThatAreNotThereAreAbsent) {
    EXPECT_TRUE(manager.objectForKey(kUserPassword, kAnna).isNothing());
    EXPECT_TRUE(manager.objectForKey(kUserEncryptionKey, kAnna).isNothing());
}

TEST_F(UserManagerTest, RemovingASecretsKeyLeavesTheKeychainAlone) { // deliberate
    manager.setObject("s3cret", kUserPassword, kAnna);
    manager.removeObjectForKey(kUserPassword, kAnna);
    EXPECT_EQ(manager.objectForKey(kUserPassword, kAnna), "s3cret");
}

// Renaming

TEST_F(UserManagerTest, AnAccountThatIsRenamedTakesTheEndOfTheList) {
    setList({record(kAnna, {{kAccountId, 5}, {kUserFirstName, 1}}), record(kBert, {{kAccountId, 6}})});
    manager.updateUserWithUsername("new", 5);
    EXPECT_EQ(manager.userList(),
              (List{record(kBert, {{kAccountId, 6}}), record("new", {{kAccountId, 5}, {kUserFirstName, 1}})}));
    EXPECT_EQ(synchronizations(), 1);
}

TEST_F(UserManagerTest, AccountNumbersMayBeTexts) {
    setList({record(kAnna, {{kAccountId, "5"}})});
    manager.updateUserWithUsername(kBert, 5);
    EXPECT_EQ(names(), Texts{kBert});
}

TEST_F(UserManagerTest, RenamingAnUnknownAccountChangesNothing) {
    setList({record(kAnna), record(kBert, {{kAccountId, 6}})});
    manager.updateUserWithUsername("new", 0);
    EXPECT_EQ(names(), (Texts{kAnna, kBert}));
    EXPECT_EQ(synchronizations(), 0);
}

TEST_F(UserManagerTest, RenamingReplacesOtherRecordsOfTheOldNames) {
    const UserRecord account{{kAccountId, 5}};
    setList({record(kAnna), record(kAnna, account), record(kBert, account), record("c")});
    manager.updateUserWithUsername("new", 5);
    EXPECT_EQ(names(), (Texts{"c", "new", "new"}));
}

TEST_F(UserManagerTest, RenamingToANameThatTheAccountHasHadKeepsItsLastRecord) {
    setList(
        {record(kAnna, {{kAccountId, 5}, {kUserFirstName, 1}}), record(kBert, {{kAccountId, 5}, {kUserFirstName, 2}})});
    manager.updateUserWithUsername(kBert, 5);
    EXPECT_EQ(manager.userList(), List{record(kBert, {{kAccountId, 5}, {kUserFirstName, 2}})});
}

TEST_F(UserManagerTest, ARecordWithoutANameGetsACopyWithOne) {
    const UserRecord nameless{{kAccountId, 5}};
    setList({nameless});
    manager.updateUserWithUsername(kAnna, 5);
    EXPECT_EQ(manager.userList(), (List{nameless, record(kAnna, nameless)}));
}

TEST_F(UserManagerTest, ARecordWithoutANameTakesNoPlaceOfOneWithAnEmptyName) {
    const UserRecord nameless{{kAccountId, 5}};
    const UserRecord empty = record("");
    setList({nameless, empty});
    manager.updateUserWithUsername(kAnna, 5);
    EXPECT_EQ(manager.userList(), (List{nameless, empty, record(kAnna, nameless)}));
}

// The selected user

TEST_F(UserManagerTest, WithoutASelectedUserItsNameIsEmptyAndThePreviousOneAbsent) {
    EXPECT_EQ(manager.lastUsedUserName(), "");
    EXPECT_EQ(manager.previousAddUserName(), std::nullopt);
    select(kAnna);
    EXPECT_EQ(manager.lastUsedUserName(), kAnna);
    platform.userDefaults.stored[kLastUsedUserName] = 5;
    EXPECT_EQ(manager.lastUsedUserName(), "");
}

TEST_F(UserManagerTest, BothNamesAreStoredAndRemoved) {
    manager.setLastUsedUserName(kAnna);
    manager.setPreviousAddUserName(kBert);
    EXPECT_EQ(platform.userDefaults.stored, (Dictionary{{kLastUsedUserName, kAnna}, {kPreviousAddUserName, kBert}}));
    EXPECT_EQ(manager.previousAddUserName(), kBert);
    manager.setLastUsedUserName(std::nullopt);
    manager.setPreviousAddUserName(std::nullopt);
    EXPECT_TRUE(platform.userDefaults.stored.empty());
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
    EXPECT_EQ(manager.selectedUserClientIdent(), std::nullopt);
    EXPECT_EQ(manager.selectedUserCachePath(), std::nullopt);
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
        const auto answer = [&](const Value &value) {
            setSetting(row.key, value);
            return (manager.*row.accessor)();
        };
        setList({record(kAnna)}, kAnna);
        EXPECT_EQ((manager.*row.accessor)(), row.whenAbsent) << row.key;
        EXPECT_EQ(answer(0), row.when0) << row.key;
        EXPECT_EQ(answer(1), row.when1) << row.key;
        EXPECT_EQ(answer("1"), row.when1) << row.key;
        EXPECT_EQ(answer(9), row.when9) << row.key;
        EXPECT_EQ(answer(List{1}), row.whenAbsent) << row.key;
    }
}

TEST_F(UserManagerTest, TeamFoldersGiveADriveToThoseWhoHaveNone) {
    setList({record(kAnna, {{kUserAllowQMDisk, 0}, {kUserShowTeamFolders, 1}})}, kAnna);
    EXPECT_FALSE(manager.selectedUserEnableQMDisk());
    EXPECT_TRUE(manager.selectedUserHasQMDisk());
}

TEST_F(UserManagerTest, TextsOfTheSelectedUserAreAbsentWhenTheyAreNoTexts) {
    setList({record(kAnna, {{kUserClientIdent, "id"}, {kCacheLocation, "/Volumes/Data"}, {kUserCacheName, "u1"}})},
            kAnna);
    EXPECT_EQ(manager.selectedUserClientIdent(), "id");
    EXPECT_TRUE(manager.selectedUserHaveClientIdent());
    EXPECT_EQ(manager.selectedUserCacheLocation(), "/Volumes/Data");
    EXPECT_EQ(manager.selectedUserCacheName(), "u1");
    EXPECT_EQ(manager.selectedUserCachePath(), "/Volumes/Data/.QM/u1");
    setSetting(kUserClientIdent, "");
    EXPECT_FALSE(manager.selectedUserHaveClientIdent());
    setSetting(kUserClientIdent, 5);
    EXPECT_EQ(manager.selectedUserClientIdent(), std::nullopt);
}

TEST_F(UserManagerTest, ACacheLiesInAHiddenFolderOfItsLocation) {
    const auto pathFor = [this](const UserRecord &settings) {
        setList({record(kAnna, settings)});
        return manager.userCachePath(kAnna);
    };
    EXPECT_EQ(pathFor({{kCacheLocation, "/Data/"}, {kUserCacheName, "u1"}}), "/Data/.QM/u1");
    EXPECT_EQ(pathFor({{kCacheLocation, "/"}, {kUserCacheName, "u1"}}), "/.QM/u1");
    EXPECT_EQ(pathFor({{kCacheLocation, "/Data//x/"}, {kUserCacheName, "u1//"}}), "/Data/x/.QM/u1");
    EXPECT_EQ(pathFor({{kCacheLocation, ""}, {kUserCacheName, "u1"}}), ".QM/u1");
    EXPECT_EQ(pathFor({{kUserCacheName, "u1"}}), std::nullopt);
    EXPECT_EQ(pathFor({{kCacheLocation, "/Data"}}), std::nullopt);
    EXPECT_EQ(manager.userCachePath(kBert), std::nullopt);
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
    setList({record(kAnna), record(kBert), record(kAnna)}, kAnna);
    manager.setObject("s3cret", kUserPassword, kAnna);
    Observer observer;
    manager.removeUser(kAnna, false, &observer);
    EXPECT_EQ(names().size(), 3U); // nothing has happened yet
    runThreads();
    EXPECT_EQ(names(), Texts{kBert});
    EXPECT_EQ(manager.lastUsedUserName(), "");
    EXPECT_EQ(synchronizations(), 1);
    EXPECT_EQ(observer.told, Texts());
    platform.mainThread.pump();
    EXPECT_EQ(observer.told, Texts{"finished"});
    EXPECT_EQ(manager.objectForKey(kUserPassword, kAnna), "s3cret"); // deliberate: it is kept
}

TEST_F(UserManagerTest, AnotherSelectedUserStaysSelectedAndNobodyNeedsToBeTold) {
    setList({record(kAnna), record(kBert)}, kBert);
    manager.removeUser(kAnna, false);
    runThreads();
    EXPECT_EQ(manager.lastUsedUserName(), kBert);
    EXPECT_EQ(platform.mainThread.pump(), 0);
}

TEST_F(UserManagerTest, ACacheIsDeletedOnlyWhenThatIsWished) {
    const std::string cache = makeCache("u1");
    const std::string others = makeCache("u2");
    const UserRecord settings = cacheSettings("u1");
    setList({record(kAnna, settings)});
    manager.removeUser(kAnna, false);
    runThreads();
    EXPECT_TRUE(fs::exists(cache));
    removeWithCache(settings);
    EXPECT_FALSE(fs::exists(cache));
    EXPECT_TRUE(fs::exists(others));
    EXPECT_TRUE(names().empty());
}

TEST_F(UserManagerTest, ALinkInACacheIsDeletedAndNotFollowed) {
    const std::string precious = home.write("Documents/letter", "kept");
    const std::string cache = makeCache("u1");
    fs::create_symlink(home.path("Documents"), cache + "/part/link");
    removeWithCache(cacheSettings("u1"));
    EXPECT_FALSE(fs::exists(cache));
    EXPECT_EQ(test::readAll(precious), "kept");

    // The cache itself may be a link, too.
    fs::create_symlink(home.path("Documents"), cache);
    removeWithCache(cacheSettings("u1"));
    EXPECT_FALSE(fs::is_symlink(cache));
    EXPECT_EQ(test::readAll(precious), "kept");
}

TEST_F(UserManagerTest, ACacheOutsideTheCachesFolderIsRefusedAndTheRecordRemovedAllTheSame) {
    const std::string precious = home.write("Data/letter", "kept");
    const std::string other = makeCache("u2") + "/part/file";
    const std::string log = logToFile(kLogLevelError);
    const std::string location = home.path("Data");
    for (const std::string &name : Texts{"..", "u1/../..", "../letter", precious, "/", "", ".", "u2/..", "./u2"}) {
        removeWithCache({{kCacheLocation, location}, {kUserCacheName, name}});
        EXPECT_TRUE(names().empty()) << name;
        EXPECT_EQ(linesOf(log).back(), "ERR The cache \"" + appendingPathComponent(location + "/.QM", name) +
                                           "\" of \"anna\" is not removed: its name can't be a folder's");
    }
    removeWithCache({{kCacheLocation, "Data"}, {kUserCacheName, "u2"}});
    EXPECT_EQ(linesOf(log).back(), "ERR The cache \"Data/.QM/u2\" of \"anna\" is not removed: its location "
                                   "is not an absolute path");
    EXPECT_EQ(test::readAll(precious), "kept");
    EXPECT_EQ(test::readAll(other), "cached");
}

TEST_F(UserManagerTest, ACacheBehindALinkInItsNameIsRefused) {
    const std::string precious = home.write("Documents/u1/letter", "kept");
    const std::string log = logToFile(kLogLevelError);
    home.makeFolder("Data/.QM");
    fs::create_symlink(home.path("Documents"), home.path("Data/.QM/link"));
    removeWithCache(cacheSettings("link/u1"));
    EXPECT_EQ(linesOf(log).size(), 1U);
    EXPECT_TRUE(linesOf(log).back().ends_with("is not removed: a link lies in its way"));
    EXPECT_EQ(test::readAll(precious), "kept");
}

TEST_F(UserManagerTest, ACacheThatWasMovedToABiggerDiskIsDeletedThere) {
    const std::string others = home.write("Big/u2/file", "cached");
    home.write("Big/u1/part/file", "cached");
    const std::string link = home.makeFolder("Data") + "/.QM";
    fs::create_symlink(home.path("Big"), link);
    removeWithCache(cacheSettings("u1"));
    EXPECT_FALSE(fs::exists(home.path("Big/u1")));
    EXPECT_EQ(test::readAll(others), "cached");
    EXPECT_TRUE(fs::is_symlink(link));
}

TEST_F(UserManagerTest, ACacheThatStaysIsTold) {
    const auto toldOf = [this](const std::string &name) {
        setList({record(kAnna, cacheSettings(name))});
        Observer observer;
        manager.removeUser(kAnna, true, &observer);
        runThreads();
        platform.mainThread.pump();
        EXPECT_TRUE(names().empty());
        return observer.told;
    };
    const std::string caches = home.makeFolder("Data") + "/.QM";
    const std::string finished = "finished";
    for (const std::string &target : {std::string("/proc"), home.path("unplugged")}) {
        fs::create_symlink(target, caches); // nobody's but root's, and nothing at all
        if (::geteuid() != 0 || target != "/proc") {
            EXPECT_EQ(toldOf("u1"), (Texts{caches + "/u1",
                                           "the link \"" + caches + "\" leads to no folder of the user's", finished}));
        }
        fs::remove(caches);
    }
    const std::string kept = home.write("Elsewhere/file", "kept");
    home.makeFolder("Data/.QM");
    fs::create_symlink(home.path("Elsewhere"), caches + "/u1");
    EXPECT_EQ(toldOf("u1"), (Texts{home.path("Elsewhere"), "only a link to it was the user's cache", finished}));
    EXPECT_EQ(test::readAll(kept), "kept");
    makeCache("u1");
    EXPECT_EQ(toldOf("u1/"), Texts{finished}); // a slash at the end means nothing
    EXPECT_FALSE(fs::exists(caches + "/u1"));
    EXPECT_EQ(toldOf("..").size(), 3U);
}

TEST_F(UserManagerTest, ACacheThatIsNotThereIsNoFault) {
    const std::string log = logToFile(kLogLevelError);
    removeWithCache({{kCacheLocation, home.path()}, {kUserCacheName, "none"}});
    removeWithCache({});
    EXPECT_TRUE(names().empty());
    EXPECT_TRUE(linesOf(log).empty());
}

// Housekeeping

TEST_F(UserManagerTest, CleaningDropsRecordsWithoutAName) {
    setList({UserRecord{{kUserFirstName, 1}}, record(kAnna), "no record", record(kBert)}, kAnna);
    manager.load();
    EXPECT_EQ(names(), (Texts{kAnna, kBert}));
    EXPECT_EQ(manager.lastUsedUserName(), kAnna);
    EXPECT_EQ(synchronizations(), 1);
}

TEST_F(UserManagerTest, CleaningDropsAUserByNameAsWell) {
    setList({record(kAnna), UserRecord{}, record(kBert), record(kAnna)}, kAnna);
    manager.removeIncompleteUser(kAnna);
    EXPECT_EQ(names(), Texts{kBert});
    EXPECT_FALSE(platform.userDefaults.stored.contains(kLastUsedUserName));
}

TEST_F(UserManagerTest, PreferencesThatCannotBeWrittenAreToldOfAndValuesStay) {
    const std::string log = logToFile(kLogLevelError);
    platform.transcript.failAt("synchronize", 1);
    EXPECT_FALSE(manager.setObject(1, kUserFirstName, kAnna));
    EXPECT_EQ(linesOf(log), Texts{"ERR The preferences \"/preferences.plist\" can't be written; what "
                                  "was set is kept until this program ends"});
    EXPECT_EQ(manager.objectForKey(kUserFirstName, kAnna), 1);
    EXPECT_TRUE(manager.save());
    platform.keychain.status = kKeychainInteractionNotAllowed;
    EXPECT_FALSE(manager.setObject("s3cret", kUserPassword, kAnna));
    EXPECT_FALSE(manager.setObject("k3y", kUserEncryptionKey, kAnna));
}

TEST_F(UserManagerTest, NothingIsChangedWhileThePreferencesCannotBeRead) {
    const std::string log = logToFile(kLogLevelError);
    const List list{record(kAnna, {{kAccountId, 5}})};
    setList(list, kAnna);
    size_t refused = 0;
    const auto isRefused = [&](const std::function<bool()> &change) {
        platform.transcript.failAt("change", 1);
        EXPECT_FALSE(change());
        ++refused;
        EXPECT_EQ(linesOf(log).size(), refused);
        EXPECT_EQ(linesOf(log).back(), "ERR The preferences \"/preferences.plist\" can't be read; nothing was changed");
        EXPECT_EQ(platform.userDefaults.stored, (Dictionary{{kUserList, list}, {kLastUsedUserName, kAnna}}));
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
    List list;
    for (int i = 0; i < kUsers; ++i) {
        list.emplace_back(record(std::to_string(i), {{kAccountId, i % 2}}));
    }
    setList(list);
    for (int i = 0; i < kUsers; ++i) {
        ASSERT_EQ(manager.objectForKeyAsInt(kAccountId, std::to_string(i), -1), i % 2);
    }
    manager.updateUserWithUsername("new", 1);
    EXPECT_EQ(std::ssize(manager.userList()), kUsers);
    EXPECT_EQ(std::ranges::count(names(), "new"), kUsers / 2);
    EXPECT_EQ(synchronizations(), 1);
}

} // namespace
} // namespace quillmark

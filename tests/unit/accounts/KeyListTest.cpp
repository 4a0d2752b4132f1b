#include "accounts/KeyList.h"

#include "support/ValuePrinter.h"
#include "utils/FoldedCase.h"
#include "utils/ReplaceAll.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <type_traits>
#include <vector>

using namespace quillmark;

namespace {

struct Row {
    const char *name;
    const Key *key;
    std::string_view text;
};

struct Group {
    std::string_view title;
    std::vector<Row> rows;
};

#define KEY(name) #name, &name

/// What the list has to say, written down a second time: installed programs, stored preferences and messages depend on
/// every single text.
const std::vector<Group> expectedGroups{
    {"Install-check catalogue",
     {{KEY(kInstallType), "Type"},
      {KEY(kName), "Name"},
      {KEY(kResource), "Resource"},
      {KEY(kInstallPath), "InstallPath"},
      {KEY(kImage), "Image"},
      {KEY(kWebsiteURL), "WebsiteURL"},
      {KEY(kLicense), "License"},
      {KEY(kInstaller), "Installer"},
      {KEY(kDescription), "Description"},
      {KEY(kSignature), "Signature"},
      {KEY(kVersion), "Version"},
      {KEY(kMaxMacOSXVersion), "MaxMacOSX"},
      {KEY(kMinMacOSXVersion), "MinMacOSX"}}},
    {"Core program",
     {{KEY(kToolPath), "/Library/Application Support/Quillmark/%@"},
      {KEY(kExecutableName), "Quillmark"},
      {KEY(kMonoExecutableName), "MonoWrapperMain"},
      {KEY(kMonoMacNamespace), "Quillmark.Mac"},
      {KEY(kMonoCommandHandlerClassName), "CommandHandler"}}},
    {"Configuration",
     {{KEY(kConfigIntegrityCheck), "IntegrityCheck"},
      {KEY(kServiceStatusURL), "StatusURL"},
      {KEY(kHelpURL), "HelpURL"},
      {KEY(kForgotDetailsURL), "ForgotDetailsURL"},
      {KEY(kRegisterURL), "RegisterURL"},
      {KEY(kServerAddress), "ServerAddress"},
      {KEY(kServerPort), "ServerPort"},
      {KEY(kCarryfoldOverlay), "CarryfoldOverlay"},
      {KEY(kBackupOverlay), "BackupOverlay"},
      {KEY(kDisableOverlay), "DisableOverlay"},
      {KEY(kDefaultBrandedLogo), "DefaultBrandedLogo"},
      {KEY(kBackupTutorialURL), "BackupTutorial"},
      {KEY(kCarryfoldTutorialURL), "CarryfoldTutorial"},
      {KEY(kUpdateZipURL), "UpdateZipURL"},
      {KEY(kUpdateSignatureURL), "UpdateSignatureURL"},
      {KEY(kUpdateVersionCheckURL), "UpdateVersionCheckURL"},
      {KEY(kWelcomeWizardType), "WelcomeWizardType"}}},
    {"Preferences",
     {{KEY(kLastUsedUserName), "LastUsedUserName"},
      {KEY(kPreviousAddUserName), "PreviousAddUserName"},
      {KEY(kUserList), "UserList"}}},
    {"User record",
     {{KEY(kUserUserName), "UserName"},
      {KEY(kUserCacheName), "CacheName"},
      {KEY(kUserFirstName), "FirstName"},
      {KEY(kUserLastName), "LastName"},
      {KEY(kUserConnectionSpeedUp), "ConnectionSpeedUp"},
      {KEY(kUserConnectionSpeedDown), "ConnectionSpeedDown"},
      {KEY(kUserConnectionCount), "ConnectionCount"},
      {KEY(kUserDownloadBandwidth), "DownloadBandwidth"},
      {KEY(kUserUploadBandwidth), "UploadBandwidth"},
      {KEY(kUserOnlinePref), "OnlinePref"},
      {KEY(kUserCachedEmailAddresses), "CachedEmailAddresses"},
      {KEY(kUserStoreOption), "StoreOption"},
      {KEY(kUserOnlineExcludedExts), "OnlineExcludedExts"},
      {KEY(kUserLocalExcludedExts), "LocalExcludedExts"},
      {KEY(kUserOnlineLowerLimit), "OnlineLowerLimit"},
      {KEY(kUserOnlineUpperLimit), "OnlineUpperLimit"},
      {KEY(kUserLocalLowerLimit), "LocalLowerLimit"},
      {KEY(kUserLocalUpperLimit), "LocalUpperLimit"},
      {KEY(kUserBrandID), "BrandID"},
      {KEY(kUserAllowSharing), "AllowSharing"},
      {KEY(kUserAllowBackup), "AllowBackup"},
      {KEY(kUserAllowQMDisk), "AllowQMDisk"},
      {KEY(kUserEnableBackup), "EnableBackup"},
      {KEY(kUserEnableQMDisk), "EnableQMDisk"},
      {KEY(kUserEncryptTransfers), "EncryptTransfers"},
      {KEY(kUserIntegrityTime), "IntegrityTime"},
      {KEY(kUserClientIdent), "ClientIdent"},
      {KEY(kUserAccountType), "AccountType"},
      {KEY(kEnableLanTransfer), "EnableLanTransfer"},
      {KEY(kAutoQuitiTunes), "AutoQuitiTunes"},
      {KEY(kBackupShowHiddenItems), "BackupShowHiddenItems"},
      {KEY(kUserShowTeamFolders), "ShowTeamFolders"},
      {KEY(kAccountId), "AccountId"},
      {KEY(kShowStatusInDetailStatus), "ShowStatusInDetailStatus"},
      {KEY(kUserConnectionThrottleByteDown), "ThrottleBytesDown"},
      {KEY(kUserConnectionThrottleByteUp), "ThrottleBytesUp"},
      {KEY(kIgnoreServerExclusions), "IgnoreServerExclusions"},
      {KEY(kUserEncryptNewFiles), "Encrypt"},
      {KEY(kServer), "Server"},
      {KEY(kUserPassword), "Password"},
      {KEY(kUserEncryptionKey), "State"},
      {KEY(kMachineName), "MachineName"},
      {KEY(kCacheLocation), "CacheLocation"},
      {KEY(kCacheOption), "CacheOption"}}},
    {"Messages",
     {{KEY(kDesiredAccess), "desiredaccess"},
      {KEY(kUserName), "username"},
      {KEY(kType), "type"},
      {KEY(kValueName), "valueName"},
      {KEY(kValue), "val"},
      {KEY(kFilename), "filename"},
      {KEY(kFileAttributes), "attributes"},
      {KEY(kCount), "count"},
      {KEY(kItemCount), "itemcount"},
      {KEY(kHFindFile), "hFindFile"},
      {KEY(kCRC), "crc"},
      {KEY(kOffset), "offset"},
      {KEY(kData), "data"},
      {KEY(kShareMode), "sharemode"},
      {KEY(kMacFD), "macfd"},
      {KEY(kPosition), "position"},
      {KEY(kDestination), "destination"},
      {KEY(kIsDirectory), "isdirectory"},
      {KEY(kUniqueID), "identifier"},
      {KEY(kStatusText), "statustext"},
      {KEY(kStatusText2), "statustext2"},
      {KEY(kPercent), "percent"},
      {KEY(kTitle), "title"},
      {KEY(kUploadNames), "uploadNames"},
      {KEY(kUploadPaths), "uploadPaths"},
      {KEY(kDownloadNames), "downloadNames"},
      {KEY(kDownloadPaths), "downloadPaths"},
      {KEY(kMessage), "message"},
      {KEY(kPriority), "Priority"},
      {KEY(kFileList), "filelist"},
      {KEY(kOptions), "options"},
      {KEY(kAlwaysUseSelection), "alwaysuseselection"},
      {KEY(kURL), "url"},
      {KEY(kSpeed), "speed"},
      {KEY(kDownload), "download"},
      {KEY(kShareType), "sharetype"},
      {KEY(kAddressList), "addresslist"},
      {KEY(kStore), "store"},
      {KEY(kShareList), "sharelist"},
      {KEY(kShareTypeList), "sharetypelist"},
      {KEY(kBackupNames), "backupNames"},
      {KEY(kBackupPaths), "backupPaths"},
      {KEY(kLength), "length"},
      {KEY(kHashID), "hashid"},
      {KEY(kTotal), "total"},
      {KEY(kRunIntegrity), "runintegrity"},
      {KEY(kDidComplete), "didcomplete"},
      {KEY(kReason), "reason"},
      {KEY(kDefaultValue), "defaultval"},
      {KEY(kUpdateMajor), "major"},
      {KEY(kUpdateMinor), "minor"},
      {KEY(kUpdateBuild), "build"},
      {KEY(kUpdateRevision), "revision"},
      {KEY(kUpdateCritical), "updatecritical"},
      {KEY(kIndex), "index"},
      {KEY(kSize), "size"},
      {KEY(kMask), "mask"},
      {KEY(kHours), "hours"},
      {KEY(kMinutes), "minutes"},
      {KEY(kEnabled), "enabled"},
      {KEY(kLogin), "login"},
      {KEY(kClientIdentList), "ciList"},
      {KEY(kLabelList), "labelList"},
      {KEY(kIPList), "ipList"},
      {KEY(kClientIndent), "clientIndent"},
      {KEY(kExcluded), "excluded"},
      {KEY(kBackupList), "backupList"},
      {KEY(kDirectoryList), "directoryList"},
      {KEY(kParent), "parent"},
      {KEY(kConflictMode), "conflictmode"},
      {KEY(kPromptErrors), "prompterrors"},
      {KEY(kMinimum), "min"},
      {KEY(kMaximum), "max"},
      {KEY(kDataID), "dataid"},
      {KEY(kFinished), "finished"},
      {KEY(kCreationDate), "creationdate"},
      {KEY(kModifiedDate), "modifieddate"},
      {KEY(kCreateMode), "createmode"},
      {KEY(kSyncState), "syncstate"},
      {KEY(kQueueCount), "queuecount"},
      {KEY(kToolTipIcon), "tooltipicon"},
      {KEY(kComment), "comment"},
      {KEY(kCommentID), "commentId"},
      {KEY(kNeedsEncrypting), "needsencrypting"},
      {KEY(kHelpTabID), "helpTabID"}}},
    {"File types",
     {{KEY(kFileTypePriority), "Priority"},
      {KEY(kFileTypeExtensions), "Extensions"},
      {KEY(kFileTypeDescription), "Description"}}},
    {"Proxy",
     {{KEY(kProxyMode), "ProxyMode"},
      {KEY(kProxyAddress), "StaticProxyAddress"},
      {KEY(kProxyPort), "StaticProxyPort"},
      {KEY(kProxyType), "StaticProxyType"},
      {KEY(kProxyUsername), "StaticProxyUsername"},
      {KEY(kProxyPassword), "StaticProxyPassword"}}},
    {"Backup tree",
     {{KEY(kBackupName), "Name"},
      {KEY(kBackupDisplayName), "DisplayName"},
      {KEY(kBackupPath), "Path"},
      {KEY(kBackupContents), "Contents"},
      {KEY(kBackupFullContents), "FullContents"},
      {KEY(kBackupIsDirectory), "IsDirectory"},
      {KEY(kBackupIsIncludedInBackup), "IsIncludedInBackup"},
      {KEY(kBackupStatus), "Status"},
      {KEY(kBackupContainsBackups), "ContainsBackups"},
      {KEY(kBackupParent), "Parent"}}},
    {"Events",
     {{KEY(kPreSyncStarted), "PreSyncStarted"},
      {KEY(kPreSyncFinished), "PreSyncFinished"},
      {KEY(kUploadFinished), "UploadFinished"},
      {KEY(kDownloadFinished), "DownloadFinished"},
      {KEY(kBackupFinished), "BackupFinished"},
      {KEY(kOnline), "Online"},
      {KEY(kOffline), "Offline"}}},
    {"Status menu",
     {{KEY(kStatusItemTitle), "Title"},
      {KEY(kStatusItemExpandable), "Expandable"},
      {KEY(kStatusItemChildren), "Children"},
      {KEY(kStatusItemImage), "Image"},
      {KEY(kStatusItemDisabled), "Disabled"},
      {KEY(kStatusItemTabIndex), "TabIndex"},
      {KEY(kStatusItemHidden), "Hidden"}}},
    {"Conflicts",
     {{KEY(kConflictType), "conflicttype"},
      {KEY(kConflictClientFilename), "clientfilename"},
      {KEY(kConflictClientFileID), "clientfileid"},
      {KEY(kConflictClientFileType), "clientfiletype"},
      {KEY(kConflictClientSuggestedName), "clientsuggestedname"},
      {KEY(kConflictClientFilePath), "clientfilepath"},
      {KEY(kConflictServerFilename), "serverfilename"},
      {KEY(kConflictServerFileID), "serverfileid"},
      {KEY(kConflictServerFileType), "serverfiletype"},
      {KEY(kConflictServerSuggestedName), "serversuggestedname"},
      {KEY(kConflictServerFilePath), "serverfilepath"},
      {KEY(kConflictResolution), "resolution"}}},
    {"Peers",
     {{KEY(kP2PClientIdent), "ClientIdent"},
      {KEY(kP2PClientLabel), "ClientLabel"},
      {KEY(kP2PClientIP), "ClientIP"},
      {KEY(kP2PClientSelect), "ClientSelect"}}},
    {"Restore",
     {{KEY(kRestoreChildren), "Children"},
      {KEY(kRestoreChildrenFull), "ChildrenFull"},
      {KEY(kRestoreDirectory), "Directory"},
      {KEY(kRestoreChildrenFiles), "ChildrenFiles"},
      {KEY(kRestoreChildrenFilesFull), "ChildrenFilesFull"},
      {KEY(kRestoreUploaded), "Uploaded"},
      {KEY(kRestoreRowVersion), "RowVersion"},
      {KEY(kRestoreCreated), "Created"},
      {KEY(kRestoreDeleted), "Deleted"},
      {KEY(kRestoreDeletedDate), "DeletedDate"},
      {KEY(kRestoreVersionNumber), "VersionNumber"},
      {KEY(kRestoreStatsRestored), "Restored"},
      {KEY(kRestoreStatsNotRestored), "NotRestored"},
      {KEY(kRestoreStatsHasErrors), "HasErrors"},
      {KEY(kRestoreStatsTimeSpan), "TimeSpan"},
      {KEY(kRestoreStatsCancelled), "Cancelled"},
      {KEY(kRestoreStatsSize), "Size"},
      {KEY(kBackupComputers), "11111111111111111111111111111111"}}},
};

#undef KEY

const Group &expectedGroup(const std::string &title) {
    const auto group = std::ranges::find(expectedGroups, title, &Group::title);
    return group != expectedGroups.end() ? *group : throw std::invalid_argument(title);
}

std::vector<Row> allRows() {
    std::vector<Row> rows;
    for (const Group &group : expectedGroups) {
        rows.insert(rows.end(), group.rows.begin(), group.rows.end());
    }
    return rows;
}

/// The declarations as they stand in the header, one "name = text" a line under the title of their group.
std::vector<std::string> declarationsInHeader() {
    std::ifstream header(KEY_LIST_HEADER);
    EXPECT_TRUE(header) << KEY_LIST_HEADER;
    std::vector<std::string> lines;
    for (std::string line; std::getline(header, line);) {
        if (const size_t title = line.find("\\name "); title != std::string::npos) {
            lines.push_back(line.substr(title + std::size("\\name")));
        } else if (const size_t key = line.find("Key k"); key != std::string::npos) {
            const size_t begin = key + std::size("Key");
            lines.push_back(line.substr(begin, line.find("\"};") - begin));
            replaceAll(lines.back(), "{\"", " = ");
        }
    }
    return lines;
}

std::vector<std::string> expectedDeclarations() {
    std::vector<std::string> lines;
    for (const Group &group : expectedGroups) {
        lines.emplace_back(group.title);
        for (const Row &row : group.rows) {
            lines.push_back(std::string(row.name) + " = " + std::string(row.text));
        }
    }
    return lines;
}

static_assert(std::is_trivially_destructible_v<Key> && std::is_trivially_copyable_v<Key>);
static_assert(kName.size() == 4, "a key is usable at compile time");

} // namespace

TEST(KeyList, EveryKeyHasItsText) {
    for (const Row &row : allRows()) {
        EXPECT_EQ(*row.key, row.text) << row.name;
    }
}

TEST(KeyList, HasTwoHundredAndThirtyFourKeysInFourteenGroups) {
    EXPECT_EQ(allRows().size(), 234U);
    EXPECT_EQ(expectedGroups.size(), 14U);
}

TEST(KeyList, DeclaresTheKeysOfEachGroupInOrderAndNoOthers) {
    EXPECT_EQ(declarationsInHeader(), expectedDeclarations());
}

TEST(KeyList, NoTwoConstantsAreTheSameObject) {
    std::set<const Key *> keys;
    for (const Row &row : allRows()) {
        keys.insert(row.key);
    }
    EXPECT_EQ(keys.size(), 234U);
}

TEST(KeyList, SixTextsAndOnlyTheseAreSharedByTwoFamilies) {
    std::map<std::string, std::set<std::string>> namesByText;
    for (const Row &row : allRows()) {
        namesByText[std::string(row.text)].insert(row.name);
    }
    std::erase_if(namesByText, [](const auto &entry) { return entry.second.size() == 1; });
    const std::map<std::string, std::set<std::string>> shared{
        {"Name", {"kName", "kBackupName"}},
        {"Image", {"kImage", "kStatusItemImage"}},
        {"Description", {"kDescription", "kFileTypeDescription"}},
        {"Priority", {"kPriority", "kFileTypePriority"}},
        {"ClientIdent", {"kUserClientIdent", "kP2PClientIdent"}},
        {"Children", {"kStatusItemChildren", "kRestoreChildren"}}};
    EXPECT_EQ(namesByText, shared);
}

TEST(KeyList, NameAndBackupNameAreDistinctConstantsThatReadTheSameEntry) {
    const Dictionary record{{"Name", 7}};
    EXPECT_EQ(valueOf(record, kName), 7);
    EXPECT_EQ(valueOf(record, kBackupName), 7);
    EXPECT_EQ(kName, kBackupName);
    EXPECT_NE(&kName, &kBackupName);
}

TEST(KeyList, ARecordWrittenUnderEncryptNewFilesHasTheEntryEncrypt) {
    EXPECT_EQ((Dictionary{{kUserEncryptNewFiles, true}}), (Dictionary{{"Encrypt", true}}));
}

TEST(KeyList, TheEncryptionKeyOfAUserIsStoredAsState) {
    EXPECT_EQ((Dictionary{{kUserEncryptionKey, "secret"}}), (Dictionary{{"State", "secret"}}));
}

TEST(KeyList, NoTextOfAUserRecordTellsOfAKey) {
    for (const Row &row : expectedGroup("User record").rows) {
        EXPECT_EQ(foldedCase(*row.key).find(U"key"), std::u32string::npos) << row.name;
    }
}

TEST(KeyList, ThrottlesAreSingularInNameAndPluralInText) {
    EXPECT_EQ(kUserConnectionThrottleByteDown, "ThrottleBytesDown");
    EXPECT_EQ(kUserConnectionThrottleByteUp, "ThrottleBytesUp");
}

TEST(KeyList, AMessageKeepsTheMisspeltClientIndentAndAPeerRecordDoesNot) {
    EXPECT_EQ((Dictionary{{kClientIndent, 1}}), (Dictionary{{"clientIndent", 1}}));
    EXPECT_EQ((Dictionary{{kP2PClientIdent, 1}}), (Dictionary{{"ClientIdent", 1}}));
    EXPECT_EQ(kUserClientIdent, kP2PClientIdent);
}

TEST(KeyList, AbbreviatedTextsStayAbbreviated) {
    EXPECT_EQ(kValue, "val");
    EXPECT_EQ(kDefaultValue, "defaultval");
    EXPECT_EQ(kUniqueID, "identifier");
    EXPECT_EQ(kClientIdentList, "ciList");
    EXPECT_EQ(kMinimum, "min");
    EXPECT_EQ(kMaximum, "max");
    EXPECT_EQ(kMinMacOSXVersion, "MinMacOSX");
    EXPECT_EQ(kMaxMacOSXVersion, "MaxMacOSX");
}

TEST(KeyList, TutorialTextsHaveNoURL) {
    for (Key key : {kBackupTutorialURL, kCarryfoldTutorialURL}) {
        EXPECT_TRUE(key.ends_with("Tutorial"));
    }
}

TEST(KeyList, EveryProxyTextButTheModeBeginsWithStatic) {
    for (const Row &row : expectedGroup("Proxy").rows) {
        EXPECT_EQ(row.key->starts_with("StaticProxy"), *row.key != kProxyMode) << row.name;
    }
}

TEST(KeyList, OnlyPriorityIsCapitalisedAmongTheMessages) {
    for (const Row &row : expectedGroup("Messages").rows) {
        EXPECT_EQ(std::isupper(row.key->front()) != 0, *row.key == kPriority) << row.name;
    }
}

TEST(KeyList, TheBackedUpComputersHaveAnIdentifierOfThirtyTwoOnes) {
    EXPECT_EQ(kBackupComputers, std::string(32, '1'));
}

TEST(KeyList, TheToolPathTakesTheNameOfTheToolOnce) {
    EXPECT_EQ(kToolPath.find("%@"), kToolPath.rfind("%@"));
    EXPECT_TRUE(kToolPath.ends_with("/%@"));
}

TEST(Key, BecomesAViewWithoutCopyingItsText) {
    const std::string_view text = kUserList;
    EXPECT_EQ(text.data(), kUserList.data());
    EXPECT_EQ(text, "UserList");
}

TEST(Key, StaysAsItIsWhenAStringMadeFromItChanges) {
    std::string text = kUserList;
    text[0] = 'u';
    text += 's';
    EXPECT_EQ(text, "userLists");
    EXPECT_EQ(kUserList, "UserList");
}

TEST(Key, ComparesWithTextsExactly) {
    EXPECT_TRUE(kName == std::string("Name"));
    EXPECT_TRUE(std::string("Name") == kName);
    EXPECT_TRUE(std::string_view("Name") == kName);
    EXPECT_TRUE(kName != "name");
    EXPECT_TRUE(kName != "Nam");
    EXPECT_TRUE(kName != kType);
    EXPECT_FALSE(kName.empty());
}

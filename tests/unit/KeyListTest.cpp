#include "accounts/KeyList.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QVariantMap>

#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

using namespace quillmark;

namespace {

struct Row {
    const char *name;
    const Key *key;
    QStringView text;
};

struct Group {
    const char *title;
    std::vector<Row> rows;
};

#define KEY(name) #name, &name

/// What the list has to say, written down a second time: installed programs, stored preferences and messages depend on
/// every single text.
const std::vector<Group> expectedGroups{
    {"Install-check catalogue",
     {
         {KEY(kInstallType), u"Type"},
         {KEY(kName), u"Name"},
         {KEY(kResource), u"Resource"},
         {KEY(kInstallPath), u"InstallPath"},
         {KEY(kImage), u"Image"},
         {KEY(kWebsiteURL), u"WebsiteURL"},
         {KEY(kLicense), u"License"},
         {KEY(kInstaller), u"Installer"},
         {KEY(kDescription), u"Description"},
         {KEY(kSignature), u"Signature"},
         {KEY(kVersion), u"Version"},
         {KEY(kMaxMacOSXVersion), u"MaxMacOSX"},
         {KEY(kMinMacOSXVersion), u"MinMacOSX"},
     }},
    {"Core program",
     {
         {KEY(kToolPath), u"/Library/Application Support/Quillmark/%@"},
         {KEY(kExecutableName), u"Quillmark"},
         {KEY(kMonoExecutableName), u"MonoWrapperMain"},
         {KEY(kMonoMacNamespace), u"Quillmark.Mac"},
         {KEY(kMonoCommandHandlerClassName), u"CommandHandler"},
     }},
    {"Configuration",
     {
         {KEY(kConfigIntegrityCheck), u"IntegrityCheck"},
         {KEY(kServiceStatusURL), u"StatusURL"},
         {KEY(kHelpURL), u"HelpURL"},
         {KEY(kForgotDetailsURL), u"ForgotDetailsURL"},
         {KEY(kRegisterURL), u"RegisterURL"},
         {KEY(kServerAddress), u"ServerAddress"},
         {KEY(kServerPort), u"ServerPort"},
         {KEY(kCarryfoldOverlay), u"CarryfoldOverlay"},
         {KEY(kBackupOverlay), u"BackupOverlay"},
         {KEY(kDisableOverlay), u"DisableOverlay"},
         {KEY(kDefaultBrandedLogo), u"DefaultBrandedLogo"},
         {KEY(kBackupTutorialURL), u"BackupTutorial"},
         {KEY(kCarryfoldTutorialURL), u"CarryfoldTutorial"},
         {KEY(kUpdateZipURL), u"UpdateZipURL"},
         {KEY(kUpdateSignatureURL), u"UpdateSignatureURL"},
         {KEY(kUpdateVersionCheckURL), u"UpdateVersionCheckURL"},
         {KEY(kWelcomeWizardType), u"WelcomeWizardType"},
     }},
    {"Preferences",
     {
         {KEY(kLastUsedUserName), u"LastUsedUserName"},
         {KEY(kPreviousAddUserName), u"PreviousAddUserName"},
         {KEY(kUserList), u"UserList"},
     }},
    {"User record",
     {
         {KEY(kUserUserName), u"UserName"},
         {KEY(kUserCacheName), u"CacheName"},
         {KEY(kUserFirstName), u"FirstName"},
         {KEY(kUserLastName), u"LastName"},
         {KEY(kUserConnectionSpeedUp), u"ConnectionSpeedUp"},
         {KEY(kUserConnectionSpeedDown), u"ConnectionSpeedDown"},
         {KEY(kUserConnectionCount), u"ConnectionCount"},
         {KEY(kUserDownloadBandwidth), u"DownloadBandwidth"},
         {KEY(kUserUploadBandwidth), u"UploadBandwidth"},
         {KEY(kUserOnlinePref), u"OnlinePref"},
         {KEY(kUserCachedEmailAddresses), u"CachedEmailAddresses"},
         {KEY(kUserStoreOption), u"StoreOption"},
         {KEY(kUserOnlineExcludedExts), u"OnlineExcludedExts"},
         {KEY(kUserLocalExcludedExts), u"LocalExcludedExts"},
         {KEY(kUserOnlineLowerLimit), u"OnlineLowerLimit"},
         {KEY(kUserOnlineUpperLimit), u"OnlineUpperLimit"},
         {KEY(kUserLocalLowerLimit), u"LocalLowerLimit"},
         {KEY(kUserLocalUpperLimit), u"LocalUpperLimit"},
         {KEY(kUserBrandID), u"BrandID"},
         {KEY(kUserAllowSharing), u"AllowSharing"},
         {KEY(kUserAllowBackup), u"AllowBackup"},
         {KEY(kUserAllowQMDisk), u"AllowQMDisk"},
         {KEY(kUserEnableBackup), u"EnableBackup"},
         {KEY(kUserEnableQMDisk), u"EnableQMDisk"},
         {KEY(kUserEncryptTransfers), u"EncryptTransfers"},
         {KEY(kUserIntegrityTime), u"IntegrityTime"},
         {KEY(kUserClientIdent), u"ClientIdent"},
         {KEY(kUserAccountType), u"AccountType"},
         {KEY(kEnableLanTransfer), u"EnableLanTransfer"},
         {KEY(kAutoQuitiTunes), u"AutoQuitiTunes"},
         {KEY(kBackupShowHiddenItems), u"BackupShowHiddenItems"},
         {KEY(kUserShowTeamFolders), u"ShowTeamFolders"},
         {KEY(kAccountId), u"AccountId"},
         {KEY(kShowStatusInDetailStatus), u"ShowStatusInDetailStatus"},
         {KEY(kUserConnectionThrottleByteDown), u"ThrottleBytesDown"},
         {KEY(kUserConnectionThrottleByteUp), u"ThrottleBytesUp"},
         {KEY(kIgnoreServerExclusions), u"IgnoreServerExclusions"},
         {KEY(kUserEncryptNewFiles), u"Encrypt"},
         {KEY(kServer), u"Server"},
         {KEY(kUserPassword), u"Password"},
         {KEY(kUserEncryptionKey), u"State"},
         {KEY(kMachineName), u"MachineName"},
         {KEY(kCacheLocation), u"CacheLocation"},
         {KEY(kCacheOption), u"CacheOption"},
     }},
    {"Messages",
     {
         {KEY(kDesiredAccess), u"desiredaccess"},
         {KEY(kUserName), u"username"},
         {KEY(kType), u"type"},
         {KEY(kValueName), u"valueName"},
         {KEY(kValue), u"val"},
         {KEY(kFilename), u"filename"},
         {KEY(kFileAttributes), u"attributes"},
         {KEY(kCount), u"count"},
         {KEY(kItemCount), u"itemcount"},
         {KEY(kHFindFile), u"hFindFile"},
         {KEY(kCRC), u"crc"},
         {KEY(kOffset), u"offset"},
         {KEY(kData), u"data"},
         {KEY(kShareMode), u"sharemode"},
         {KEY(kMacFD), u"macfd"},
         {KEY(kPosition), u"position"},
         {KEY(kDestination), u"destination"},
         {KEY(kIsDirectory), u"isdirectory"},
         {KEY(kUniqueID), u"identifier"},
         {KEY(kStatusText), u"statustext"},
         {KEY(kStatusText2), u"statustext2"},
         {KEY(kPercent), u"percent"},
         {KEY(kTitle), u"title"},
         {KEY(kUploadNames), u"uploadNames"},
         {KEY(kUploadPaths), u"uploadPaths"},
         {KEY(kDownloadNames), u"downloadNames"},
         {KEY(kDownloadPaths), u"downloadPaths"},
         {KEY(kMessage), u"message"},
         {KEY(kPriority), u"Priority"},
         {KEY(kFileList), u"filelist"},
         {KEY(kOptions), u"options"},
         {KEY(kAlwaysUseSelection), u"alwaysuseselection"},
         {KEY(kURL), u"url"},
         {KEY(kSpeed), u"speed"},
         {KEY(kDownload), u"download"},
         {KEY(kShareType), u"sharetype"},
         {KEY(kAddressList), u"addresslist"},
         {KEY(kStore), u"store"},
         {KEY(kShareList), u"sharelist"},
         {KEY(kShareTypeList), u"sharetypelist"},
         {KEY(kBackupNames), u"backupNames"},
         {KEY(kBackupPaths), u"backupPaths"},
         {KEY(kLength), u"length"},
         {KEY(kHashID), u"hashid"},
         {KEY(kTotal), u"total"},
         {KEY(kRunIntegrity), u"runintegrity"},
         {KEY(kDidComplete), u"didcomplete"},
         {KEY(kReason), u"reason"},
         {KEY(kDefaultValue), u"defaultval"},
         {KEY(kUpdateMajor), u"major"},
         {KEY(kUpdateMinor), u"minor"},
         {KEY(kUpdateBuild), u"build"},
         {KEY(kUpdateRevision), u"revision"},
         {KEY(kUpdateCritical), u"updatecritical"},
         {KEY(kIndex), u"index"},
         {KEY(kSize), u"size"},
         {KEY(kMask), u"mask"},
         {KEY(kHours), u"hours"},
         {KEY(kMinutes), u"minutes"},
         {KEY(kEnabled), u"enabled"},
         {KEY(kLogin), u"login"},
         {KEY(kClientIdentList), u"ciList"},
         {KEY(kLabelList), u"labelList"},
         {KEY(kIPList), u"ipList"},
         {KEY(kClientIndent), u"clientIndent"},
         {KEY(kExcluded), u"excluded"},
         {KEY(kBackupList), u"backupList"},
         {KEY(kDirectoryList), u"directoryList"},
         {KEY(kParent), u"parent"},
         {KEY(kConflictMode), u"conflictmode"},
         {KEY(kPromptErrors), u"prompterrors"},
         {KEY(kMinimum), u"min"},
         {KEY(kMaximum), u"max"},
         {KEY(kDataID), u"dataid"},
         {KEY(kFinished), u"finished"},
         {KEY(kCreationDate), u"creationdate"},
         {KEY(kModifiedDate), u"modifieddate"},
         {KEY(kCreateMode), u"createmode"},
         {KEY(kSyncState), u"syncstate"},
         {KEY(kQueueCount), u"queuecount"},
         {KEY(kToolTipIcon), u"tooltipicon"},
         {KEY(kComment), u"comment"},
         {KEY(kCommentID), u"commentId"},
         {KEY(kNeedsEncrypting), u"needsencrypting"},
         {KEY(kHelpTabID), u"helpTabID"},
     }},
    {"File types",
     {
         {KEY(kFileTypePriority), u"Priority"},
         {KEY(kFileTypeExtensions), u"Extensions"},
         {KEY(kFileTypeDescription), u"Description"},
     }},
    {"Proxy",
     {
         {KEY(kProxyMode), u"ProxyMode"},
         {KEY(kProxyAddress), u"StaticProxyAddress"},
         {KEY(kProxyPort), u"StaticProxyPort"},
         {KEY(kProxyType), u"StaticProxyType"},
         {KEY(kProxyUsername), u"StaticProxyUsername"},
         {KEY(kProxyPassword), u"StaticProxyPassword"},
     }},
    {"Backup tree",
     {
         {KEY(kBackupName), u"Name"},
         {KEY(kBackupDisplayName), u"DisplayName"},
         {KEY(kBackupPath), u"Path"},
         {KEY(kBackupContents), u"Contents"},
         {KEY(kBackupFullContents), u"FullContents"},
         {KEY(kBackupIsDirectory), u"IsDirectory"},
         {KEY(kBackupIsIncludedInBackup), u"IsIncludedInBackup"},
         {KEY(kBackupStatus), u"Status"},
         {KEY(kBackupContainsBackups), u"ContainsBackups"},
         {KEY(kBackupParent), u"Parent"},
     }},
    {"Events",
     {
         {KEY(kPreSyncStarted), u"PreSyncStarted"},
         {KEY(kPreSyncFinished), u"PreSyncFinished"},
         {KEY(kUploadFinished), u"UploadFinished"},
         {KEY(kDownloadFinished), u"DownloadFinished"},
         {KEY(kBackupFinished), u"BackupFinished"},
         {KEY(kOnline), u"Online"},
         {KEY(kOffline), u"Offline"},
     }},
    {"Status menu",
     {
         {KEY(kStatusItemTitle), u"Title"},
         {KEY(kStatusItemExpandable), u"Expandable"},
         {KEY(kStatusItemChildren), u"Children"},
         {KEY(kStatusItemImage), u"Image"},
         {KEY(kStatusItemDisabled), u"Disabled"},
         {KEY(kStatusItemTabIndex), u"TabIndex"},
         {KEY(kStatusItemHidden), u"Hidden"},
     }},
    {"Conflicts",
     {
         {KEY(kConflictType), u"conflicttype"},
         {KEY(kConflictClientFilename), u"clientfilename"},
         {KEY(kConflictClientFileID), u"clientfileid"},
         {KEY(kConflictClientFileType), u"clientfiletype"},
         {KEY(kConflictClientSuggestedName), u"clientsuggestedname"},
         {KEY(kConflictClientFilePath), u"clientfilepath"},
         {KEY(kConflictServerFilename), u"serverfilename"},
         {KEY(kConflictServerFileID), u"serverfileid"},
         {KEY(kConflictServerFileType), u"serverfiletype"},
         {KEY(kConflictServerSuggestedName), u"serversuggestedname"},
         {KEY(kConflictServerFilePath), u"serverfilepath"},
         {KEY(kConflictResolution), u"resolution"},
     }},
    {"Peers",
     {
         {KEY(kP2PClientIdent), u"ClientIdent"},
         {KEY(kP2PClientLabel), u"ClientLabel"},
         {KEY(kP2PClientIP), u"ClientIP"},
         {KEY(kP2PClientSelect), u"ClientSelect"},
     }},
    {"Restore",
     {
         {KEY(kRestoreChildren), u"Children"},
         {KEY(kRestoreChildrenFull), u"ChildrenFull"},
         {KEY(kRestoreDirectory), u"Directory"},
         {KEY(kRestoreChildrenFiles), u"ChildrenFiles"},
         {KEY(kRestoreChildrenFilesFull), u"ChildrenFilesFull"},
         {KEY(kRestoreUploaded), u"Uploaded"},
         {KEY(kRestoreRowVersion), u"RowVersion"},
         {KEY(kRestoreCreated), u"Created"},
         {KEY(kRestoreDeleted), u"Deleted"},
         {KEY(kRestoreDeletedDate), u"DeletedDate"},
         {KEY(kRestoreVersionNumber), u"VersionNumber"},
         {KEY(kRestoreStatsRestored), u"Restored"},
         {KEY(kRestoreStatsNotRestored), u"NotRestored"},
         {KEY(kRestoreStatsHasErrors), u"HasErrors"},
         {KEY(kRestoreStatsTimeSpan), u"TimeSpan"},
         {KEY(kRestoreStatsCancelled), u"Cancelled"},
         {KEY(kRestoreStatsSize), u"Size"},
         {KEY(kBackupComputers), u"11111111111111111111111111111111"},
     }},
};

#undef KEY

const Group &expectedGroup(const char *title) {
    for (const Group &group : expectedGroups) {
        if (std::string(group.title) == title) {
            return group;
        }
    }
    throw std::invalid_argument(title);
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
    QFile header(QStringLiteral(KEY_LIST_HEADER));
    EXPECT_TRUE(header.open(QIODevice::ReadOnly)) << header.fileName().toStdString();
    static const QRegularExpression pattern(
        QStringLiteral(R"-(\\name (?<title>.+)|\bKey (?<name>k\w+)\s*\{\s*u"(?<text>[^"]*)"\s*\};)-"));
    std::vector<std::string> lines;
    for (auto found = pattern.globalMatch(QString::fromUtf8(header.readAll())); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        const QString title = match.captured(QStringLiteral("title"));
        const QString declaration =
            match.captured(QStringLiteral("name")) + QStringLiteral(" = ") + match.captured(QStringLiteral("text"));
        lines.push_back((title.isEmpty() ? declaration : title).toStdString());
    }
    return lines;
}

std::vector<std::string> expectedDeclarations() {
    std::vector<std::string> lines;
    for (const Group &group : expectedGroups) {
        lines.emplace_back(group.title);
        for (const Row &row : group.rows) {
            lines.push_back(std::string(row.name) + " = " + row.text.toString().toStdString());
        }
    }
    return lines;
}

static_assert(std::is_trivially_destructible_v<Key> && std::is_trivially_copyable_v<Key>);
static_assert(kName.view().size() == 4, "a key is usable at compile time");

} // namespace

TEST(KeyList, EveryKeyHasItsText) {
    for (const Row &row : allRows()) {
        EXPECT_EQ(row.key->view().toString().toStdString(), row.text.toString().toStdString()) << row.name;
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
        namesByText[row.text.toString().toStdString()].insert(row.name);
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
    const QVariantMap record{{QStringLiteral("Name"), 7}};
    EXPECT_EQ(record.value(kName), 7);
    EXPECT_EQ(record.value(kBackupName), 7);
    EXPECT_EQ(kName, kBackupName);
    EXPECT_NE(&kName, &kBackupName);
}

TEST(KeyList, ARecordWrittenUnderEncryptNewFilesHasTheEntryEncrypt) {
    QVariantMap record;
    record[kUserEncryptNewFiles] = true;
    EXPECT_EQ(record.keys(), QStringList{QStringLiteral("Encrypt")});
}

TEST(KeyList, TheEncryptionKeyOfAUserIsStoredAsState) {
    QVariantMap record;
    record[kUserEncryptionKey] = QStringLiteral("secret");
    EXPECT_EQ(record.keys(), QStringList{QStringLiteral("State")});
}

TEST(KeyList, NoTextOfAUserRecordTellsOfAKey) {
    for (const Row &row : expectedGroup("User record").rows) {
        EXPECT_FALSE(row.key->view().contains(u"Key", Qt::CaseInsensitive)) << row.name;
    }
}

TEST(KeyList, ThrottlesAreSingularInNameAndPluralInText) {
    EXPECT_EQ(kUserConnectionThrottleByteDown, u"ThrottleBytesDown");
    EXPECT_EQ(kUserConnectionThrottleByteUp, u"ThrottleBytesUp");
}

TEST(KeyList, AMessageKeepsTheMisspeltClientIndentAndAPeerRecordDoesNot) {
    QVariantMap message;
    message[kClientIndent] = 1;
    EXPECT_EQ(message.keys(), QStringList{QStringLiteral("clientIndent")});
    QVariantMap peer;
    peer[kP2PClientIdent] = 1;
    EXPECT_EQ(peer.keys(), QStringList{QStringLiteral("ClientIdent")});
    EXPECT_EQ(kUserClientIdent, kP2PClientIdent);
}

TEST(KeyList, AbbreviatedTextsStayAbbreviated) {
    EXPECT_EQ(kValue, u"val");
    EXPECT_EQ(kDefaultValue, u"defaultval");
    EXPECT_EQ(kUniqueID, u"identifier");
    EXPECT_EQ(kClientIdentList, u"ciList");
    EXPECT_EQ(kMinimum, u"min");
    EXPECT_EQ(kMaximum, u"max");
    EXPECT_EQ(kMinMacOSXVersion, u"MinMacOSX");
    EXPECT_EQ(kMaxMacOSXVersion, u"MaxMacOSX");
}

TEST(KeyList, TutorialTextsHaveNoURL) {
    for (Key key : {kBackupTutorialURL, kCarryfoldTutorialURL}) {
        EXPECT_TRUE(key.view().endsWith(u"Tutorial"));
    }
}

TEST(KeyList, EveryProxyTextButTheModeBeginsWithStatic) {
    for (const Row &row : expectedGroup("Proxy").rows) {
        EXPECT_EQ(row.key->view().startsWith(u"StaticProxy"), *row.key != kProxyMode) << row.name;
    }
}

TEST(KeyList, OnlyPriorityIsCapitalisedAmongTheMessages) {
    for (const Row &row : expectedGroup("Messages").rows) {
        EXPECT_EQ(row.key->view().front().isUpper(), *row.key == kPriority) << row.name;
    }
}

TEST(KeyList, TheBackedUpComputersHaveAnIdentifierOfThirtyTwoOnes) {
    EXPECT_EQ(kBackupComputers, QString(32, QLatin1Char('1')));
}

TEST(KeyList, TheToolPathTakesTheNameOfTheToolOnce) {
    EXPECT_EQ(kToolPath.view().count(u"%@"), 1);
    EXPECT_TRUE(kToolPath.view().endsWith(u"/%@"));
}

TEST(Key, BecomesAStringWithoutCopyingItsText) {
    const QString text = kUserList;
    EXPECT_EQ(text.constData(), kUserList.view().data());
    EXPECT_EQ(text, QStringLiteral("UserList"));
}

TEST(Key, StaysAsItIsWhenAStringMadeFromItChanges) {
    QString text = kUserList;
    text[0] = QLatin1Char('u');
    text += QLatin1Char('s');
    EXPECT_EQ(text, QStringLiteral("userLists"));
    EXPECT_EQ(kUserList, u"UserList");
}

TEST(Key, ComparesWithTextsExactly) {
    EXPECT_TRUE(kName == QStringLiteral("Name"));
    EXPECT_TRUE(QStringLiteral("Name") == kName);
    EXPECT_TRUE(QStringView(u"Name") == kName);
    EXPECT_TRUE(kName != u"name");
    EXPECT_TRUE(kName != u"Nam");
    EXPECT_TRUE(kName != kType);
    EXPECT_TRUE(kName != QString());
}

#pragma once

#include "accounts/Key.h"

/// The vocabulary of string keys that all programs of the product share: one constant a key, in the order of its
/// family.
///
/// The constant's name is `k`, the family, and the field; its text is what property lists, preferences and messages
/// hold, usually the field alone. The texts are formats that installed programs and stored files rely on: where a text
/// differs from its name, or two families share one, that is deliberate. Code uses the constant, never a repeated
/// literal.

namespace quillmark {

/// \name Install-check catalogue
/// The fields of one required item in the catalogue of components.

inline constexpr Key kInstallType{u"Type"};
// Same text as kBackupName: each family can change its texts alone.
inline constexpr Key kName{u"Name"};
inline constexpr Key kResource{u"Resource"};
inline constexpr Key kInstallPath{u"InstallPath"};
// Same text as kStatusItemImage.
inline constexpr Key kImage{u"Image"};
inline constexpr Key kWebsiteURL{u"WebsiteURL"};
inline constexpr Key kLicense{u"License"};
inline constexpr Key kInstaller{u"Installer"};
// Same text as kFileTypeDescription.
inline constexpr Key kDescription{u"Description"};
inline constexpr Key kSignature{u"Signature"};
inline constexpr Key kVersion{u"Version"};
// The texts of both limits leave "Version" out.
inline constexpr Key kMaxMacOSXVersion{u"MaxMacOSX"};
inline constexpr Key kMinMacOSXVersion{u"MinMacOSX"};

/// \name Core program
/// Where the core program and its tools are, and what they are called.

// A format: the file name of the tool takes the place of %@.
inline constexpr Key kToolPath{u"/Library/Application Support/Quillmark/%@"};
inline constexpr Key kExecutableName{u"Quillmark"};
inline constexpr Key kMonoExecutableName{u"MonoWrapperMain"};
inline constexpr Key kMonoMacNamespace{u"Quillmark.Mac"};
inline constexpr Key kMonoCommandHandlerClassName{u"CommandHandler"};

/// \name Configuration
/// Entries of the branded configuration property list.

inline constexpr Key kConfigIntegrityCheck{u"IntegrityCheck"};
inline constexpr Key kServiceStatusURL{u"StatusURL"};
inline constexpr Key kHelpURL{u"HelpURL"};
inline constexpr Key kForgotDetailsURL{u"ForgotDetailsURL"};
inline constexpr Key kRegisterURL{u"RegisterURL"};
inline constexpr Key kServerAddress{u"ServerAddress"};
inline constexpr Key kServerPort{u"ServerPort"};
inline constexpr Key kCarryfoldOverlay{u"CarryfoldOverlay"};
inline constexpr Key kBackupOverlay{u"BackupOverlay"};
inline constexpr Key kDisableOverlay{u"DisableOverlay"};
inline constexpr Key kDefaultBrandedLogo{u"DefaultBrandedLogo"};
// The texts of both tutorials leave "URL" out.
inline constexpr Key kBackupTutorialURL{u"BackupTutorial"};
inline constexpr Key kCarryfoldTutorialURL{u"CarryfoldTutorial"};
inline constexpr Key kUpdateZipURL{u"UpdateZipURL"};
inline constexpr Key kUpdateSignatureURL{u"UpdateSignatureURL"};
inline constexpr Key kUpdateVersionCheckURL{u"UpdateVersionCheckURL"};
inline constexpr Key kWelcomeWizardType{u"WelcomeWizardType"};

/// \name Preferences
/// Entries at the top level of the user defaults.

inline constexpr Key kLastUsedUserName{u"LastUsedUserName"};
inline constexpr Key kPreviousAddUserName{u"PreviousAddUserName"};
inline constexpr Key kUserList{u"UserList"};

/// \name User record
/// The fields of one user record. "Password" and "State" never reach the preferences: the store keeps them in the
/// keychain.

inline constexpr Key kUserUserName{u"UserName"};
inline constexpr Key kUserCacheName{u"CacheName"};
inline constexpr Key kUserFirstName{u"FirstName"};
inline constexpr Key kUserLastName{u"LastName"};
inline constexpr Key kUserConnectionSpeedUp{u"ConnectionSpeedUp"};
inline constexpr Key kUserConnectionSpeedDown{u"ConnectionSpeedDown"};
inline constexpr Key kUserConnectionCount{u"ConnectionCount"};
inline constexpr Key kUserDownloadBandwidth{u"DownloadBandwidth"};
inline constexpr Key kUserUploadBandwidth{u"UploadBandwidth"};
inline constexpr Key kUserOnlinePref{u"OnlinePref"};
inline constexpr Key kUserCachedEmailAddresses{u"CachedEmailAddresses"};
inline constexpr Key kUserStoreOption{u"StoreOption"};
inline constexpr Key kUserOnlineExcludedExts{u"OnlineExcludedExts"};
inline constexpr Key kUserLocalExcludedExts{u"LocalExcludedExts"};
inline constexpr Key kUserOnlineLowerLimit{u"OnlineLowerLimit"};
inline constexpr Key kUserOnlineUpperLimit{u"OnlineUpperLimit"};
inline constexpr Key kUserLocalLowerLimit{u"LocalLowerLimit"};
inline constexpr Key kUserLocalUpperLimit{u"LocalUpperLimit"};
inline constexpr Key kUserBrandID{u"BrandID"};
inline constexpr Key kUserAllowSharing{u"AllowSharing"};
inline constexpr Key kUserAllowBackup{u"AllowBackup"};
inline constexpr Key kUserAllowQMDisk{u"AllowQMDisk"};
inline constexpr Key kUserEnableBackup{u"EnableBackup"};
inline constexpr Key kUserEnableQMDisk{u"EnableQMDisk"};
inline constexpr Key kUserEncryptTransfers{u"EncryptTransfers"};
inline constexpr Key kUserIntegrityTime{u"IntegrityTime"};
// Same text as kP2PClientIdent.
inline constexpr Key kUserClientIdent{u"ClientIdent"};
inline constexpr Key kUserAccountType{u"AccountType"};
inline constexpr Key kEnableLanTransfer{u"EnableLanTransfer"};
inline constexpr Key kAutoQuitiTunes{u"AutoQuitiTunes"};
inline constexpr Key kBackupShowHiddenItems{u"BackupShowHiddenItems"};
inline constexpr Key kUserShowTeamFolders{u"ShowTeamFolders"};
inline constexpr Key kAccountId{u"AccountId"};
inline constexpr Key kShowStatusInDetailStatus{u"ShowStatusInDetailStatus"};
// Singular in the names of both throttles, plural in their texts.
inline constexpr Key kUserConnectionThrottleByteDown{u"ThrottleBytesDown"};
inline constexpr Key kUserConnectionThrottleByteUp{u"ThrottleBytesUp"};
inline constexpr Key kIgnoreServerExclusions{u"IgnoreServerExclusions"};
// Only new files are meant, though the text does not say so.
inline constexpr Key kUserEncryptNewFiles{u"Encrypt"};
inline constexpr Key kServer{u"Server"};
inline constexpr Key kUserPassword{u"Password"};
// No telling name on purpose: nobody who looks through the records should learn where the encryption key is.
inline constexpr Key kUserEncryptionKey{u"State"};
inline constexpr Key kMachineName{u"MachineName"};
inline constexpr Key kCacheLocation{u"CacheLocation"};
inline constexpr Key kCacheOption{u"CacheOption"};

/// \name Messages
/// Fields of the messages and records that the core and its user interface exchange; the launcher carries them and
/// reads none. Lower case or lower camel case, but for kPriority.

inline constexpr Key kDesiredAccess{u"desiredaccess"};
inline constexpr Key kUserName{u"username"};
inline constexpr Key kType{u"type"};
inline constexpr Key kValueName{u"valueName"};
// Abbreviated in the text, as is kDefaultValue.
inline constexpr Key kValue{u"val"};
inline constexpr Key kFilename{u"filename"};
inline constexpr Key kFileAttributes{u"attributes"};
inline constexpr Key kCount{u"count"};
inline constexpr Key kItemCount{u"itemcount"};
inline constexpr Key kHFindFile{u"hFindFile"};
inline constexpr Key kCRC{u"crc"};
inline constexpr Key kOffset{u"offset"};
inline constexpr Key kData{u"data"};
inline constexpr Key kShareMode{u"sharemode"};
inline constexpr Key kMacFD{u"macfd"};
inline constexpr Key kPosition{u"position"};
inline constexpr Key kDestination{u"destination"};
inline constexpr Key kIsDirectory{u"isdirectory"};
// The text says what it is, not that it is unique.
inline constexpr Key kUniqueID{u"identifier"};
inline constexpr Key kStatusText{u"statustext"};
inline constexpr Key kStatusText2{u"statustext2"};
inline constexpr Key kPercent{u"percent"};
inline constexpr Key kTitle{u"title"};
inline constexpr Key kUploadNames{u"uploadNames"};
inline constexpr Key kUploadPaths{u"uploadPaths"};
inline constexpr Key kDownloadNames{u"downloadNames"};
inline constexpr Key kDownloadPaths{u"downloadPaths"};
inline constexpr Key kMessage{u"message"};
// The one capitalised text of this group. Same text as kFileTypePriority.
inline constexpr Key kPriority{u"Priority"};
inline constexpr Key kFileList{u"filelist"};
inline constexpr Key kOptions{u"options"};
inline constexpr Key kAlwaysUseSelection{u"alwaysuseselection"};
inline constexpr Key kURL{u"url"};
inline constexpr Key kSpeed{u"speed"};
inline constexpr Key kDownload{u"download"};
inline constexpr Key kShareType{u"sharetype"};
inline constexpr Key kAddressList{u"addresslist"};
inline constexpr Key kStore{u"store"};
inline constexpr Key kShareList{u"sharelist"};
inline constexpr Key kShareTypeList{u"sharetypelist"};
inline constexpr Key kBackupNames{u"backupNames"};
inline constexpr Key kBackupPaths{u"backupPaths"};
inline constexpr Key kLength{u"length"};
inline constexpr Key kHashID{u"hashid"};
inline constexpr Key kTotal{u"total"};
inline constexpr Key kRunIntegrity{u"runintegrity"};
inline constexpr Key kDidComplete{u"didcomplete"};
inline constexpr Key kReason{u"reason"};
inline constexpr Key kDefaultValue{u"defaultval"};
inline constexpr Key kUpdateMajor{u"major"};
inline constexpr Key kUpdateMinor{u"minor"};
inline constexpr Key kUpdateBuild{u"build"};
inline constexpr Key kUpdateRevision{u"revision"};
inline constexpr Key kUpdateCritical{u"updatecritical"};
inline constexpr Key kIndex{u"index"};
inline constexpr Key kSize{u"size"};
inline constexpr Key kMask{u"mask"};
inline constexpr Key kHours{u"hours"};
inline constexpr Key kMinutes{u"minutes"};
inline constexpr Key kEnabled{u"enabled"};
inline constexpr Key kLogin{u"login"};
// Abbreviated in the text.
inline constexpr Key kClientIdentList{u"ciList"};
inline constexpr Key kLabelList{u"labelList"};
inline constexpr Key kIPList{u"ipList"};
// "Indent" for "Ident", in name and text: the misspelling is part of the message format and has to stay.
inline constexpr Key kClientIndent{u"clientIndent"};
inline constexpr Key kExcluded{u"excluded"};
inline constexpr Key kBackupList{u"backupList"};
inline constexpr Key kDirectoryList{u"directoryList"};
inline constexpr Key kParent{u"parent"};
inline constexpr Key kConflictMode{u"conflictmode"};
inline constexpr Key kPromptErrors{u"prompterrors"};
// Both limits are abbreviated in the text.
inline constexpr Key kMinimum{u"min"};
inline constexpr Key kMaximum{u"max"};
inline constexpr Key kDataID{u"dataid"};
inline constexpr Key kFinished{u"finished"};
inline constexpr Key kCreationDate{u"creationdate"};
inline constexpr Key kModifiedDate{u"modifieddate"};
inline constexpr Key kCreateMode{u"createmode"};
inline constexpr Key kSyncState{u"syncstate"};
inline constexpr Key kQueueCount{u"queuecount"};
inline constexpr Key kToolTipIcon{u"tooltipicon"};
inline constexpr Key kComment{u"comment"};
inline constexpr Key kCommentID{u"commentId"};
inline constexpr Key kNeedsEncrypting{u"needsencrypting"};
inline constexpr Key kHelpTabID{u"helpTabID"};

/// \name File types
/// Fields of a file-type record.

inline constexpr Key kFileTypePriority{u"Priority"};
inline constexpr Key kFileTypeExtensions{u"Extensions"};
inline constexpr Key kFileTypeDescription{u"Description"};

/// \name Proxy
/// The proxy settings. All but the mode describe a proxy set by hand, hence "Static" in the texts.

inline constexpr Key kProxyMode{u"ProxyMode"};
inline constexpr Key kProxyAddress{u"StaticProxyAddress"};
inline constexpr Key kProxyPort{u"StaticProxyPort"};
inline constexpr Key kProxyType{u"StaticProxyType"};
inline constexpr Key kProxyUsername{u"StaticProxyUsername"};
inline constexpr Key kProxyPassword{u"StaticProxyPassword"};

/// \name Backup tree
/// Fields of an item in the tree of backed-up folders.

inline constexpr Key kBackupName{u"Name"};
inline constexpr Key kBackupDisplayName{u"DisplayName"};
inline constexpr Key kBackupPath{u"Path"};
inline constexpr Key kBackupContents{u"Contents"};
inline constexpr Key kBackupFullContents{u"FullContents"};
inline constexpr Key kBackupIsDirectory{u"IsDirectory"};
inline constexpr Key kBackupIsIncludedInBackup{u"IsIncludedInBackup"};
inline constexpr Key kBackupStatus{u"Status"};
inline constexpr Key kBackupContainsBackups{u"ContainsBackups"};
inline constexpr Key kBackupParent{u"Parent"};

/// \name Events
/// Names of the events that the core announces.

inline constexpr Key kPreSyncStarted{u"PreSyncStarted"};
inline constexpr Key kPreSyncFinished{u"PreSyncFinished"};
inline constexpr Key kUploadFinished{u"UploadFinished"};
inline constexpr Key kDownloadFinished{u"DownloadFinished"};
inline constexpr Key kBackupFinished{u"BackupFinished"};
inline constexpr Key kOnline{u"Online"};
inline constexpr Key kOffline{u"Offline"};

/// \name Status menu
/// Fields of an entry of the status menu.

inline constexpr Key kStatusItemTitle{u"Title"};
inline constexpr Key kStatusItemExpandable{u"Expandable"};
inline constexpr Key kStatusItemChildren{u"Children"};
inline constexpr Key kStatusItemImage{u"Image"};
inline constexpr Key kStatusItemDisabled{u"Disabled"};
inline constexpr Key kStatusItemTabIndex{u"TabIndex"};
inline constexpr Key kStatusItemHidden{u"Hidden"};

/// \name Conflicts
/// Fields of a conflict between the file on this computer and the one on the server.

inline constexpr Key kConflictType{u"conflicttype"};
inline constexpr Key kConflictClientFilename{u"clientfilename"};
inline constexpr Key kConflictClientFileID{u"clientfileid"};
inline constexpr Key kConflictClientFileType{u"clientfiletype"};
inline constexpr Key kConflictClientSuggestedName{u"clientsuggestedname"};
inline constexpr Key kConflictClientFilePath{u"clientfilepath"};
inline constexpr Key kConflictServerFilename{u"serverfilename"};
inline constexpr Key kConflictServerFileID{u"serverfileid"};
inline constexpr Key kConflictServerFileType{u"serverfiletype"};
inline constexpr Key kConflictServerSuggestedName{u"serversuggestedname"};
inline constexpr Key kConflictServerFilePath{u"serverfilepath"};
inline constexpr Key kConflictResolution{u"resolution"};

/// \name Peers
/// Fields of a record about a client that can be reached directly on the local network.

inline constexpr Key kP2PClientIdent{u"ClientIdent"};
inline constexpr Key kP2PClientLabel{u"ClientLabel"};
inline constexpr Key kP2PClientIP{u"ClientIP"};
inline constexpr Key kP2PClientSelect{u"ClientSelect"};

/// \name Restore
/// Fields of an item in the restore tree, and of the statistics of a finished restore.

// Same text as kStatusItemChildren.
inline constexpr Key kRestoreChildren{u"Children"};
inline constexpr Key kRestoreChildrenFull{u"ChildrenFull"};
inline constexpr Key kRestoreDirectory{u"Directory"};
inline constexpr Key kRestoreChildrenFiles{u"ChildrenFiles"};
inline constexpr Key kRestoreChildrenFilesFull{u"ChildrenFilesFull"};
inline constexpr Key kRestoreUploaded{u"Uploaded"};
inline constexpr Key kRestoreRowVersion{u"RowVersion"};
inline constexpr Key kRestoreCreated{u"Created"};
inline constexpr Key kRestoreDeleted{u"Deleted"};
inline constexpr Key kRestoreDeletedDate{u"DeletedDate"};
inline constexpr Key kRestoreVersionNumber{u"VersionNumber"};
inline constexpr Key kRestoreStatsRestored{u"Restored"};
inline constexpr Key kRestoreStatsNotRestored{u"NotRestored"};
inline constexpr Key kRestoreStatsHasErrors{u"HasErrors"};
inline constexpr Key kRestoreStatsTimeSpan{u"TimeSpan"};
inline constexpr Key kRestoreStatsCancelled{u"Cancelled"};
inline constexpr Key kRestoreStatsSize{u"Size"};
// Not a key: the identifier of the node that stands for the backed-up computers in a restore tree. It has the form of
// an item's identifier, 32 digits, and no item has it.
inline constexpr Key kBackupComputers{u"11111111111111111111111111111111"};

} // namespace quillmark

#pragma once

#include "platform/values/Key.h"

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
inline constexpr Key kInstallType{"Type"};
inline constexpr Key kName{"Name"}; // Same text as kBackupName: each family can change its texts alone.
inline constexpr Key kResource{"Resource"};
inline constexpr Key kInstallPath{"InstallPath"};
inline constexpr Key kImage{"Image"}; // Same text as kStatusItemImage.
inline constexpr Key kWebsiteURL{"WebsiteURL"};
inline constexpr Key kLicense{"License"};
inline constexpr Key kInstaller{"Installer"};
inline constexpr Key kDescription{"Description"}; // Same text as kFileTypeDescription.
inline constexpr Key kSignature{"Signature"};
inline constexpr Key kVersion{"Version"};
inline constexpr Key kMaxMacOSXVersion{"MaxMacOSX"}; // The texts of both limits leave "Version" out.
inline constexpr Key kMinMacOSXVersion{"MinMacOSX"};

/// \name Core program
/// Where the core program and its tools are, and what they are called.
// A format: the file name of the tool takes the place of %@.
inline constexpr Key kToolPath{"/Library/Application Support/Quillmark/%@"};
inline constexpr Key kExecutableName{"Quillmark"};
inline constexpr Key kMonoExecutableName{"MonoWrapperMain"};
inline constexpr Key kMonoMacNamespace{"Quillmark.Mac"};
inline constexpr Key kMonoCommandHandlerClassName{"CommandHandler"};

/// \name Configuration
/// Entries of the branded configuration property list.
inline constexpr Key kConfigIntegrityCheck{"IntegrityCheck"};
inline constexpr Key kServiceStatusURL{"StatusURL"};
inline constexpr Key kHelpURL{"HelpURL"};
inline constexpr Key kForgotDetailsURL{"ForgotDetailsURL"};
inline constexpr Key kRegisterURL{"RegisterURL"};
inline constexpr Key kServerAddress{"ServerAddress"};
inline constexpr Key kServerPort{"ServerPort"};
inline constexpr Key kCarryfoldOverlay{"CarryfoldOverlay"};
inline constexpr Key kBackupOverlay{"BackupOverlay"};
inline constexpr Key kDisableOverlay{"DisableOverlay"};
inline constexpr Key kDefaultBrandedLogo{"DefaultBrandedLogo"};
inline constexpr Key kBackupTutorialURL{"BackupTutorial"}; // The texts of both tutorials leave "URL" out.
inline constexpr Key kCarryfoldTutorialURL{"CarryfoldTutorial"};
inline constexpr Key kUpdateZipURL{"UpdateZipURL"};
inline constexpr Key kUpdateSignatureURL{"UpdateSignatureURL"};
inline constexpr Key kUpdateVersionCheckURL{"UpdateVersionCheckURL"};
inline constexpr Key kWelcomeWizardType{"WelcomeWizardType"};

/// \name Preferences
/// Entries at the top level of the user defaults.
inline constexpr Key kLastUsedUserName{"LastUsedUserName"};
inline constexpr Key kPreviousAddUserName{"PreviousAddUserName"};
inline constexpr Key kUserList{"UserList"};

/// \name User record
/// The fields of one user record. "Password" and "State" never reach the preferences: the store keeps them in the
/// keychain.
inline constexpr Key kUserUserName{"UserName"};
inline constexpr Key kUserCacheName{"CacheName"};
inline constexpr Key kUserFirstName{"FirstName"};
inline constexpr Key kUserLastName{"LastName"};
inline constexpr Key kUserConnectionSpeedUp{"ConnectionSpeedUp"};
inline constexpr Key kUserConnectionSpeedDown{"ConnectionSpeedDown"};
inline constexpr Key kUserConnectionCount{"ConnectionCount"};
inline constexpr Key kUserDownloadBandwidth{"DownloadBandwidth"};
inline constexpr Key kUserUploadBandwidth{"UploadBandwidth"};
inline constexpr Key kUserOnlinePref{"OnlinePref"};
inline constexpr Key kUserCachedEmailAddresses{"CachedEmailAddresses"};
inline constexpr Key kUserStoreOption{"StoreOption"};
inline constexpr Key kUserOnlineExcludedExts{"OnlineExcludedExts"};
inline constexpr Key kUserLocalExcludedExts{"LocalExcludedExts"};
inline constexpr Key kUserOnlineLowerLimit{"OnlineLowerLimit"};
inline constexpr Key kUserOnlineUpperLimit{"OnlineUpperLimit"};
inline constexpr Key kUserLocalLowerLimit{"LocalLowerLimit"};
inline constexpr Key kUserLocalUpperLimit{"LocalUpperLimit"};
inline constexpr Key kUserBrandID{"BrandID"};
inline constexpr Key kUserAllowSharing{"AllowSharing"};
inline constexpr Key kUserAllowBackup{"AllowBackup"};
inline constexpr Key kUserAllowQMDisk{"AllowQMDisk"};
inline constexpr Key kUserEnableBackup{"EnableBackup"};
inline constexpr Key kUserEnableQMDisk{"EnableQMDisk"};
inline constexpr Key kUserEncryptTransfers{"EncryptTransfers"};
inline constexpr Key kUserIntegrityTime{"IntegrityTime"};
inline constexpr Key kUserClientIdent{"ClientIdent"}; // Same text as kP2PClientIdent.
inline constexpr Key kUserAccountType{"AccountType"};
inline constexpr Key kEnableLanTransfer{"EnableLanTransfer"};
inline constexpr Key kAutoQuitiTunes{"AutoQuitiTunes"};
inline constexpr Key kBackupShowHiddenItems{"BackupShowHiddenItems"};
inline constexpr Key kUserShowTeamFolders{"ShowTeamFolders"};
inline constexpr Key kAccountId{"AccountId"};
inline constexpr Key kShowStatusInDetailStatus{"ShowStatusInDetailStatus"};
// Singular in the names of both throttles, plural in their texts.
inline constexpr Key kUserConnectionThrottleByteDown{"ThrottleBytesDown"};
inline constexpr Key kUserConnectionThrottleByteUp{"ThrottleBytesUp"};
inline constexpr Key kIgnoreServerExclusions{"IgnoreServerExclusions"};
inline constexpr Key kUserEncryptNewFiles{"Encrypt"}; // Only new files are meant, though the text does not say so.
inline constexpr Key kServer{"Server"};
inline constexpr Key kUserPassword{"Password"};
// No telling name on purpose: nobody who looks through the records should learn where the encryption key is.
inline constexpr Key kUserEncryptionKey{"State"};
inline constexpr Key kMachineName{"MachineName"};
inline constexpr Key kCacheLocation{"CacheLocation"};
inline constexpr Key kCacheOption{"CacheOption"};

/// \name Messages
/// Fields of the messages and records that the core and its user interface exchange; the launcher carries them and
/// reads none. Lower case or lower camel case, but for kPriority.
inline constexpr Key kDesiredAccess{"desiredaccess"};
inline constexpr Key kUserName{"username"};
inline constexpr Key kType{"type"};
inline constexpr Key kValueName{"valueName"};
inline constexpr Key kValue{"val"}; // Abbreviated in the text, as is kDefaultValue.
inline constexpr Key kFilename{"filename"};
inline constexpr Key kFileAttributes{"attributes"};
inline constexpr Key kCount{"count"};
inline constexpr Key kItemCount{"itemcount"};
inline constexpr Key kHFindFile{"hFindFile"};
inline constexpr Key kCRC{"crc"};
inline constexpr Key kOffset{"offset"};
inline constexpr Key kData{"data"};
inline constexpr Key kShareMode{"sharemode"};
inline constexpr Key kMacFD{"macfd"};
inline constexpr Key kPosition{"position"};
inline constexpr Key kDestination{"destination"};
inline constexpr Key kIsDirectory{"isdirectory"};
inline constexpr Key kUniqueID{"identifier"}; // The text says what it is, not that it is unique.
inline constexpr Key kStatusText{"statustext"};
inline constexpr Key kStatusText2{"statustext2"};
inline constexpr Key kPercent{"percent"};
inline constexpr Key kTitle{"title"};
inline constexpr Key kUploadNames{"uploadNames"};
inline constexpr Key kUploadPaths{"uploadPaths"};
inline constexpr Key kDownloadNames{"downloadNames"};
inline constexpr Key kDownloadPaths{"downloadPaths"};
inline constexpr Key kMessage{"message"};
inline constexpr Key kPriority{"Priority"}; // The one capitalised text of this group. Same text as kFileTypePriority.
inline constexpr Key kFileList{"filelist"};
inline constexpr Key kOptions{"options"};
inline constexpr Key kAlwaysUseSelection{"alwaysuseselection"};
inline constexpr Key kURL{"url"};
inline constexpr Key kSpeed{"speed"};
inline constexpr Key kDownload{"download"};
inline constexpr Key kShareType{"sharetype"};
inline constexpr Key kAddressList{"addresslist"};
inline constexpr Key kStore{"store"};
inline constexpr Key kShareList{"sharelist"};
inline constexpr Key kShareTypeList{"sharetypelist"};
inline constexpr Key kBackupNames{"backupNames"};
inline constexpr Key kBackupPaths{"backupPaths"};
inline constexpr Key kLength{"length"};
inline constexpr Key kHashID{"hashid"};
inline constexpr Key kTotal{"total"};
inline constexpr Key kRunIntegrity{"runintegrity"};
inline constexpr Key kDidComplete{"didcomplete"};
inline constexpr Key kReason{"reason"};
inline constexpr Key kDefaultValue{"defaultval"};
inline constexpr Key kUpdateMajor{"major"};
inline constexpr Key kUpdateMinor{"minor"};
inline constexpr Key kUpdateBuild{"build"};
inline constexpr Key kUpdateRevision{"revision"};
inline constexpr Key kUpdateCritical{"updatecritical"};
inline constexpr Key kIndex{"index"};
inline constexpr Key kSize{"size"};
inline constexpr Key kMask{"mask"};
inline constexpr Key kHours{"hours"};
inline constexpr Key kMinutes{"minutes"};
inline constexpr Key kEnabled{"enabled"};
inline constexpr Key kLogin{"login"};
inline constexpr Key kClientIdentList{"ciList"}; // Abbreviated in the text.
inline constexpr Key kLabelList{"labelList"};
inline constexpr Key kIPList{"ipList"};
// "Indent" for "Ident", in name and text: the misspelling is part of the message format and has to stay.
inline constexpr Key kClientIndent{"clientIndent"};
inline constexpr Key kExcluded{"excluded"};
inline constexpr Key kBackupList{"backupList"};
inline constexpr Key kDirectoryList{"directoryList"};
inline constexpr Key kParent{"parent"};
inline constexpr Key kConflictMode{"conflictmode"};
inline constexpr Key kPromptErrors{"prompterrors"};
inline constexpr Key kMinimum{"min"}; // Both limits are abbreviated in the text.
inline constexpr Key kMaximum{"max"};
inline constexpr Key kDataID{"dataid"};
inline constexpr Key kFinished{"finished"};
inline constexpr Key kCreationDate{"creationdate"};
inline constexpr Key kModifiedDate{"modifieddate"};
inline constexpr Key kCreateMode{"createmode"};
inline constexpr Key kSyncState{"syncstate"};
inline constexpr Key kQueueCount{"queuecount"};
inline constexpr Key kToolTipIcon{"tooltipicon"};
inline constexpr Key kComment{"comment"};
inline constexpr Key kCommentID{"commentId"};
inline constexpr Key kNeedsEncrypting{"needsencrypting"};
inline constexpr Key kHelpTabID{"helpTabID"};

/// \name File types
/// Fields of a file-type record.
inline constexpr Key kFileTypePriority{"Priority"};
inline constexpr Key kFileTypeExtensions{"Extensions"};
inline constexpr Key kFileTypeDescription{"Description"};

/// \name Proxy
/// The proxy settings. All but the mode describe a proxy set by hand, hence "Static" in the texts.
inline constexpr Key kProxyMode{"ProxyMode"};
inline constexpr Key kProxyAddress{"StaticProxyAddress"};
inline constexpr Key kProxyPort{"StaticProxyPort"};
inline constexpr Key kProxyType{"StaticProxyType"};
inline constexpr Key kProxyUsername{"StaticProxyUsername"};
inline constexpr Key kProxyPassword{"StaticProxyPassword"};

/// \name Backup tree
/// Fields of an item in the tree of backed-up folders.
inline constexpr Key kBackupName{"Name"};
inline constexpr Key kBackupDisplayName{"DisplayName"};
inline constexpr Key kBackupPath{"Path"};
inline constexpr Key kBackupContents{"Contents"};
inline constexpr Key kBackupFullContents{"FullContents"};
inline constexpr Key kBackupIsDirectory{"IsDirectory"};
inline constexpr Key kBackupIsIncludedInBackup{"IsIncludedInBackup"};
inline constexpr Key kBackupStatus{"Status"};
inline constexpr Key kBackupContainsBackups{"ContainsBackups"};
inline constexpr Key kBackupParent{"Parent"};

/// \name Events
/// Names of the events that the core announces.
inline constexpr Key kPreSyncStarted{"PreSyncStarted"};
inline constexpr Key kPreSyncFinished{"PreSyncFinished"};
inline constexpr Key kUploadFinished{"UploadFinished"};
inline constexpr Key kDownloadFinished{"DownloadFinished"};
inline constexpr Key kBackupFinished{"BackupFinished"};
inline constexpr Key kOnline{"Online"};
inline constexpr Key kOffline{"Offline"};

/// \name Status menu
/// Fields of an entry of the status menu.
inline constexpr Key kStatusItemTitle{"Title"};
inline constexpr Key kStatusItemExpandable{"Expandable"};
inline constexpr Key kStatusItemChildren{"Children"};
inline constexpr Key kStatusItemImage{"Image"};
inline constexpr Key kStatusItemDisabled{"Disabled"};
inline constexpr Key kStatusItemTabIndex{"TabIndex"};
inline constexpr Key kStatusItemHidden{"Hidden"};

/// \name Conflicts
/// Fields of a conflict between the file on this computer and the one on the server.
inline constexpr Key kConflictType{"conflicttype"};
inline constexpr Key kConflictClientFilename{"clientfilename"};
inline constexpr Key kConflictClientFileID{"clientfileid"};
inline constexpr Key kConflictClientFileType{"clientfiletype"};
inline constexpr Key kConflictClientSuggestedName{"clientsuggestedname"};
inline constexpr Key kConflictClientFilePath{"clientfilepath"};
inline constexpr Key kConflictServerFilename{"serverfilename"};
inline constexpr Key kConflictServerFileID{"serverfileid"};
inline constexpr Key kConflictServerFileType{"serverfiletype"};
inline constexpr Key kConflictServerSuggestedName{"serversuggestedname"};
inline constexpr Key kConflictServerFilePath{"serverfilepath"};
inline constexpr Key kConflictResolution{"resolution"};

/// \name Peers
/// Fields of a record about a client that can be reached directly on the local network.
inline constexpr Key kP2PClientIdent{"ClientIdent"};
inline constexpr Key kP2PClientLabel{"ClientLabel"};
inline constexpr Key kP2PClientIP{"ClientIP"};
inline constexpr Key kP2PClientSelect{"ClientSelect"};

/// \name Restore
/// Fields of an item in the restore tree, and of the statistics of a finished restore.
inline constexpr Key kRestoreChildren{"Children"}; // Same text as kStatusItemChildren.
inline constexpr Key kRestoreChildrenFull{"ChildrenFull"};
inline constexpr Key kRestoreDirectory{"Directory"};
inline constexpr Key kRestoreChildrenFiles{"ChildrenFiles"};
inline constexpr Key kRestoreChildrenFilesFull{"ChildrenFilesFull"};
inline constexpr Key kRestoreUploaded{"Uploaded"};
inline constexpr Key kRestoreRowVersion{"RowVersion"};
inline constexpr Key kRestoreCreated{"Created"};
inline constexpr Key kRestoreDeleted{"Deleted"};
inline constexpr Key kRestoreDeletedDate{"DeletedDate"};
inline constexpr Key kRestoreVersionNumber{"VersionNumber"};
inline constexpr Key kRestoreStatsRestored{"Restored"};
inline constexpr Key kRestoreStatsNotRestored{"NotRestored"};
inline constexpr Key kRestoreStatsHasErrors{"HasErrors"};
inline constexpr Key kRestoreStatsTimeSpan{"TimeSpan"};
inline constexpr Key kRestoreStatsCancelled{"Cancelled"};
inline constexpr Key kRestoreStatsSize{"Size"};
// Not a key: the identifier of the node that stands for the backed-up computers in a restore tree. It has the form of
// an item's identifier, 32 digits, and no item has it.
inline constexpr Key kBackupComputers{"11111111111111111111111111111111"};

} // namespace quillmark

#pragma once

#include "platform/CheckWindowView.h"
#include "platform/values/Value.h"
#include "utils/VersionText.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillmark {

class BrandingManager;
class LocalizedStrings;
class UpdateToolManager;

/// What an evaluation finds of an item.
enum class ItemStatus { InOrder, Missing, OldVersion, WrongPermissions, Invalid, NotRequired };

/// Its key among the texts.
constexpr const char *keyOf(ItemStatus status) {
    constexpr const char *kKeys[] = {"OK", "Missing", "Old Version", "Wrong Permissions", "Invalid", "Not Required"};
    return kKeys[static_cast<size_t>(status)];
}

/// One component of the catalogue, by the keys of its family in the key list. A value that is not a text counts as
/// absent.
using RequiredItem = Dictionary;

/// What the install check needs of the application that it belongs to.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;
    virtual std::int32_t brandId() const = 0;
    virtual void launchCore() = 0;
};

/// Compares the components that are installed outside the launcher's bundle with the catalogue that ships in it, and
/// repairs them when the user wishes so, by way of a window.
///
/// Concurrency: an evaluation runs on one thread at a time.
class InstallCheckManager final : public CheckWindowView::Owner {
public:
    static InstallCheckManager &sharedManager();
    /// Reads the catalogue, the resource "RequiredItems". One that can't be read holds nothing, as each evaluation
    /// says.
    InstallCheckManager(LocalizedStrings &strings, const BrandingManager &branding, UpdateToolManager &updateTool);

    /// Whether there is a catalogue; without one nothing is examined.
    bool isCatalogueReadable() const { return m_catalogue.is<List>(); }

    /// The application that starts the core after a repair. It outlives this object.
    void setDelegate(ApplicationDelegate *delegate) { m_delegate = delegate; }

    /// Evaluates. \returns true when nothing needs repair; else the window is shown, where one can be.
    bool checkForRequiredItems();

    /// Whether an evaluation would find an item "Missing", at the cost of one look at each item's path.
    bool isAnythingMissing() const;

    /// Examines every item, in the catalogue's order. Raises nothing for an item that is at fault in whatever way.
    void updateStatus();

    // What the last evaluation found.

    const List &requiredItemsList() const { return m_catalogue.list(); }
    /// The status of each item. What depends on one compares these, and so no translation can change what is repaired.
    const std::vector<ItemStatus> &requiredItemsStatuses() const { return m_statuses; }
    /// The same as keys, and as localised texts.
    std::vector<std::string> requiredItemsStatusKeys() const;
    std::vector<std::string> requiredItemsStatusList() const;
    /// The items that are at fault, by their places in the list.
    std::vector<size_t> faults() const;
    /// The localised text of an item's status.
    std::string statusText(size_t index) const;
    /// How many items of the kinds that the update tool repairs one by one are not in order: all but bundles.
    std::int32_t numberRepairsRequired() const { return m_numberRepairsRequired; }
    /// How many items are not in order, for whatever reason.
    std::int32_t numberItemsMissing() const { return m_numberItemsMissing; }
    bool isHelperRepairRequired() const { return m_helperRepairRequired; }
    /// Whether the last bundle that is not in order was the file system.
    bool isMacFuseRepairRequired() const { return m_macFuseRepairRequired; }
    /// The item whose plug-in was last found out of date in the life of this object, else -1. A record only.
    std::int32_t restartIndex() const { return m_restartIndex; }

    // Examining one item: its status and what it counts for.

    void updateRequiredItemStatusCoreApp(const RequiredItem &item, std::int32_t index);
    /// Finds no fault, ever.
    void updateRequiredItemStatusFramework(const RequiredItem &item, std::int32_t index);
    void updateRequiredItemStatusBundle(const RequiredItem &item, std::int32_t index);
    void updateRequiredItemStatusTool(const RequiredItem &item, std::int32_t index);
    void updateRequiredItemStatusToolRoot(const RequiredItem &item, std::int32_t index);
    void updateRequiredItemStatusFinderCM(const RequiredItem &item, std::int32_t index);
    void updateRequiredItemStatusFinderOverlayInsert(const RequiredItem &item, std::int32_t index);

    /// Whether the installed tool is the administrator's, with mode 0755.
    bool verifyQMToolPermissions(const RequiredItem &item) const;
    /// Whether the core application has mode 0755; its owner does not matter.
    bool verifyCoreAppPermissions(const RequiredItem &item) const;

    // Where an item's files are among the resources; the resource folder itself for an item without the key.

    std::string pathToRequiredItemInResources(const RequiredItem &item) const;
    std::string pathToRequiredItemInstallerInResources(const RequiredItem &item) const;
    std::string pathToRequiredItemSignatureInResources(const RequiredItem &item) const;

    // The rules for versions.

    static std::optional<ComponentVersion> parseVersionString(std::string_view text);
    std::optional<ComponentVersion> getFrameworkVersion(const RequiredItem &item) const;
    std::optional<ComponentVersion> getBundleVersion(const RequiredItem &item) const;
    /// Whether the installed version satisfies the item's "Version".
    static bool checkFrameworkVersion(const RequiredItem &item, const ComponentVersion &installed);
    /// Asks the tool itself, and waits for it without limit. Raises an exception when it can't be started.
    bool doesToolNeedUpdate(const RequiredItem &item) const;
    /// Whether the installed bundle has an older major or minor version than this application, or none.
    bool doesBundleNeedUpdate(const RequiredItem &item) const;
    /// \param major … stay untouched from the first number on that can't be read. \returns whether all could.
    bool getMacOSXVersion(std::int32_t &major, std::int32_t &minor, std::int32_t &bugfix) const;
    /// Whether the item is required on this system by its lowest system version.
    bool checkMinMacOSXVersion(const RequiredItem &item) const;
    /// Whether the item is required on this system by its highest system version.
    bool checkMaxMacOSXVersion(const RequiredItem &item) const;
    static std::string getMacClientVersionAsString();
    static MicrosoftStyleVersion getVersionFromString(std::string_view text);
    static MicrosoftStyleVersion getMacClientVersion();
    bool areIntel_10_5FixesRequired() const;

    // Repairing what the last evaluation found. Each returns true on success, and asks the update tool.

    /// Told before each request: the item's name, and what is done about it.
    using OnRepairStep = std::function<void(const std::string &name, const std::string &step)>;

    /// One pass: the update tool itself, whatever its status; two seconds later all other items in the catalogue's
    /// order, and what an old system needs. The first failure ends it; what was repaired before stays repaired. It
    /// blocks, and runs on any thread while no evaluation does.
    bool runRepairPass(const OnRepairStep &onStep = {});

    bool repairUpdateQM(const RequiredItem &item);
    /// A status that there is no repair for is a success for some kinds of items, and a failure for others, on purpose.
    bool repairCoreApp(const RequiredItem &item);
    bool repairQMTool(const RequiredItem &item);
    bool repairQMToolRoot(const RequiredItem &item);
    bool repairFramework(const RequiredItem &item);
    bool repairBundle(const RequiredItem &item);
    bool repairZIPArchiveItem(const RequiredItem &item);
    bool installIntel_10_5_Fixes();

    // The window: shown with what the last evaluation found; on the main thread. Where there is none, what would be
    // told to it is passed over.

    bool hasWindow() const { return m_window != nullptr; }
    /// When anything is missing, the window will be wanted soon, and what takes long begins. No other thread may run at
    /// this moment. \returns whether it will be wanted.
    bool prepareWindow() const;
    /// Loads the window without showing it. What is wrong with it is told when it is wanted.
    void loadWindowInAdvance();
    void runSelfRepair();
    /// Tells what is at fault where there is no such window, and waits until the user has read it.
    void runFaultsAlert();
    /// Starts a repair, unless one runs.
    void installButtonClick() override;
    void dontInstallButtonClick() override;
    /// Opens the folder of the log.
    void detailsButtonClick() override;
    void windowWillClose() override;
    void sheetDidEnd() override;
    /// After a pass that succeeded: starts the core, or shows the window again with what is left.
    void bringWindowBackToFront();
    void runQuillmark();
    void repairFailed();

    /// The body of the repair thread. It touches no window, and comes back through the main thread's queue.
    void runSelfRepairThread();

private:
    /// What an item that is not in order counts for.
    enum class Fault { None, Helper, HelperToRestart, Bundle };

    /// The first rule of an item's type that holds gives its status; when none does, the item is in order.
    struct StatusRule {
        std::string_view type;
        bool (*holds)(const InstallCheckManager &manager, const RequiredItem &item);
        ItemStatus status;
        Fault fault;
    };
    static std::span<const StatusRule> statusRules();

    void examine(std::string_view type, const RequiredItem &item, std::int32_t index);
    void applyStatusRules(std::string_view type, const RequiredItem &item, std::int32_t index);
    void count(Fault fault, const RequiredItem &item, std::int32_t index);
    std::string resourcePath(const std::string &fileName) const;
    /// The status of the first item that is equal to this one; nothing when none is.
    std::optional<ItemStatus> statusOf(const RequiredItem &item) const;
    bool isMissingOrOld(const RequiredItem &item) const;
    using ToolRepair = std::int32_t (UpdateToolManager::*)(const std::string &path, const std::string &signaturePath);
    using PermissionsRepair = std::int32_t (UpdateToolManager::*)(const std::string &name);
    bool repairTool(const RequiredItem &item, ToolRepair repair, PermissionsRepair repairPermissions);
    bool repairUsingPackage(const RequiredItem &item, std::int32_t (UpdateToolManager::*repair)(const std::string &));
    /// Whether the system's version meets a limit of the item's; true when either is not known.
    using VersionLimit = bool (*)(std::string_view limit, std::int32_t major, std::int32_t minor);
    bool isWithinLimit(const RequiredItem &item, std::string_view key, VersionLimit isMet) const;
    /// The short version of the bundle whose property list that is; absent when it has none.
    std::optional<std::string> shortVersionIn(const std::string &informationPath) const;
    std::optional<ComponentVersion> installedVersion(const std::string &informationPath) const;

    bool loadWindow();
    void awakeFromNib();
    /// The same in the user's words.
    std::vector<CheckWindowView::Fault> describedFaults() const;
    void repairDidEnd();
    void _repairFailed();
    void beginFailureSheet(std::string_view titleKey);

    bool isMissing(const RequiredItem &item) const;
    bool isOldTool(const RequiredItem &item) const;

    LocalizedStrings &m_strings;
    const BrandingManager &m_branding;
    UpdateToolManager &m_updateTool;
    ApplicationDelegate *m_delegate = nullptr;
    CheckWindowView *m_window = nullptr;
    bool m_hasTriedWindow = false;                // or known to be impossible
    std::vector<std::string> m_problemsInAdvance; ///< of a window that was loaded before anybody wanted it
    bool m_isRepairing = false;                   // from the click to what the main thread makes of its end
    const Value m_catalogue;                      ///< nothing when it can't be read
    std::vector<ItemStatus> m_statuses;
    bool m_macFuseRepairRequired = false;
    bool m_helperRepairRequired = false;
    std::int32_t m_numberRepairsRequired = 0;
    std::int32_t m_numberItemsMissing = 0;
    std::int32_t m_restartIndex = -1;
};

/// An item's value of a key; absent when it is not a text.
std::optional<std::string> textOf(const RequiredItem &item, std::string_view key);

} // namespace quillmark

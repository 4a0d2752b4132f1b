#include "desktop/MoveOffer.h"

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "platform/files/HomeFolder.h"
#include "platform/files/Path.h"
#include "texts/LocalizedStrings.h"
#include "utils/BooleanValue.h"
#include "utils/FileManager.h"
#include "utils/FormattedText.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quillmark {

namespace {

/// Newest first.
constexpr WindowLibraryAbilities kAbilities[] = {
    {949, true, true, true, "/usr/bin/xattr -d -r com.apple.quarantine '%@';"},
    {824, true, true, false, "/usr/bin/xattr -d com.apple.quarantine '%@';"},
    {-std::numeric_limits<double>::infinity(), false, false, false, ""},
};

/// Whether the path begins with one of the texts; that "/ApplicationsOld" begins with "/Applications" is deliberate.
bool startsWithAny(const std::string &path, const std::vector<std::string> &beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&path](const std::string &beginning) { return path.starts_with(beginning); });
}

std::string sourceOfMove() { return gAltSrcBundlePath.value_or(platform().mainBundle.path()); }

bool isOnVolume(const std::string &source) { return startsWithAny(source, platform().workspace.volumesFolders()); }

/// Where the volume of a disk image is mounted, which holds the bundle itself.
std::string volumeOf(const MovePlan &plan) { return deletingLastPathComponent(plan.source); }

bool holds(const std::string &path, char character) { return path.find(character) != std::string::npos; }

std::optional<std::string> obstacleTo(const MovePlan &plan) {
    const FileManager &files = __QMCurrentThreadFileManager();
    if (!files.isWritable(plan.source) && !isOnVolume(plan.source)) {
        return "No access to delete the app. Not offering to move it.";
    }
    // These two stand between single quotes in the shells' texts.
    if (holds(plan.destination, '\'') || (plan.isOnDiskImage && holds(volumeOf(plan), '\''))) {
        return "The path \"" + plan.source + "\" holds a single quote. Not offering to move it.";
    }
    // The shells' search path begins with a folder of the moved bundle.
    if (holds(plan.destination, ':')) {
        return "The path \"" + plan.destination + "\" holds a colon. Not offering to move it.";
    }
    // A link may have led from one to the other; what is removed to make room would be the application itself. A link
    // in the very place of the destination is just what makes room.
    if (files.isWithin(plan.source, plan.destination) ||
        files.isWithin(deletingLastPathComponent(plan.destination), plan.source)) {
        return '"' + plan.source + "\" and \"" + plan.destination + "\" are the same place. Not offering to move it.";
    }
    return std::nullopt;
}

bool liesInDownloads(const std::string &source) {
    if (abilitiesOfWindowLibrary(platform().systemInfo.appKitVersion()).findsDownloads) {
        return startsWithAny(source, platform().workspace.downloadsFolders());
    }
    return lastPathComponent(deletingLastPathComponent(source)) == "Downloads";
}

bool needsAuthorisation(const std::string &folder, const std::string &destination) {
    const FileManager &files = __QMCurrentThreadFileManager();
    const auto isInTheWay = [&files](const std::string &entry) {
        const std::string path = expandingTilde(entry);
        return files.fileExists(path) && !files.isWritable(path);
    };
    // Deliberate: a destination that is not there yet is not writable either, so a first move asks for a password.
    return !files.isWritable(expandingTilde(folder)) || !files.isWritable(expandingTilde(destination)) ||
           std::any_of(gAlsoRemoveBundlePaths.begin(), gAlsoRemoveBundlePaths.end(), isInTheWay);
}

std::string informativeText(const MovePlan &plan, LocalizedStrings &strings) {
    std::string offer = strings.localisedString("I can move myself to the Applications folder if you'd like.");
    if (plan.needsAuthorisation) {
        return offer + ' ' + strings.localisedString("Note that this will require an administrator password.");
    }
    if (liesInDownloads(plan.source)) {
        return offer + ' ' + strings.localisedString("This will keep your Downloads folder uncluttered.");
    }
    return offer;
}

} // namespace

const WindowLibraryAbilities &abilitiesOfWindowLibrary(double version) {
    return *std::find_if(std::begin(kAbilities), std::end(kAbilities), [version](const WindowLibraryAbilities &row) {
        return std::floor(version) > row.above || std::isinf(row.above);
    });
}

std::optional<std::string> reasonToStay() {
    const std::string source = sourceOfMove();
    if (booleanValueOf(platform().userDefaults.objectForKey(kMoveAlertSuppress))) {
        return "The user asked not to be asked again";
    }
    if (startsWithAny(source, platform().workspace.applicationsFolders(Workspace::Domain::All))) {
        return '"' + source + "\" lies in an Applications folder";
    }
    if (('/' + source + '/').find("/Applications/") != std::string::npos) {
        return "A folder of \"" + source + "\" is called Applications";
    }
    return std::nullopt;
}

MovePlan planOfMove(LocalizedStrings &strings) {
    const std::vector<std::string> folders = platform().workspace.applicationsFolders(Workspace::Domain::Local);
    const std::string folder = gAltDstBundleParentPath.value_or(folders.empty() ? "" : folders.back());

    MovePlan plan;
    plan.source = sourceOfMove();
    plan.destination = appendingPathComponent(folder, lastPathComponent(plan.source));
    plan.isOnDiskImage = isOnVolume(plan.source) && !__QMCurrentThreadFileManager().isWritable(plan.source);
    plan.obstacle = obstacleTo(plan);
    plan.needsAuthorisation = needsAuthorisation(folder, plan.destination);
    plan.informativeText = informativeText(plan, strings);

    const std::string quarantine =
        formatted(abilitiesOfWindowLibrary(platform().systemInfo.appKitVersion()).quarantineFormat, plan.destination);
    plan.relaunchCommand = formatted("(while [ `ps -p %d | wc -l` -gt 1 ]; do sleep 0.1; done; %@ open '%@') &",
                                     platform().systemInfo.processIdentifier(), quarantine, plan.destination);
    if (plan.isOnDiskImage) {
        plan.detachCommand = formatted("(sleep 5 && hdiutil detach '%@') &", volumeOf(plan));
    }
    return plan;
}

} // namespace quillmark

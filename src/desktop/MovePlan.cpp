#include "desktop/MovePlan.h"

#include "branding/LocalizedStrings.h"
#include "platform/Bundle.h"
#include "platform/HomeFolder.h"
#include "platform/Path.h"
#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
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
bool startsWithAny(const QString &path, const QStringList &beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&path](const QString &beginning) { return path.startsWith(beginning); });
}

QString sourceOfMove(const Platform &platform) {
    return gAltSrcBundlePath.isNull() ? platform.mainBundle.path() : gAltSrcBundlePath;
}

bool isOnVolume(const QString &source, const Platform &platform) {
    return startsWithAny(source, platform.workspace.volumesFolders());
}

/// Where the volume of a disk image is mounted, which holds the bundle itself.
QString volumeOf(const MovePlan &plan) { return deletingLastPathComponent(plan.source); }

QString obstacleTo(const MovePlan &plan, const Platform &platform) {
    const FileManager &files = __QMCurrentThreadFileManager();
    if (!files.isWritable(plan.source) && !isOnVolume(plan.source, platform)) {
        return QStringLiteral("No access to delete the app. Not offering to move it.");
    }
    // These two stand between single quotes in the shells' texts.
    if (plan.destination.contains(u'\'') || (plan.isOnDiskImage && volumeOf(plan).contains(u'\''))) {
        return QStringLiteral("The path \"%1\" holds a single quote. Not offering to move it.").arg(plan.source);
    }
    // The shells' search path begins with a folder of the moved bundle.
    if (plan.destination.contains(u':')) {
        return QStringLiteral("The path \"%1\" holds a colon. Not offering to move it.").arg(plan.destination);
    }
    // A link may have led from one to the other; what is removed to make room would be the application itself. A link
    // in the very place of the destination is just what makes room.
    if (files.isWithin(plan.source, plan.destination) ||
        files.isWithin(deletingLastPathComponent(plan.destination), plan.source)) {
        return QStringLiteral(R"("%1" and "%2" are the same place. Not offering to move it.)")
            .arg(plan.source, plan.destination);
    }
    return {};
}

bool liesInDownloads(const QString &source, const Platform &platform) {
    if (abilitiesOfWindowLibrary(platform.systemInfo.appKitVersion()).findsDownloads) {
        return startsWithAny(source, platform.workspace.downloadsFolders());
    }
    return lastPathComponent(deletingLastPathComponent(source)) == u"Downloads";
}

bool needsAuthorisation(const QString &folder, const QString &destination) {
    const FileManager &files = __QMCurrentThreadFileManager();
    const auto isInTheWay = [&files](const QString &entry) {
        const QString path = expandingTilde(entry);
        return files.fileExists(path) && !files.isWritable(path);
    };
    // Deliberate: a destination that is not there yet is not writable either, so a first move asks for a password.
    return !files.isWritable(expandingTilde(folder)) || !files.isWritable(expandingTilde(destination)) ||
           std::any_of(gAlsoRemoveBundlePaths.begin(), gAlsoRemoveBundlePaths.end(), isInTheWay);
}

QString informativeText(const MovePlan &plan, const Platform &platform, LocalizedStrings &strings) {
    QString offer =
        strings.localisedString(QStringLiteral("I can move myself to the Applications folder if you'd like."));
    if (plan.needsAuthorisation) {
        return offer + u' ' +
               strings.localisedString(QStringLiteral("Note that this will require an administrator password."));
    }
    if (liesInDownloads(plan.source, platform)) {
        return offer + u' ' +
               strings.localisedString(QStringLiteral("This will keep your Downloads folder uncluttered."));
    }
    return offer;
}

} // namespace

const WindowLibraryAbilities &abilitiesOfWindowLibrary(double version) {
    return *std::find_if(std::begin(kAbilities), std::end(kAbilities), [version](const WindowLibraryAbilities &row) {
        return std::floor(version) > row.above || std::isinf(row.above);
    });
}

QString reasonToStay(const Platform &platform) {
    const QString source = sourceOfMove(platform);
    if (booleanValueOf(platform.userDefaults.objectForKey(kMoveAlertSuppress))) {
        return QStringLiteral("The user asked not to be asked again");
    }
    if (startsWithAny(source, platform.workspace.applicationsFolders(Workspace::Domain::All))) {
        return QStringLiteral("\"%1\" lies in an Applications folder").arg(source);
    }
    if (source.split(u'/').contains(u"Applications")) {
        return QStringLiteral("A folder of \"%1\" is called Applications").arg(source);
    }
    return {};
}

MovePlan planOfMove(const Platform &platform, LocalizedStrings &strings) {
    const QStringList folders = platform.workspace.applicationsFolders(Workspace::Domain::Local);
    const QString folder =
        gAltDstBundleParentPath.isNull() ? folders.value(folders.size() - 1) : gAltDstBundleParentPath;

    MovePlan plan;
    plan.source = sourceOfMove(platform);
    plan.destination = appendingPathComponent(folder, lastPathComponent(plan.source));
    plan.isOnDiskImage = isOnVolume(plan.source, platform) && !__QMCurrentThreadFileManager().isWritable(plan.source);
    plan.obstacle = obstacleTo(plan, platform);
    plan.needsAuthorisation = needsAuthorisation(folder, plan.destination);
    plan.informativeText = informativeText(plan, platform, strings);

    const QString quarantine =
        formatted(abilitiesOfWindowLibrary(platform.systemInfo.appKitVersion()).quarantineFormat, plan.destination);
    plan.relaunchCommand = formatted("(while [ `ps -p %d | wc -l` -gt 1 ]; do sleep 0.1; done; %@ open '%@') &",
                                     platform.systemInfo.processIdentifier(), quarantine, plan.destination);
    if (plan.isOnDiskImage) {
        plan.detachCommand = formatted("(sleep 5 && hdiutil detach '%@') &", volumeOf(plan));
    }
    return plan;
}

} // namespace quillmark

#include "tools/Applications.h"

#include "platform/AppleEvents.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "utils/FormattedText.h"
#include "utils/Log.h"

#include <algorithm>

namespace quillmark {

namespace {

Error errorOf(qint32 code, const char *failureReason, const QString &description) {
    return {
        kErrorDomain,
        code,
        {{kLocalizedFailureReasonKey, QString::fromLatin1(failureReason)}, {kLocalizedDescriptionKey, description}}};
}

/// Logs why a request failed, and makes the error of it.
Error quitError(qint32 code, const QString &description) {
    logVerbose("%@", description);
    return errorOf(code, "quitApplication failed", description);
}

/// The "wth" is part of the texts.
std::optional<Error> requestQuit(const QString &bundleIdentifier) {
    AppleEvents &events = platform().appleEvents;
    std::unique_ptr<AppleEvents::Event> event;
    if (const qint32 status = events.buildQuitEvent(bundleIdentifier.toStdString(), event); status != 0) {
        return quitError(kQuitEventNotBuilt,
                         formatted("Request to quit app wth id \"%@\" failed (AEBuildAppleEvent failed with error %d)",
                                   bundleIdentifier, status));
    }
    if (const qint32 status = events.sendMessage(*event); status != 0) {
        return quitError(kQuitEventNotSent,
                         formatted("Request to quit app wth id \"%@\" failed (AESendMessage failed with error %d)",
                                   bundleIdentifier, status));
    }
    return std::nullopt;
}

std::optional<Error> waitUntilQuit(const QString &bundleIdentifier, double timeOut) {
    constexpr double kFirstInterval = 0.25;
    constexpr double kGrowth = 1.5;
    constexpr double kLongestInterval = 2.0;
    double interval = kFirstInterval;
    double elapsed = 0;
    while (isApplicationRunning(bundleIdentifier)) {
        // Deliberate: the first intervals are cut to no sleep at all, and still count.
        platform().clock.sleep(std::chrono::seconds(static_cast<qint64>(interval)));
        elapsed += interval;
        if (elapsed >= timeOut) {
            return errorOf(kQuitTimedOut, "quitApplication failed",
                           formatted("Timed out waiting for app with id \"%@\" to quit after %lds", bundleIdentifier,
                                     static_cast<qint64>(timeOut)));
        }
        logVerbose("Waiting for app with id \"%@\" to quit", bundleIdentifier);
        interval = std::min(kLongestInterval, interval * kGrowth);
    }
    logVerbose("App with id \"%@\" did quit", bundleIdentifier);
    return std::nullopt;
}

} // namespace

std::optional<QVariantMap> launchedApplication(const QString &bundleIdentifier) {
    for (const QVariantMap &record : platform().workspace.launchedApplications()) {
        const QVariant identifier = record.value(kApplicationBundleIdentifier); // absent is not empty
        if (identifier.isValid() && identifier.toString() == bundleIdentifier) {
            return record;
        }
    }
    return std::nullopt;
}

bool isApplicationRunning(const QString &bundleIdentifier) { return launchedApplication(bundleIdentifier).has_value(); }

Error launchFailed(const QString &path) {
    return errorOf(kLaunchFailed, "launchApplication failed", formatted("launchApplication \"%@\" failed", path));
}

std::optional<Error> launchApplication(const QString &bundleIdentifier) {
    Workspace &workspace = platform().workspace;
    const QString bundle = workspace.bundleWithIdentifier(bundleIdentifier);
    if (bundle.isNull()) {
        return errorOf(kLaunchFailed, "launchApplication failed",
                       formatted("bundleWithIdentifier \"%@\" failed", bundleIdentifier));
    }
    if (!workspace.launchApplication(bundle)) {
        return launchFailed(bundle);
    }
    return std::nullopt;
}

std::optional<Error> quitApplication(const QString &bundleIdentifier, bool wait, double timeOut) {
    if (!isApplicationRunning(bundleIdentifier)) {
        logVerbose("Not requesting app with id \"%@\" to quit because it isn't running", bundleIdentifier);
        return std::nullopt;
    }
    logVerbose("Requesting app with id \"%@\" to quit...", bundleIdentifier);
    if (auto error = requestQuit(bundleIdentifier)) {
        return error;
    }
    logVerbose("Requested app with id \"%@\" to quit", bundleIdentifier);
    return wait ? waitUntilQuit(bundleIdentifier, timeOut) : std::nullopt;
}

std::optional<QStringList> pathsToApplication() { return std::nullopt; }

} // namespace quillmark

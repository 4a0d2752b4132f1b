#include "tools/LaunchedApplications.h"

#include "platform/AppleEvents.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "utils/FormattedText.h"
#include "utils/Log.h"

#include <algorithm>

namespace quillmark {

namespace {

Error errorOf(std::int32_t code, const char *failureReason, const std::string &description) {
    return {kErrorDomain, code, {{kLocalizedFailureReasonKey, failureReason}, {kLocalizedDescriptionKey, description}}};
}

/// Logs which call of a request failed, and makes the error of it. The "wth" is part of the text.
Error requestFailed(std::int32_t code, const std::string &bundleIdentifier, const char *call, std::int32_t status) {
    const std::string description =
        formatted("Request to quit app wth id \"%@\" failed (%s failed with error %d)", bundleIdentifier, call, status);
    logVerbose("%@", description);
    return errorOf(code, "quitApplication failed", description);
}

std::optional<Error> requestQuit(const std::string &bundleIdentifier) {
    AppleEvents &events = platform().appleEvents;
    std::unique_ptr<AppleEvents::Event> event;
    if (const std::int32_t status = events.buildQuitEvent(bundleIdentifier, event); status != 0) {
        return requestFailed(kQuitEventNotBuilt, bundleIdentifier, "AEBuildAppleEvent", status);
    }
    if (const std::int32_t status = events.sendMessage(*event); status != 0) {
        return requestFailed(kQuitEventNotSent, bundleIdentifier, "AESendMessage", status);
    }
    return std::nullopt;
}

std::optional<Error> waitUntilQuit(const std::string &bundleIdentifier, double timeOut) {
    constexpr double kFirstInterval = 0.25;
    constexpr double kGrowth = 1.5;
    constexpr double kLongestInterval = 2.0;
    double interval = kFirstInterval;
    double elapsed = 0;
    while (isApplicationRunning(bundleIdentifier)) {
        // Deliberate: the first intervals are cut to no sleep at all, and still count.
        platform().clock.sleep(std::chrono::seconds(static_cast<std::int64_t>(interval)));
        elapsed += interval;
        if (elapsed >= timeOut) {
            return errorOf(kQuitTimedOut, "quitApplication failed",
                           formatted("Timed out waiting for app with id \"%@\" to quit after %lds", bundleIdentifier,
                                     static_cast<std::int64_t>(timeOut)));
        }
        logVerbose("Waiting for app with id \"%@\" to quit", bundleIdentifier);
        interval = std::min(kLongestInterval, interval * kGrowth);
    }
    logVerbose("App with id \"%@\" did quit", bundleIdentifier);
    return std::nullopt;
}

} // namespace

std::optional<Dictionary> launchedApplication(const std::string &bundleIdentifier) {
    for (Dictionary &record : platform().workspace.launchedApplications()) {
        if (valueOf(record, kApplicationBundleIdentifier) == bundleIdentifier) {
            return std::optional(std::move(record));
        }
    }
    return std::nullopt;
}

bool isApplicationRunning(const std::string &bundleIdentifier) {
    return launchedApplication(bundleIdentifier).has_value();
}

Error launchFailed(const std::string &path) {
    return errorOf(kLaunchFailed, "launchApplication failed", formatted("launchApplication \"%@\" failed", path));
}

std::optional<Error> launchApplication(const std::string &bundleIdentifier) {
    Workspace &workspace = platform().workspace;
    const auto bundle = workspace.bundleWithIdentifier(bundleIdentifier);
    if (!bundle) {
        return errorOf(kLaunchFailed, "launchApplication failed",
                       formatted("bundleWithIdentifier \"%@\" failed", bundleIdentifier));
    }
    return workspace.launchApplication(*bundle) ? std::nullopt : std::optional(launchFailed(*bundle));
}

std::optional<Error> quitApplication(const std::string &bundleIdentifier, bool wait, double timeOut) {
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

std::optional<std::vector<std::string>> pathsToApplication() { return std::nullopt; }

} // namespace quillmark

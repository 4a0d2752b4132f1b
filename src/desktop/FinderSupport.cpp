#include "desktop/FinderSupport.h"

#include "desktop/CompiledFinderScripts.h"
#include "platform/AppleEvents.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "texts/LocalizedStrings.h"
#include "tools/ProcessUtilities.h"
#include "utils/FormattedText.h"
#include "utils/IntegerValue.h"

#include <csignal>

namespace quillmark {

namespace {

constexpr double kCacheLifetime = 2.5; // seconds

/// Seconds since the platform's reference date, the first of January 2001.
double secondsSinceReferenceDate(Clock::Time time) {
    constexpr Clock::Time kReferenceDate{std::chrono::seconds(978307200)};
    return std::chrono::duration<double>(time - kReferenceDate).count();
}

/// Made at the first use and never destroyed, as they are shared by all.
CompiledFinderScripts &sharedScripts() {
    static auto &scripts = *new CompiledFinderScripts(platform().scripts, QMLocalizedString("ProductName"));
    return scripts;
}

} // namespace

FinderSupport &FinderSupport::sharedManager() {
    static auto &instance = *new FinderSupport(platform().clock); // never destroyed: others may ask until the end
    return instance;
}

const std::vector<std::string> &FinderSupport::getSelectedFinderItemsIsRetry(bool isRetry) {
    const double now = secondsSinceReferenceDate(m_clock.now());
    if (!isRetry && now - _lastRequestTimeInterval <= kCacheLifetime) {
        return _fileList;
    }
    const std::scoped_lock lock(m_mutex);
    _fileList.clear();
    appendSelectedFinderItemsToArray(_fileList, isRetry);
    _lastRequestTimeInterval = now; // deliberate: of the call, however long the script took
    return _fileList;
}

std::vector<std::string> FinderSupport::getSelectedFinderItemsNoCacheIsRetry(bool isRetry) {
    return createSelectedFinderItemsArrayNoCacheIsRetry(isRetry);
}

std::vector<std::string> FinderSupport::createSelectedFinderItemsArrayNoCacheIsRetry(bool isRetry) {
    std::vector<std::string> items;
    appendSelectedFinderItemsToArray(items, isRetry);
    return items;
}

void FinderSupport::appendSelectedFinderItemsToArray(std::vector<std::string> &array, bool isRetry) {
    const auto result = sharedScripts().run(isRetry);
    if (!result || result->type != ScriptDescriptor::Type::Items) {
        return;
    }
    for (const ScriptDescriptor &item : result->items) {
        if (item.stringValue) {
            array.push_back(*item.stringValue);
        }
    }
}

void FinderSupport::updateFileAtPath(const std::string &path) {
    const auto script = platform().scripts.scriptWithSource(
        formatted("tell application \"Finder\"\nset fileAlias to POSIX file \"%@\"\nupdate fileAlias\nend tell", path));
    script->compile();
    script->execute();
}

bool FinderSupport::showConnectedServersOnDesktop() {
    const auto script = platform().scripts.scriptWithSource(
        "on run argv\ntell application \"Finder\"\nreturn desktop shows connected servers of Finder "
        "preferences\nend tell\nend run\n");
    const auto result = script->execute();
    return !result || result->booleanValue; // deliberate: a failure counts as shown
}

void FinderSupport::setShowConnectedServersOnDesktop(bool isShown) {
    const auto script = platform().scripts.scriptWithSource(
        formatted("on run argv\ntell application \"Finder\"\nset desktop shows connected servers of Finder preferences "
                  "to %@\nend tell\nend run\n",
                  isShown ? "true" : "false"));
    script->execute();
}

void FinderSupport::quitiTunes() {
    const auto record = ProcessUtilities::getRunningiTunesInfo();
    const std::int64_t process = record ? integerValueOf(valueOf(*record, kApplicationProcessIdentifier)) : 0;
    if (process > 0) { // 0 and less are groups of processes, ours among them
        ::kill(static_cast<pid_t>(process), SIGTERM);
    }
}

std::int32_t FinderSupport::sendAppleEventToSystemProcess(std::uint32_t eventIdentifier) {
    constexpr AppleEvents::ProcessSerialNumber kSystemProcess{0, 1};
    AppleEvents &events = platform().appleEvents;
    std::unique_ptr<AppleEvents::Address> address;
    if (const std::int32_t status = events.createProcessAddress(kSystemProcess, address); status != 0) {
        return status;
    }
    std::unique_ptr<AppleEvents::Event> event;
    const std::int32_t status = events.createEvent(fourCharacterCode("aevt"), eventIdentifier, *address, event);
    address.reset(); // the event has its own
    return status != 0 ? status : events.sendMessage(*event);
}

} // namespace quillmark

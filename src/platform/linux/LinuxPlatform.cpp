#include "platform/HomeFolder.h"
#include "platform/Path.h"
#include "platform/Platform.h"
#include "platform/linux/KeyringModule.h"
#include "platform/linux/LinuxAlerts.h"
#include "platform/linux/LinuxAppleEvents.h"
#include "platform/linux/LinuxApplication.h"
#include "platform/linux/LinuxAuthorization.h"
#include "platform/linux/LinuxBundle.h"
#include "platform/linux/LinuxCheckWindows.h"
#include "platform/linux/LinuxClock.h"
#include "platform/linux/LinuxImages.h"
#include "platform/linux/LinuxMainThread.h"
#include "platform/linux/LinuxPropertyList.h"
#include "platform/linux/LinuxScripts.h"
#include "platform/linux/LinuxSystemInfo.h"
#include "platform/linux/LinuxTasks.h"
#include "platform/linux/LinuxUserDefaults.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/SessionModule.h"
#include "platform/linux/WindowModule.h"

namespace quillmark {

namespace {

std::string preferenceFile(const Bundle &bundle) {
    std::string identifier = valueOf(bundle.infoDictionary(), "CFBundleIdentifier").text().value_or("");
    if (identifier.empty() || identifier.find('/') != std::string::npos) {
        identifier = "com.quillmark.QuillmarkLauncher";
    }
    return appendingPathComponent(homeFolder(), "Library/Preferences/" + identifier + ".plist");
}

struct LinuxBackends {
    LinuxMainThread mainThread;
    LinuxApplication application{mainThread.runLoop()};
    LinuxClock clock;
    LinuxImages images;
    LinuxPropertyList propertyList;
    LinuxScripts scripts;
    LinuxSystemInfo systemInfo{propertyList};
    LinuxBundle mainBundle{LinuxBundle::pathOfRunningBundle(), LinuxBundle::preferredLanguages(), propertyList};
    LinuxAuthorization authorization{mainBundle};
    WindowModule windowModule{mainBundle, mainThread.runLoop()};
    LinuxAlerts alerts{windowModule};
    LinuxCheckWindows checkWindows{windowModule};
    LinuxUserDefaults userDefaults{preferenceFile(mainBundle), propertyList, clock};
    LinuxTasks tasks;
    KeyringModule keychain{mainBundle};
    SessionModule sessionModule{mainBundle};
    LinuxWorkspace workspace{propertyList, sessionModule, clock};
    LinuxAppleEvents appleEvents{workspace, sessionModule};

    Platform platform{alerts,     appleEvents, application,  authorization, mainBundle,   checkWindows,
                      clock,      images,      keychain,     mainThread,    propertyList, scripts,
                      systemInfo, tasks,       userDefaults, workspace};
};

} // namespace

const Platform &nativePlatform() {
    // Never destroyed: other threads and exit handlers may log until the very end.
    static const auto *const backends = new LinuxBackends;
    return backends->platform;
}

std::unique_ptr<Bundle> nativeBundle(const std::string &path) {
    return std::make_unique<LinuxBundle>(path, LinuxBundle::preferredLanguages(), nativePlatform().propertyList);
}

} // namespace quillmark

#include "platform/Platform.h"
#include "platform/images/PortableImages.h"
#include "platform/linux/LinuxBundle.h"
#include "platform/linux/LinuxClock.h"
#include "platform/linux/LinuxSystemInfo.h"
#include "platform/linux/LinuxUserDefaults.h"
#include "platform/linux/desktop/LinuxAppleEvents.h"
#include "platform/linux/desktop/LinuxScripts.h"
#include "platform/linux/desktop/LinuxWorkspace.h"
#include "platform/linux/desktop/SessionModule.h"
#include "platform/linux/keyring/KeyringModule.h"
#include "platform/linux/mainthread/LinuxApplication.h"
#include "platform/linux/mainthread/LinuxMainThread.h"
#include "platform/linux/processes/LinuxAuthorization.h"
#include "platform/linux/processes/LinuxTasks.h"
#include "platform/linux/windows/LinuxAlerts.h"
#include "platform/linux/windows/LinuxCheckWindows.h"
#include "platform/linux/windows/WindowModule.h"
#include "platform/propertylist/PropertyListFormats.h"

namespace quillmark {

namespace {

struct LinuxBackends {
    LinuxMainThread mainThread;
    LinuxApplication application{mainThread.runLoop()};
    LinuxClock clock;
    PortableImages images;
    PropertyListFormats propertyList;
    LinuxScripts scripts;
    LinuxSystemInfo systemInfo{propertyList};
    LinuxBundle mainBundle{LinuxBundle::pathOfRunningBundle(), LinuxBundle::preferredLanguages(), propertyList};
    LinuxAuthorization authorization{mainBundle};
    WindowModule windowModule{mainBundle, mainThread.runLoop()};
    LinuxAlerts alerts{windowModule};
    LinuxCheckWindows checkWindows{windowModule};
    LinuxUserDefaults userDefaults{LinuxUserDefaults::pathFor(mainBundle), propertyList, clock};
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

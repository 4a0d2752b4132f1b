#pragma once

#include "fakes/FakeAlerts.h"
#include "fakes/FakeAppleEvents.h"
#include "fakes/FakeApplication.h"
#include "fakes/FakeAuthorization.h"
#include "fakes/FakeBundle.h"
#include "fakes/FakeCheckWindows.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeImages.h"
#include "fakes/FakeKeychain.h"
#include "fakes/FakeMainThread.h"
#include "fakes/FakePropertyList.h"
#include "fakes/FakeScripts.h"
#include "fakes/FakeSystemInfo.h"
#include "fakes/FakeTasks.h"
#include "fakes/FakeUserDefaults.h"
#include "fakes/FakeWorkspace.h"
#include "platform/Platform.h"

namespace quillmark::test {

/// A whole platform of fakes, installed while it lives.
class FakePlatform {
public:
    FakePlatform();
    FakePlatform(const FakePlatform &) = delete;
    FakePlatform &operator=(const FakePlatform &) = delete;
    ~FakePlatform();

    Transcript transcript;
    FakeAlerts alerts{transcript};
    FakeAppleEvents appleEvents{transcript};
    FakeApplication application{transcript};
    FakeAuthorization authorization{transcript};
    FakeBundle bundle;
    FakeCheckWindows checkWindows{transcript};
    FakeClock clock;
    FakeImages images;
    FakeKeychain keychain{transcript};
    FakeMainThread mainThread;
    FakePropertyList propertyList;
    FakeScripts scripts{transcript};
    FakeSystemInfo systemInfo;
    FakeTasks tasks{transcript};
    FakeUserDefaults userDefaults{transcript};
    FakeWorkspace workspace{transcript};

    Platform platform{alerts,     appleEvents, application,  authorization, bundle,       checkWindows,
                      clock,      images,      keychain,     mainThread,    propertyList, scripts,
                      systemInfo, tasks,       userDefaults, workspace};
};

/// One that is never destroyed, for what keeps the platform of its first use. Installs it.
FakePlatform &immortalPlatform();

} // namespace quillmark::test

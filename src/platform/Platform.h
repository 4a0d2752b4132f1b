#pragma once

#include <memory>
#include <string>

namespace quillmark {

class Alerts;
class AppleEvents;
class Application;
class Authorization;
class Bundle;
class CheckWindows;
class Clock;
class Images;
class Keychain;
class MainThread;
class PropertyList;
class Scripts;
class SystemInfo;
class Tasks;
class UserDefaults;
class Workspace;

/// Everything that an operating system must provide, one port a subject.
struct Platform {
    Alerts &alerts;
    AppleEvents &appleEvents;
    Application &application;
    Authorization &authorization;
    Bundle &mainBundle;
    CheckWindows &checkWindows;
    Clock &clock;
    Images &images;
    Keychain &keychain;
    MainThread &mainThread;
    PropertyList &propertyList;
    Scripts &scripts;
    SystemInfo &systemInfo;
    Tasks &tasks;
    UserDefaults &userDefaults;
    Workspace &workspace;

    /// The same with another port of that kind.
    template <class Port>
    Platform with(Port &other) const {
        return {chosen(alerts, other),        chosen(appleEvents, other),  chosen(application, other),
                chosen(authorization, other), chosen(mainBundle, other),   chosen(checkWindows, other),
                chosen(clock, other),         chosen(images, other),       chosen(keychain, other),
                chosen(mainThread, other),    chosen(propertyList, other), chosen(scripts, other),
                chosen(systemInfo, other),    chosen(tasks, other),        chosen(userDefaults, other),
                chosen(workspace, other)};
    }

private:
    template <class Port>
    static Port &chosen(Port & /*own*/, Port &other) {
        return other;
    }
    template <class Own, class Port>
    static Own &chosen(Own &own, Port & /*other*/) {
        return own;
    }
};

/// The platform in force: the native one, unless another one was installed.
const Platform &platform();

/// Puts another platform in the native one's place; null brings the native one back. The caller keeps the object alive.
/// Not to be called while another thread uses the platform.
void installPlatform(const Platform *replacement);

/// The platform of the operating system that this program was built for, made on first use.
const Platform &nativePlatform();

/// The bundle at a path, whether or not there is one, with texts in the user's language.
std::unique_ptr<Bundle> nativeBundle(const std::string &path);

} // namespace quillmark

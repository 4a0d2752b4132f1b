// Evaluating a catalogue: components that are looked at, beside the same questions to the system alone; tools that are
// run, beside a bare posix_spawn with one pipe.

#include "accounts/KeyList.h"
#include "branding/BrandingManager.h"
#include "installcheck/InstallCheckManager.h"
#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "tools/UpdateToolManager.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace quillmark;

constexpr int kMostItems = 10'000;
const char *const kTool = "/bin/echo";

/// The kinds of items that no tool has to be run for. They take turns in the catalogue.
constexpr std::array kTypes = {"CoreApp", "Framework", "Bundle", "FinderCM", "FinderOverlayInsert"};
enum Kind { CoreApp, Framework, Bundle, FinderCM, FinderOverlay };

/// The installed components, all in order or not required.
class Components {
public:
    Components() {
        installPlatform(&m_platform);
        std::filesystem::remove_all(m_root);
        std::filesystem::create_directories(m_root / "A.app/Contents/Resources/Core.app");
        const auto core = m_root / "A.app/Contents/Resources/Core.app";
        ::chmod(core.c_str(), 0755);
        const Dictionary information = {{"CFBundleIdentifier", "com.quillmark.bench"},
                                        {"CFBundleShortVersionString", "9.0.0"},
                                        {"CFBundleVersion", "1"}};
        write("Info.plist", information);
        for (int i = 0; i < kMostItems; ++i) {
            if (i % 5 == Bundle || i % 5 == FinderCM) {
                std::filesystem::create_directories(pathOf(i) / "Contents");
                std::filesystem::copy_file(m_root / "Info.plist", pathOf(i) / "Contents/Info.plist");
            }
        }
    }
    Components(const Components &) = delete;
    Components &operator=(const Components &) = delete;
    ~Components() { std::filesystem::remove_all(m_root); }

    std::filesystem::path pathOf(int item) const { return m_root / ("Component " + std::to_string(item)); }
    std::filesystem::path core() const { return m_root / "A.app/Contents/Resources/Core.app"; }

    /// An install check over so many of them.
    std::unique_ptr<InstallCheckManager> ofComponents(int count) {
        List items;
        for (int i = 0; i < count; ++i) {
            const bool isOverlay = i % 5 == FinderOverlay;
            items.push_back(Dictionary{{kInstallType, kTypes[static_cast<size_t>(i % 5)]},
                                       {kName, "Component"},
                                       {kInstallPath, pathOf(i).string()},
                                       {kVersion, "1.14.4"},
                                       {kResource, "Core.app"},
                                       {isOverlay ? kMinMacOSXVersion : kDescription, "10.4"}});
        }
        return over(items);
    }
    /// An install check over so many tools.
    std::unique_ptr<InstallCheckManager> ofTools(int count) {
        List items;
        for (int i = 0; i < count; ++i) {
            items.push_back(Dictionary{{kInstallType, "QMTool"}, {kName, "Tool"}, {kInstallPath, kTool}});
        }
        return over(items);
    }

private:
    void write(const char *file, const Dictionary &values) const {
        std::ofstream(m_root / file) << nativePlatform().propertyList.toXml(values).value();
    }
    std::unique_ptr<InstallCheckManager> over(const List &items) {
        write("A.app/Contents/Resources/RequiredItems.plist", {{"RequiredItems", items}});
        return std::make_unique<InstallCheckManager>(m_strings, m_branding, m_updateTool);
    }

    const std::filesystem::path m_root = std::filesystem::temp_directory_path() / "quillmark-bench-components";
    const std::unique_ptr<quillmark::Bundle> m_bundle = nativeBundle(m_root / "A.app");
    const Platform m_platform = nativePlatform().with(*m_bundle);
    LocalizedStrings m_strings{*m_bundle};
    BrandingManager m_branding{*m_bundle, nativePlatform().images, m_strings, [] { return -1; }};
    UpdateToolManager m_updateTool;
};

Components &components() {
    static Components instance;
    return instance;
}

/// What the system and the property-list reader have to be asked for one item.
size_t askedFor(int item) {
    const std::string path = components().pathOf(item);
    struct stat attributes {};
    utsname system{};
    switch (item % 5) {
    case CoreApp:
        return static_cast<size_t>(::lstat(components().core().c_str(), &attributes));
    case Bundle:
    case FinderCM:
        return static_cast<size_t>(::access(path.c_str(), F_OK)) +
               static_cast<size_t>(nativePlatform().propertyList.readDictionary(path + "/Contents/Info.plist").size());
    case FinderOverlay:
        return static_cast<size_t>(::uname(&system));
    default:
        return 0;
    }
}

void componentsAlone(benchmark::State &state) {
    components();
    for ([[maybe_unused]] auto run : state) {
        for (int item = 0; item < state.range(0); ++item) {
            benchmark::DoNotOptimize(askedFor(item));
        }
    }
}

void componentsByUs(benchmark::State &state) {
    const auto manager = components().ofComponents(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto run : state) {
        if (!manager->checkForRequiredItems() || std::ssize(manager->requiredItemsList()) != state.range(0)) {
            state.SkipWithError("something is not in order");
        }
    }
}

size_t bareRun(const char *program) {
    int output[2];
    if (::pipe2(output, O_CLOEXEC) != 0) {
        std::abort();
    }
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    std::array<char *, 2> arguments = {const_cast<char *>(program), nullptr};
    pid_t child = 0;
    ::posix_spawn(&child, program, &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(output[1]);
    std::array<char, 256> piece; // NOLINT: filled by the system
    size_t bytes = 0;
    pollfd wait{output[0], POLLIN, 0};
    ::poll(&wait, 1, -1);
    for (ssize_t count = 0; (count = ::read(output[0], piece.data(), piece.size())) > 0;) {
        bytes += static_cast<size_t>(count);
    }
    ::close(output[0]);
    ::waitpid(child, nullptr, 0);
    return bytes;
}

void toolsAlone(benchmark::State &state) {
    for ([[maybe_unused]] auto run : state) {
        for (int item = 0; item < state.range(0); ++item) {
            benchmark::DoNotOptimize(bareRun(kTool));
        }
    }
}

void toolsByUs(benchmark::State &state) {
    const auto manager = components().ofTools(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto run : state) {
        manager->updateStatus();
        if (manager->numberItemsMissing() != state.range(0)) {
            state.SkipWithError("a tool was not asked");
        }
    }
}

} // namespace

BENCHMARK(componentsAlone)->Name("components/floor")->RangeMultiplier(10)->Range(10, kMostItems)->UseRealTime();
BENCHMARK(componentsByUs)->Name("components/ours")->RangeMultiplier(10)->Range(10, kMostItems)->UseRealTime();
BENCHMARK(toolsAlone)->Name("tools/floor")->Arg(10)->UseRealTime();
BENCHMARK(toolsByUs)->Name("tools/ours")->Arg(10)->UseRealTime();

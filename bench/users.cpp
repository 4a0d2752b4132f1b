// The settings of many users: one that is read, one that is changed, and an account that is renamed. The floor of a
// change writes as large a preference file.

#include "accounts/KeyList.h"
#include "accounts/KeychainManager.h"
#include "accounts/UserManager.h"
#include "platform/Platform.h"
#include "platform/linux/LinuxClock.h"
#include "platform/linux/LinuxUserDefaults.h"
#include "platform/propertylist/PropertyListFormats.h"

#include <benchmark/benchmark.h>
#include <filesystem>

namespace quillmark {
namespace {

std::string nameOf(std::int64_t number) { return "user" + std::to_string(number) + "@example.com"; }

UserRecord recordOf(std::int64_t number) {
    UserRecord record = UserManager::setupUserDefaults();
    record[kUserUserName] = nameOf(number);
    record[kAccountId] = number;
    record[kUserBrandID] = 15;
    return record;
}

/// So many users in a preference file of their own.
class Users {
public:
    explicit Users(std::int64_t count) {
        std::filesystem::create_directories(m_folder);
        List list;
        for (std::int64_t number = 0; number < count; ++number) {
            list.emplace_back(recordOf(number));
        }
        m_defaults.setObject(kUserList, list);
        m_defaults.synchronize();
        installPlatform(&m_platform);
    }
    Users(const Users &) = delete;
    Users &operator=(const Users &) = delete;
    ~Users() {
        installPlatform(nullptr);
        std::filesystem::remove_all(m_folder);
    }
    void writeWhole() {
        m_defaults.setObject(kUserList, m_defaults.objectForKey(kUserList));
        m_defaults.synchronize();
    }

private:
    const std::filesystem::path m_folder = std::filesystem::temp_directory_path() / "quillmark-bench-users";
    PropertyListFormats m_propertyList;
    LinuxClock m_clock;
    LinuxUserDefaults m_defaults{m_folder / "preferences.plist", m_propertyList, m_clock};
    Platform m_platform = nativePlatform().with<UserDefaults>(m_defaults);
};

void get(benchmark::State &state) {
    Users users(state.range(0));
    const UserManager manager;
    const std::string name = nameOf(state.range(0) / 2);
    for ([[maybe_unused]] auto run : state) {
        benchmark::DoNotOptimize(manager.objectForKeyAsInt(kUserBrandID, name, -1));
    }
}

void setFloor(benchmark::State &state) {
    Users users(state.range(0));
    for ([[maybe_unused]] auto run : state) {
        users.writeWhole();
    }
}

void set(benchmark::State &state) {
    Users users(state.range(0));
    UserManager manager;
    std::int32_t value = 0;
    for ([[maybe_unused]] auto run : state) {
        manager.setObject(++value, kUserBrandID, "user7@example.com");
    }
}

void rename(benchmark::State &state) {
    Users users(state.range(0));
    UserManager manager;
    int round = 0;
    for ([[maybe_unused]] auto run : state) {
        manager.updateUserWithUsername("new" + std::to_string(++round), 7);
    }
}

BENCHMARK(get)->Name("get/ours")->Arg(10000);
BENCHMARK(setFloor)->Name("set/floor")->Arg(1000)->Arg(10000);
BENCHMARK(set)->Name("set/ours")->Arg(1000)->Arg(10000);
BENCHMARK(setFloor)->Name("rename/floor")->Arg(10000);
BENCHMARK(rename)->Name("rename/ours")->Arg(10000);

} // namespace
} // namespace quillmark

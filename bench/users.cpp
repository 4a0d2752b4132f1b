// The settings of many users: one that is read, one that is changed, and an account that is renamed. The floor of a
// change writes as large a preference file.

#include "accounts/KeyList.h"
#include "accounts/KeychainManager.h"
#include "accounts/UserManager.h"
#include "platform/Platform.h"
#include "platform/linux/LinuxClock.h"
#include "platform/linux/LinuxPropertyList.h"
#include "platform/linux/LinuxUserDefaults.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace quillmark {
namespace {

UserRecord recordOf(qint64 number) {
    UserRecord record = UserManager::setupUserDefaults();
    record.insert(kUserUserName, QStringLiteral("user%1@example.com").arg(number));
    record.insert(kAccountId, number);
    record.insert(kUserBrandID, 15);
    return record;
}

/// So many users in a preference file of their own.
class Users {
public:
    explicit Users(qint64 count) {
        QVariantList list;
        for (qint64 number = 0; number < count; ++number) {
            list << recordOf(number);
        }
        m_defaults.setObject(kUserList, list);
        m_defaults.synchronize();
    }
    UserManager manager() { return {m_platform, KeychainManager::sharedManager()}; }
    void writeWhole() {
        m_defaults.setObject(kUserList, m_defaults.objectForKey(kUserList));
        m_defaults.synchronize();
    }

private:
    static Platform with(UserDefaults &defaults) {
        const Platform &native = nativePlatform();
        return {native.alerts,       native.appleEvents, native.application, native.authorization, native.mainBundle,
                native.checkWindows, native.clock,       native.images,      native.keychain,      native.mainThread,
                native.propertyList, native.scripts,     native.systemInfo,  native.tasks,         defaults,
                native.workspace};
    }

    QTemporaryDir m_folder;
    LinuxPropertyList m_propertyList;
    LinuxClock m_clock;
    LinuxUserDefaults m_defaults{m_folder.filePath(QStringLiteral("preferences.plist")), m_propertyList, m_clock};
    Platform m_platform = with(m_defaults);
};

void get(benchmark::State &state) {
    Users users(state.range(0));
    const UserManager manager = users.manager();
    const QString name = QStringLiteral("user%1@example.com").arg(state.range(0) / 2);
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
    UserManager manager = users.manager();
    qint32 value = 0;
    for ([[maybe_unused]] auto run : state) {
        manager.setObject(++value, kUserBrandID, QStringLiteral("user7@example.com"));
    }
}

void rename(benchmark::State &state) {
    Users users(state.range(0));
    UserManager manager = users.manager();
    int round = 0;
    for ([[maybe_unused]] auto run : state) {
        manager.updateUserWithUsername(QStringLiteral("new%1").arg(++round), 7);
    }
}

BENCHMARK(get)->Name("get/ours")->Arg(10000);
BENCHMARK(setFloor)->Name("set/floor")->Arg(1000)->Arg(10000);
BENCHMARK(set)->Name("set/ours")->Arg(1000)->Arg(10000);
BENCHMARK(setFloor)->Name("rename/floor")->Arg(10000);
BENCHMARK(rename)->Name("rename/ours")->Arg(10000);

} // namespace
} // namespace quillmark

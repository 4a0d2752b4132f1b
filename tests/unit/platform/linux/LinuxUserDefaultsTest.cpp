#include "platform/linux/LinuxUserDefaults.h"
#include "fakes/FakeClock.h"
#include "platform/files/Path.h"
#include "platform/propertylist/PropertyListFormats.h"
#include "support/FileFacts.h"
#include "support/ProcessSettings.h"
#include "support/TemporaryHome.h"
#include "support/Threads.h"
#include "support/ValuePrinter.h"
#include "utils/IntegerValue.h"

#include <filesystem>
#include <sys/file.h>

namespace quillmark {
namespace {

class UserDefaultsTest : public testing::Test {
protected:
    void store(const Dictionary &values) { home.write(kFile, *list.toXml(values)); }
    /// Sets a value, and writes it if it can be written.
    bool isStored(const std::string &key, const Value &value) {
        defaults.setObject(key, value);
        return defaults.synchronize();
    }
    Dictionary stored() const { return list.readDictionary(path); }
    /// The names of all that lies in the file's folder, but for the lock, which stays.
    std::set<std::string> neighbours() const {
        auto names = test::namesIn(deletingLastPathComponent(path));
        names.erase(lastPathComponent(lockFile));
        return names;
    }
    /// Holds the lock, as another writer does, until it is closed.
    Descriptor holdLock() {
        home.makeFolder("Library/Preferences");
        Descriptor lock(::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        EXPECT_EQ(::flock(lock.get(), LOCK_EX), 0);
        return lock;
    }

    const std::string kFile = "Library/Preferences/com.example.plist";
    const std::string a = "a";
    const std::string b = "b";
    test::TemporaryHome home;
    test::FakeClock clock;
    PropertyListFormats list;
    const std::string path = home.path(kFile);
    const std::string lockFile = home.path("Library/Preferences/.com.example.plist.lock");
    LinuxUserDefaults defaults{path, list, clock};
};

TEST_F(UserDefaultsTest, StoredValuesWinOverRegisteredOnes) {
    store({{a, "stored"}});
    defaults.registerDefaults({{a, "registered"}, {b, 5}});
    EXPECT_EQ(defaults.objectForKey(a), Value("stored"));
    EXPECT_EQ(defaults.objectForKey(b), Value(5));
    EXPECT_TRUE(defaults.objectForKey("c").isNothing());
}

TEST_F(UserDefaultsTest, RegisteringAgainAddsAndReplaces) {
    defaults.registerDefaults({{a, 1}});
    defaults.registerDefaults({{a, 2}, {b, 3}});
    EXPECT_EQ(defaults.objectForKey(a), Value(2));
    EXPECT_EQ(defaults.objectForKey(b), Value(3));
}

TEST_F(UserDefaultsTest, TextsAndNumbersReadAsTextAllElseAsNone) {
    store({{a, "x"}, {b, 5}, {"c", true}, {"d", List{1}}});
    EXPECT_EQ(defaults.stringForKey(a), "x");
    EXPECT_EQ(defaults.stringForKey(b), "5");
    EXPECT_FALSE(defaults.stringForKey("c"));
    EXPECT_FALSE(defaults.stringForKey("d"));
    EXPECT_FALSE(defaults.stringForKey("e"));
}

TEST_F(UserDefaultsTest, WhatIsSetIsSeenAtOnceAndWrittenBySynchronize) {
    defaults.setObject(a, "new");
    EXPECT_EQ(defaults.objectForKey(a), Value("new"));
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(stored(), (Dictionary{{a, "new"}}));
    EXPECT_EQ(defaults.objectForKey(a), Value("new"));
}

TEST_F(UserDefaultsTest, RegisteredValuesAreNotWritten) {
    defaults.registerDefaults({{b, 1}});
    EXPECT_TRUE(isStored(a, 1));
    EXPECT_EQ(stored(), (Dictionary{{a, 1}}));
}

TEST_F(UserDefaultsTest, ARemovedKeyShowsTheRegisteredValueAgain) {
    store({{a, 1}, {b, 2}});
    defaults.registerDefaults({{a, 7}});
    defaults.setObject(a, Value());
    EXPECT_EQ(defaults.objectForKey(a), Value(7));
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(stored(), (Dictionary{{b, 2}}));
}

TEST_F(UserDefaultsTest, TheFileIsTheUsersAlone) {
    ASSERT_TRUE(isStored(a, 1));
    EXPECT_EQ(test::permissionsOf(path) & 066U, 0U);
}

TEST_F(UserDefaultsTest, WhatAnotherProcessStoredMeanwhileSurvives) {
    defaults.objectForKey(a);
    store({{b, "theirs"}});
    EXPECT_TRUE(isStored(a, "ours"));
    EXPECT_EQ(stored(), (Dictionary{{a, "ours"}, {b, "theirs"}}));
    EXPECT_EQ(defaults.objectForKey(b), Value("theirs"));
}

TEST_F(UserDefaultsTest, SynchronizeWithoutChangesReadsTheFileAnew) {
    EXPECT_TRUE(defaults.objectForKey(a).isNothing());
    store({{a, 1}});
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(defaults.objectForKey(a), Value(1));
}

TEST_F(UserDefaultsTest, ADamagedFileIsSetAsideAndTheSettingsStartAnew) {
    for (const std::string &damage :
         {std::string("<plist><dict>"), std::string(), std::string("bplist00"), *list.toXml(List{1})}) {
        home.write(kFile, damage);
        LinuxUserDefaults fresh(path, list, clock);
        fresh.registerDefaults({{a, 7}});
        EXPECT_EQ(fresh.objectForKey(a), Value(7));
        EXPECT_EQ(fresh.damagedFile(), path + ".damaged");
        EXPECT_EQ(test::readAll(path + ".damaged"), damage);
        EXPECT_FALSE(std::filesystem::exists(path));
    }
}

TEST_F(UserDefaultsTest, ADamagedFileThatCannotBeSetAsideIsNeverOverwritten) {
    home.write(kFile, "damage");
    home.makeFolder(kFile + ".damaged/in the way");
    EXPECT_FALSE(isStored(a, 1));
    EXPECT_EQ(test::readAll(path), "damage");
    EXPECT_FALSE(defaults.damagedFile());
    EXPECT_EQ(defaults.objectForKey(a), Value(1));
}

TEST_F(UserDefaultsTest, AnIntactFileIsNotSetAside) {
    store({{a, 1}});
    defaults.objectForKey(a);
    EXPECT_FALSE(defaults.damagedFile());
}

TEST_F(UserDefaultsTest, AFileThatCannotBeReadIsNeverOverwritten) {
    home.makeFolder(kFile); // a folder in the file's place can't be read, and is not absent
    defaults.registerDefaults({{a, 7}});
    EXPECT_EQ(defaults.objectForKey(a), Value(7));
    EXPECT_FALSE(isStored(a, 1));
    EXPECT_TRUE(std::filesystem::is_directory(path));
    EXPECT_EQ(defaults.objectForKey(a), Value(1));
}

TEST_F(UserDefaultsTest, AFailedWriteKeepsTheChangesForALaterTry) {
    home.write("Library", "a file in the folder's place");
    EXPECT_FALSE(isStored(a, 1));
    ASSERT_TRUE(std::filesystem::remove(home.path("Library")));
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(stored(), (Dictionary{{a, 1}}));
}

TEST_F(UserDefaultsTest, WhatAKilledWriterLeftIsReplacedWhateverItIs) {
    const std::string leftover = path + ".new";
    const std::string precious = home.write("Documents/letter", "kept");
    const std::function<void()> plants[] = {
        [&] { home.write(kFile + ".new", std::string(1 << 20, 'x')); },
        [&] { std::filesystem::create_symlink(precious, leftover); },
        [&] { std::filesystem::create_symlink(home.path("Documents"), leftover); },
        [&] { ::mkfifo(leftover.c_str(), 0600); },
        [&] {
            home.makeFolder(kFile + ".new/a");
            std::filesystem::create_symlink(home.path("Documents"), leftover + "/a/link");
        },
    };
    home.makeFolder("Library/Preferences");
    int round = 0;
    for (const auto &plant : plants) {
        plant();
        ASSERT_TRUE(neighbours().contains(lastPathComponent(leftover)));
        defaults.setObject(a, ++round);
        EXPECT_TRUE(defaults.synchronize()) << round;
        EXPECT_EQ(stored(), (Dictionary{{a, round}}));
        EXPECT_EQ(neighbours(), std::set{lastPathComponent(path)});
        EXPECT_FALSE(std::filesystem::is_symlink(path));
        EXPECT_EQ(test::readAll(precious), "kept");
    }
}

TEST_F(UserDefaultsTest, WhenTheDiskIsFullTheOldFileStaysAndNothingBesideIt) {
    store({{b, 1}});
    defaults.setObject(a, 2);
    {
        const test::Limit few(RLIMIT_FSIZE, 100);
        EXPECT_FALSE(defaults.synchronize());
    }
    EXPECT_EQ(stored(), (Dictionary{{b, 1}}));
    EXPECT_EQ(neighbours(), std::set{lastPathComponent(path)});
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(stored(), (Dictionary{{a, 2}, {b, 1}}));
}

TEST_F(UserDefaultsTest, AValueThatNoPropertyListHoldsIsNotWritten) {
    store({{b, 1}});
    EXPECT_FALSE(isStored(a, std::string(1, '\0')));
    EXPECT_EQ(stored(), (Dictionary{{b, 1}}));
}

TEST_F(UserDefaultsTest, AnotherWritersLockIsWaitedForAndNotForEver) {
    Descriptor holder = holdLock();
    EXPECT_FALSE(isStored(a, 1));
    EXPECT_FALSE(clock.sleeps().empty());
    holder.close();
    EXPECT_TRUE(defaults.synchronize());
}

TEST_F(UserDefaultsTest, NobodyElseCanTakeTheLock) {
    ASSERT_TRUE(isStored(a, 1));
    EXPECT_EQ(test::permissionsOf(lockFile), 0600U);
    // What others can hold is the folder, as long as it is open to all.
    const Descriptor folder(::open(deletingLastPathComponent(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(::flock(folder.get(), LOCK_EX), 0);
    EXPECT_TRUE(isStored(a, 2));
    // A lock that was made open to all is so no more.
    ASSERT_EQ(::chmod(lockFile.c_str(), 0666), 0);
    EXPECT_TRUE(isStored(a, 3));
    EXPECT_EQ(test::permissionsOf(lockFile) & 066U, 0U);
}

TEST_F(UserDefaultsTest, WhatStandsInTheLocksPlaceIsNotFollowedAndNothingIsLost) {
    store({{b, 1}});
    const std::string precious = home.write("Documents/letter", "kept");
    const std::function<void()> plants[] = {
        [&] { std::filesystem::create_symlink(precious, lockFile); },
        [&] { std::filesystem::create_symlink(home.path("nowhere"), lockFile); },
        [&] { ::mkfifo(lockFile.c_str(), 0600); },
        [&] { std::filesystem::create_directory(lockFile); },
    };
    for (const auto &plant : plants) {
        plant();
        EXPECT_FALSE(isStored(a, 2));
        EXPECT_TRUE(defaults.problem().value_or("").starts_with("can't be written ("))
            << defaults.problem().value_or("(none)");
        EXPECT_EQ(stored(), (Dictionary{{b, 1}}));
        std::filesystem::remove(lockFile);
    }
    EXPECT_FALSE(std::filesystem::exists(home.path("nowhere")));
    EXPECT_TRUE(defaults.synchronize());
}

TEST_F(UserDefaultsTest, TwoWritersOfDifferentKeysLoseNothing) {
    constexpr int kRounds = 50;
    const auto write = [this](const std::string &prefix) {
        LinuxUserDefaults own(path, list, clock);
        for (int i = 0; i < kRounds; ++i) {
            own.setObject(prefix + std::to_string(i), i);
            while (!own.synchronize()) { // the other one holds the lock, in virtual time for too long
            }
        }
    };
    test::onThreads(2, [&](int thread) { write(thread == 0 ? a : b); });
    EXPECT_EQ(stored().size(), 2U * kRounds);
}

TEST_F(UserDefaultsTest, AChangeSeesWhatIsStoredAtThatMomentAndIsWrittenAtOnce) {
    store({{a, 1}});
    ASSERT_EQ(defaults.objectForKey(a), Value(1));
    store({{a, 2}, {b, 5}});
    EXPECT_TRUE(defaults.change([this] { defaults.setObject(a, integerValueOf(defaults.objectForKey(a)) + 1); }));
    EXPECT_EQ(stored(), (Dictionary{{a, 3}, {b, 5}}));
    EXPECT_FALSE(defaults.problem());
}

TEST_F(UserDefaultsTest, ChangesOfOneKeyAtOnceLoseNothing) {
    constexpr int kRounds = 50;
    test::onThreads(2, [this](int /*thread*/) {
        LinuxUserDefaults own(path, list, clock);
        for (int i = 0; i < kRounds; ++i) {
            while (!own.change([&] { own.setObject(a, integerValueOf(own.objectForKey(a)) + 1); })) {
            }
        }
    });
    EXPECT_EQ(stored(), (Dictionary{{a, 2 * kRounds}}));
}

TEST_F(UserDefaultsTest, AChangeIsRefusedWhileWhatItIsBasedOnCannotBeRead) {
    home.makeFolder(kFile);
    bool isRun = false;
    EXPECT_FALSE(defaults.change([&isRun] { isRun = true; }));
    EXPECT_FALSE(isRun);
    EXPECT_EQ(defaults.problem(), "can't be read (Invalid argument)");
    ASSERT_TRUE(std::filesystem::remove(path));
    store({{b, 1}});
    EXPECT_TRUE(defaults.change([this] { defaults.setObject(a, 2); }));
    EXPECT_EQ(stored(), (Dictionary{{a, 2}, {b, 1}}));
}

TEST_F(UserDefaultsTest, AChangeThatSetsNothingWritesNothing) {
    EXPECT_TRUE(defaults.change([] {}));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(UserDefaultsTest, AChangeThatRaisesIsNoneAndTheNextOneIsLikeAnyOther) {
    EXPECT_THROW(defaults.change([]() -> void { throw 1; }), int);
    EXPECT_TRUE(defaults.change([this] { defaults.setObject(a, 1); }));
    EXPECT_EQ(stored(), (Dictionary{{a, 1}}));
}

/// A change that fails on a disk without room for it.
class UnwritableChange : public UserDefaultsTest {
protected:
    UnwritableChange() {
        store({{a, 1}});
        const test::Limit few(RLIMIT_FSIZE, 100);
        EXPECT_FALSE(defaults.change([this] { defaults.setObject(a, 2); }));
        EXPECT_EQ(defaults.problem(), "can't be written (File too large)");
    }
};

TEST_F(UnwritableChange, IsTriedAgainWithTheNextOne) {
    EXPECT_TRUE(defaults.change([this] { defaults.setObject(b, 5); }));
    EXPECT_EQ(stored(), (Dictionary{{a, 2}, {b, 5}}));
}

TEST_F(UnwritableChange, IsForgottenWhereAnotherProgramHasChangedTheSameKey) {
    store({{a, 7}});
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_EQ(defaults.problem(), "was changed by another program meanwhile");
    EXPECT_EQ(stored(), (Dictionary{{a, 7}}));
    EXPECT_EQ(defaults.objectForKey(a), Value(7));
    EXPECT_TRUE(defaults.synchronize());
}

TEST_F(UnwritableChange, ThatIsForgottenIsNoProblemOfALaterChangeWhichSetsNothing) {
    store({{a, 7}});
    EXPECT_TRUE(defaults.change([] {}));
    EXPECT_EQ(defaults.problem(), std::nullopt);
}

TEST_F(UnwritableChange, LeavesTheKeyToWhoeverSetsItWithoutALook) {
    store({{a, 7}});
    EXPECT_TRUE(isStored(a, 3));
    EXPECT_EQ(stored(), (Dictionary{{a, 3}}));
}

TEST_F(UserDefaultsTest, ADamagedFileIsSetAsideOnlyWhileNobodyElseWrites) {
    home.write(kFile, "damage");
    Descriptor holder = holdLock();
    EXPECT_TRUE(defaults.objectForKey(a).isNothing());
    EXPECT_EQ(neighbours(), std::set{lastPathComponent(path)});
    holder.close();
    store({{a, 1}}); // what its holder was about to write
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(defaults.objectForKey(a), Value(1));
    EXPECT_FALSE(defaults.damagedFile());
}

TEST_F(UserDefaultsTest, WhatKeepsTheFileFromBeingReadOrWrittenIsTold) {
    EXPECT_FALSE(defaults.problem());
    home.write("Library", "a file in the folder's place");
    EXPECT_FALSE(isStored(a, 1));
    EXPECT_EQ(defaults.problem(), "can't be written (Not a directory)");
    ASSERT_TRUE(std::filesystem::remove(home.path("Library")));
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_FALSE(defaults.problem());
}

} // namespace
} // namespace quillmark

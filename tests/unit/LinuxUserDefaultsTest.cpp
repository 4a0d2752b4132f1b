#include "platform/linux/LinuxUserDefaults.h"
#include "fakes/FakeClock.h"
#include "platform/Path.h"
#include "platform/linux/LinuxPropertyList.h"
#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"

#include <QFileInfo>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace quillmark {
namespace {

class UserDefaultsTest : public testing::Test {
protected:
    void store(const QVariantMap &values) { home.write(kFile, *list.toXml(values)); }
    QVariantMap stored() const { return list.readDictionary(path); }
    /// The names of all that lies in the file's folder, but for the lock, which stays.
    QStringList neighbours() const {
        QStringList names =
            QFileInfo(path).dir().entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
        names.removeAll(QFileInfo(lockFile).fileName());
        return names;
    }
    /// Holds the lock, as another writer does, until it is closed.
    Descriptor holdLock() {
        home.makeFolder(QStringLiteral("Library/Preferences"));
        Descriptor lock(::open(QFile::encodeName(lockFile).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        EXPECT_EQ(::flock(lock.get(), LOCK_EX), 0);
        return lock;
    }

    const QString kFile = QStringLiteral("Library/Preferences/com.example.plist");
    const QString a = QStringLiteral("a");
    const QString b = QStringLiteral("b");
    test::TemporaryHome home;
    test::FakeClock clock;
    LinuxPropertyList list;
    const QString path = home.path(kFile);
    const QString lockFile = home.path(QStringLiteral("Library/Preferences/.com.example.plist.lock"));
    LinuxUserDefaults defaults{path, list, clock};
};

TEST_F(UserDefaultsTest, StoredValuesWinOverRegisteredOnes) {
    store({{a, QStringLiteral("stored")}});
    defaults.registerDefaults({{a, QStringLiteral("registered")}, {b, 5}});
    EXPECT_EQ(defaults.objectForKey(a), QVariant(QStringLiteral("stored")));
    EXPECT_EQ(defaults.objectForKey(b), QVariant(5));
    EXPECT_FALSE(defaults.objectForKey(QStringLiteral("c")).isValid());
}

TEST_F(UserDefaultsTest, RegisteringAgainAddsAndReplaces) {
    defaults.registerDefaults({{a, 1}});
    defaults.registerDefaults({{a, 2}, {b, 3}});
    EXPECT_EQ(defaults.objectForKey(a), QVariant(2));
    EXPECT_EQ(defaults.objectForKey(b), QVariant(3));
}

TEST_F(UserDefaultsTest, TextsAndNumbersReadAsTextAllElseAsNone) {
    store({{a, QStringLiteral("x")}, {b, 5LL}, {QStringLiteral("c"), true}, {QStringLiteral("d"), QVariantList{1}}});
    EXPECT_EQ(defaults.stringForKey(a), QStringLiteral("x"));
    EXPECT_EQ(defaults.stringForKey(b), QStringLiteral("5"));
    EXPECT_TRUE(defaults.stringForKey(QStringLiteral("c")).isNull());
    EXPECT_TRUE(defaults.stringForKey(QStringLiteral("d")).isNull());
    EXPECT_TRUE(defaults.stringForKey(QStringLiteral("e")).isNull());
}

TEST_F(UserDefaultsTest, WhatIsSetIsSeenAtOnceAndWrittenBySynchronize) {
    defaults.setObject(a, QStringLiteral("new"));
    EXPECT_EQ(defaults.objectForKey(a), QVariant(QStringLiteral("new")));
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(stored(), QVariantMap({{a, QStringLiteral("new")}}));
    EXPECT_EQ(defaults.objectForKey(a), QVariant(QStringLiteral("new")));
}

TEST_F(UserDefaultsTest, RegisteredValuesAreNotWritten) {
    defaults.registerDefaults({{b, 1}});
    defaults.setObject(a, 1);
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(stored().keys(), QStringList({a}));
}

TEST_F(UserDefaultsTest, ARemovedKeyShowsTheRegisteredValueAgain) {
    store({{a, 1LL}, {b, 2LL}});
    defaults.registerDefaults({{a, 7}});
    defaults.setObject(a, QVariant());
    EXPECT_EQ(defaults.objectForKey(a), QVariant(7));
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(stored().keys(), QStringList({b}));
}

TEST_F(UserDefaultsTest, TheFileIsTheUsersAlone) {
    defaults.setObject(a, 1);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(QFileInfo(path).permissions() &
                  (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther),
              0);
}

TEST_F(UserDefaultsTest, WhatAnotherProcessStoredMeanwhileSurvives) {
    defaults.objectForKey(a);
    store({{b, QStringLiteral("theirs")}});
    defaults.setObject(a, QStringLiteral("ours"));
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(stored(), QVariantMap({{a, QStringLiteral("ours")}, {b, QStringLiteral("theirs")}}));
    EXPECT_EQ(defaults.objectForKey(b), QVariant(QStringLiteral("theirs")));
}

TEST_F(UserDefaultsTest, SynchronizeWithoutChangesReadsTheFileAnew) {
    EXPECT_FALSE(defaults.objectForKey(a).isValid());
    store({{a, 1LL}});
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(defaults.objectForKey(a), QVariant(1LL));
}

TEST_F(UserDefaultsTest, ADamagedFileIsSetAsideAndTheSettingsStartAnew) {
    for (const QByteArray &damage :
         {QByteArray("<plist><dict>"), QByteArray(), QByteArray("bplist00"), *list.toXml(QVariantList{1})}) {
        home.write(kFile, damage);
        LinuxUserDefaults fresh(path, list, clock);
        fresh.registerDefaults({{a, 7}});
        EXPECT_EQ(fresh.objectForKey(a), QVariant(7));
        EXPECT_EQ(fresh.damagedFile(), path + QStringLiteral(".damaged"));
        EXPECT_EQ(test::readAll(path + QStringLiteral(".damaged")), damage);
        EXPECT_FALSE(QFile::exists(path));
    }
}

TEST_F(UserDefaultsTest, ADamagedFileThatCannotBeSetAsideIsNeverOverwritten) {
    home.write(kFile, "damage");
    home.makeFolder(kFile + QStringLiteral(".damaged/in the way"));
    defaults.setObject(a, 1);
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_EQ(test::readAll(path), "damage");
    EXPECT_TRUE(defaults.damagedFile().isNull());
    EXPECT_EQ(defaults.objectForKey(a), QVariant(1));
}

TEST_F(UserDefaultsTest, AnIntactFileIsNotSetAside) {
    store({{a, 1LL}});
    defaults.objectForKey(a);
    EXPECT_TRUE(defaults.damagedFile().isNull());
}

TEST_F(UserDefaultsTest, AFileThatCannotBeReadIsNeverOverwritten) {
    home.makeFolder(kFile); // a folder in the file's place can't be read, and is not absent
    defaults.registerDefaults({{a, 7}});
    EXPECT_EQ(defaults.objectForKey(a), QVariant(7));
    defaults.setObject(a, 1);
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_TRUE(QFileInfo(path).isDir());
    EXPECT_EQ(defaults.objectForKey(a), QVariant(1));
}

TEST_F(UserDefaultsTest, AFailedWriteKeepsTheChangesForALaterTry) {
    home.write(QStringLiteral("Library"), "a file in the folder's place");
    defaults.setObject(a, 1LL);
    EXPECT_FALSE(defaults.synchronize());
    ASSERT_TRUE(QFile::remove(home.path(QStringLiteral("Library"))));
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(stored(), QVariantMap({{a, 1LL}}));
}

TEST_F(UserDefaultsTest, WhatAKilledWriterLeftIsReplacedWhateverItIs) {
    const QString leftover = path + QStringLiteral(".new");
    const QByteArray name = QFile::encodeName(leftover);
    const QString precious = home.write(QStringLiteral("Documents/letter"), "kept");
    const std::function<void()> plants[] = {
        [&] { home.write(kFile + QStringLiteral(".new"), QByteArray(1 << 20, 'x')); },
        [&] { QFile::link(precious, leftover); },
        [&] { QFile::link(home.path(QStringLiteral("Documents")), leftover); },
        [&] { ::mkfifo(name.constData(), 0600); },
        [&] {
            home.makeFolder(kFile + QStringLiteral(".new/a"));
            QFile::link(home.path(QStringLiteral("Documents")), leftover + QStringLiteral("/a/link"));
        },
    };
    home.makeFolder(QStringLiteral("Library/Preferences"));
    qlonglong round = 0;
    for (const auto &plant : plants) {
        plant();
        ASSERT_EQ(neighbours().count(QFileInfo(leftover).fileName()), 1);
        defaults.setObject(a, ++round);
        EXPECT_TRUE(defaults.synchronize()) << round;
        EXPECT_EQ(stored(), QVariantMap({{a, round}}));
        EXPECT_EQ(neighbours(), QStringList{QFileInfo(path).fileName()});
        EXPECT_FALSE(QFileInfo(path).isSymLink());
        EXPECT_EQ(test::readAll(precious), "kept");
    }
}

TEST_F(UserDefaultsTest, WhenTheDiskIsFullTheOldFileStaysAndNothingBesideIt) {
    store({{b, 1LL}});
    rlimit unlimited{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    const auto previous = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit few{100, unlimited.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &few), 0);
    defaults.setObject(a, 2LL);
    EXPECT_FALSE(defaults.synchronize());
    ::setrlimit(RLIMIT_FSIZE, &unlimited);
    std::signal(SIGXFSZ, previous);
    EXPECT_EQ(stored(), QVariantMap({{b, 1LL}}));
    EXPECT_EQ(neighbours(), QStringList{QFileInfo(path).fileName()});
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(stored(), QVariantMap({{a, 2LL}, {b, 1LL}}));
}

TEST_F(UserDefaultsTest, AValueThatNoPropertyListHoldsIsNotWritten) {
    store({{b, 1LL}});
    defaults.setObject(a, QString(QChar(0)));
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_EQ(stored(), QVariantMap({{b, 1LL}}));
}

TEST_F(UserDefaultsTest, AnotherWritersLockIsWaitedForAndNotForEver) {
    Descriptor holder = holdLock();
    defaults.setObject(a, 1LL);
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_FALSE(clock.sleeps().empty());
    holder.close();
    EXPECT_TRUE(defaults.synchronize());
}

TEST_F(UserDefaultsTest, NobodyElseCanTakeTheLock) {
    defaults.setObject(a, 1LL);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(QFileInfo(lockFile).permissions() & ~(QFile::ReadUser | QFile::WriteUser),
              QFile::ReadOwner | QFile::WriteOwner);
    // What others can hold is the folder, as long as it is open to all.
    const Descriptor folder(
        ::open(QFile::encodeName(deletingLastPathComponent(path)).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(::flock(folder.get(), LOCK_EX), 0);
    defaults.setObject(a, 2LL);
    EXPECT_TRUE(defaults.synchronize());
    // A lock that was made open to all is so no more.
    ASSERT_TRUE(QFile::setPermissions(lockFile, QFile::Permissions(0x6666)));
    defaults.setObject(a, 3LL);
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(QFileInfo(lockFile).permissions() & QFile::Permissions(0x0066), 0);
}

TEST_F(UserDefaultsTest, WhatStandsInTheLocksPlaceIsNotFollowedAndNothingIsLost) {
    store({{b, 1LL}});
    const QString precious = home.write(QStringLiteral("Documents/letter"), "kept");
    const std::function<void()> plants[] = {
        [&] { QFile::link(precious, lockFile); },
        [&] { QFile::link(home.path(QStringLiteral("nowhere")), lockFile); },
        [&] { ::mkfifo(QFile::encodeName(lockFile).constData(), 0600); },
        [&] { QDir().mkpath(lockFile); },
    };
    for (const auto &plant : plants) {
        plant();
        defaults.setObject(a, 2LL);
        EXPECT_FALSE(defaults.synchronize());
        EXPECT_TRUE(defaults.problem().startsWith(u"can't be written (")) << defaults.problem().toStdString();
        EXPECT_EQ(stored(), QVariantMap({{b, 1LL}}));
        QFile::remove(lockFile);
        QDir().rmdir(lockFile);
    }
    EXPECT_FALSE(QFile::exists(home.path(QStringLiteral("nowhere"))));
    EXPECT_TRUE(defaults.synchronize());
}

TEST_F(UserDefaultsTest, TwoWritersOfDifferentKeysLoseNothing) {
    constexpr int kRounds = 50;
    const auto write = [this](const QString &prefix) {
        LinuxUserDefaults own(path, list, clock);
        for (int i = 0; i < kRounds; ++i) {
            own.setObject(prefix + QString::number(i), qlonglong{i});
            while (!own.synchronize()) { // the other one holds the lock, in virtual time for too long
            }
        }
    };
    std::thread other(write, a);
    write(b);
    other.join();
    EXPECT_EQ(stored().size(), 2 * kRounds);
}

TEST_F(UserDefaultsTest, AChangeSeesWhatIsStoredAtThatMomentAndIsWrittenAtOnce) {
    store({{a, 1LL}});
    ASSERT_EQ(defaults.objectForKey(a), QVariant(1LL));
    store({{a, 2LL}, {b, 5LL}});
    EXPECT_TRUE(defaults.change([this] { defaults.setObject(a, defaults.objectForKey(a).toLongLong() + 1); }));
    EXPECT_EQ(stored(), QVariantMap({{a, 3LL}, {b, 5LL}}));
    EXPECT_TRUE(defaults.problem().isNull());
}

TEST_F(UserDefaultsTest, ChangesOfOneKeyAtOnceLoseNothing) {
    constexpr int kRounds = 50;
    const auto count = [this] {
        LinuxUserDefaults own(path, list, clock);
        for (int i = 0; i < kRounds; ++i) {
            while (!own.change([&] { own.setObject(a, own.objectForKey(a).toLongLong() + 1); })) {
            }
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(stored(), QVariantMap({{a, qlonglong{2 * kRounds}}}));
}

TEST_F(UserDefaultsTest, AChangeIsRefusedWhileWhatItIsBasedOnCannotBeRead) {
    home.makeFolder(kFile);
    bool isRun = false;
    EXPECT_FALSE(defaults.change([&isRun] { isRun = true; }));
    EXPECT_FALSE(isRun);
    EXPECT_EQ(defaults.problem(), QStringLiteral("can't be read (Invalid argument)"));
    ASSERT_TRUE(QDir().rmdir(path));
    store({{b, 1LL}});
    EXPECT_TRUE(defaults.change([this] { defaults.setObject(a, 2LL); }));
    EXPECT_EQ(stored(), QVariantMap({{a, 2LL}, {b, 1LL}}));
}

TEST_F(UserDefaultsTest, AChangeThatSetsNothingWritesNothing) {
    EXPECT_TRUE(defaults.change([] {}));
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(UserDefaultsTest, AChangeThatRaisesIsNoneAndTheNextOneIsLikeAnyOther) {
    EXPECT_THROW(defaults.change([]() -> void { throw 1; }), int);
    EXPECT_TRUE(defaults.change([this] { defaults.setObject(a, 1LL); }));
    EXPECT_EQ(stored(), QVariantMap({{a, 1LL}}));
}

/// Makes the next write fail, as a folder that can't be replaced by a file does.
class UnwritableChange : public UserDefaultsTest {
protected:
    void failToChange() {
        store({{a, 1LL}});
        home.makeFolder(QStringLiteral("Library/Preferences"));
        ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &m_unlimited), 0);
        m_previous = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit few{100, m_unlimited.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &few), 0);
        const bool isWritten = defaults.change([this] { defaults.setObject(a, 2LL); });
        ::setrlimit(RLIMIT_FSIZE, &m_unlimited);
        std::signal(SIGXFSZ, m_previous);
        EXPECT_FALSE(isWritten);
        EXPECT_EQ(defaults.problem(), QStringLiteral("can't be written (File too large)"));
    }

private:
    rlimit m_unlimited{};
    void (*m_previous)(int) = nullptr;
};

TEST_F(UnwritableChange, IsTriedAgainWithTheNextOne) {
    failToChange();
    EXPECT_TRUE(defaults.change([this] { defaults.setObject(b, 5LL); }));
    EXPECT_EQ(stored(), QVariantMap({{a, 2LL}, {b, 5LL}}));
}

TEST_F(UnwritableChange, IsForgottenWhereAnotherProgramHasChangedTheSameKey) {
    failToChange();
    store({{a, 7LL}});
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_EQ(defaults.problem(), QStringLiteral("was changed by another program meanwhile"));
    EXPECT_EQ(stored(), QVariantMap({{a, 7LL}}));
    EXPECT_EQ(defaults.objectForKey(a), QVariant(7LL));
    EXPECT_TRUE(defaults.synchronize());
}

TEST_F(UnwritableChange, ThatIsForgottenIsNoProblemOfALaterChangeWhichSetsNothing) {
    failToChange();
    store({{a, 7LL}});
    EXPECT_TRUE(defaults.change([] {}));
    EXPECT_EQ(defaults.problem(), QString());
}

TEST_F(UnwritableChange, LeavesTheKeyToWhoeverSetsItWithoutALook) {
    failToChange();
    store({{a, 7LL}});
    defaults.setObject(a, 3LL);
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(stored(), QVariantMap({{a, 3LL}}));
}

TEST_F(UserDefaultsTest, ADamagedFileIsSetAsideOnlyWhileNobodyElseWrites) {
    home.write(kFile, "damage");
    Descriptor holder = holdLock();
    EXPECT_FALSE(defaults.objectForKey(a).isValid());
    EXPECT_EQ(neighbours(), QStringList{QFileInfo(path).fileName()});
    holder.close();
    store({{a, 1LL}}); // what its holder was about to write
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(defaults.objectForKey(a), QVariant(1LL));
    EXPECT_TRUE(defaults.damagedFile().isNull());
}

TEST_F(UserDefaultsTest, WhatKeepsTheFileFromBeingReadOrWrittenIsTold) {
    EXPECT_TRUE(defaults.problem().isNull());
    home.write(QStringLiteral("Library"), "a file in the folder's place");
    defaults.setObject(a, 1LL);
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_EQ(defaults.problem(), QStringLiteral("can't be written (Not a directory)"));
    ASSERT_TRUE(QFile::remove(home.path(QStringLiteral("Library"))));
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_TRUE(defaults.problem().isNull());
}

} // namespace
} // namespace quillmark

#include "desktop/FinderSupport.h"
#include "desktop/FinderScripts.h"
#include "fakes/FakePlatform.h"
#include "support/QtPrinters.h"

#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace quillmark {
namespace {

using test::FakeScripts;
using Type = ScriptDescriptor::Type;

QString operator""_s(const char *text, size_t length) {
    return QString::fromUtf8(text, static_cast<qsizetype>(length));
}

const char *const kSelectionSource = "\t\t\t tell application \"Finder\"\n"
                                     "\t\t\t set alist to selection as alias list\n"
                                     "\t\t\t set plist to {}\n"
                                     "\t\t\t repeat with afile in alist\n"
                                     "\t\t\t set end of plist to (POSIX path of (afile as text))\n"
                                     "\t\t\t end repeat\n"
                                     "\t\t\t end tell\n"
                                     "\t\t\t return plist";
const char *const kRetrySource = "\t\t\t\t\t\t\t\t\t  tell application \"QuillmarkCore\"\n"
                                 "\t\t\t\t\t\t\t\t\t  activate\n"
                                 "\t\t\t\t\t\t\t\t\t  end tell\n"
                                 "\t\t\t\t\t\t\t\t\t  tell application \"Finder\"\n"
                                 "\t\t\t\t\t\t\t\t\t  activate\n"
                                 "\t\t\t\t\t\t\t\t\t  set alist to selection as alias list\n"
                                 "\t\t\t\t\t\t\t\t\t  set plist to {}\n"
                                 "\t\t\t\t\t\t\t\t\t  repeat with afile in alist\n"
                                 "\t\t\t\t\t\t\t\t\t  set end of plist to (POSIX path of (afile as text))\n"
                                 "\t\t\t\t\t\t\t\t\t  end repeat\n"
                                 "\t\t\t\t\t\t\t\t\t  end tell\n"
                                 "\t\t\t\t\t\t\t\t\t  return plist";

const QString kSelectionRun = "execute "_s + QString::fromUtf8(kSelectionSource);
const QString kRetryRun = "execute "_s + QString::fromUtf8(kRetrySource);

ScriptDescriptor listOf(const QStringList &paths) {
    std::vector<ScriptDescriptor> items;
    for (const QString &path : paths) {
        items.push_back(FakeScripts::text(path));
    }
    return FakeScripts::list(std::move(items));
}

class FinderScriptsTest : public testing::Test {
protected:
    test::Transcript transcript;
    FakeScripts scripts{transcript};
};

TEST_F(FinderScriptsTest, TheRetryScriptIsNotCompiledButTheSelectionScriptTwice) { // deliberate
    const FinderScripts made(scripts, "Quillmark"_s);
    const QString compilation = "compile "_s + QString::fromUtf8(kSelectionSource);
    EXPECT_EQ(transcript.calls(), QStringList({compilation, compilation}));
}

TEST_F(FinderScriptsTest, TheSourcesAreIndentedWithTabsAndBlanks) {
    FinderScripts made(scripts, "Quillmark"_s);
    transcript.clear();
    made.run(false);
    made.run(true);
    EXPECT_EQ(transcript.calls(), QStringList({kSelectionRun, kRetryRun}));
}

TEST_F(FinderScriptsTest, TheRetryNamesTheCoreOfTheProductWhateverItsName) {
    FinderScripts made(scripts, "100%@ \"ü\""_s);
    transcript.clear();
    made.run(true);
    EXPECT_TRUE(transcript.calls().constFirst().startsWith(
        "execute \t\t\t\t\t\t\t\t\t  tell application \"100%@ \"ü\"Core\"\n"_s));
}

TEST_F(FinderScriptsTest, ThatDoNotCompileAreRunAllTheSame) {
    scripts.doesCompile = false;
    scripts.answer = listOf({"/a"_s});
    FinderScripts made(scripts, "Quillmark"_s);
    EXPECT_TRUE(made.run(false));
    EXPECT_TRUE(made.run(true));
}

/// Over one platform for the whole process: the two scripts are kept from their first use on.
class FinderTest : public testing::Test {
protected:
    FinderTest() {
        FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false); // the first use
        platform.transcript.clear();
    }
    ~FinderTest() override {
        platform.scripts.answer.reset();
        platform.scripts.doesCompile = true;
        platform.scripts.onExecute = [] {};
        platform.workspace.applications.clear();
        platform.appleEvents.addressStatus = 0;
        platform.appleEvents.createStatus = 0;
        platform.appleEvents.sendStatus = 0;
        installPlatform(nullptr);
    }
    void select(const QStringList &paths) { platform.scripts.answer = listOf(paths); }
    const QStringList &calls() const { return platform.transcript.calls(); }

    test::FakePlatform &platform = test::immortalPlatform();
};

using Selection = FinderTest;

TEST_F(Selection, IsThePathsInTheFindersOrder) {
    const QStringList paths{"/b"_s, "/a ü"_s, "/b"_s, ""_s};
    select(paths);
    EXPECT_EQ(FinderSupport::createSelectedFinderItemsArrayNoCacheIsRetry(false), paths);
    EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false), paths);
    EXPECT_EQ(calls(), QStringList({kSelectionRun, kSelectionRun}));
}

TEST_F(Selection, IsReadByTheRetryScriptInARetry) {
    select({"/a"_s});
    EXPECT_EQ(FinderSupport::createSelectedFinderItemsArrayNoCacheIsRetry(true), QStringList{"/a"_s});
    EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(true), QStringList{"/a"_s});
    EXPECT_EQ(calls(), QStringList({kRetryRun, kRetryRun}));
}

TEST_F(Selection, IsAppendedToWhatAListHolds) {
    select({"/a"_s, "/b"_s});
    QStringList list{"/a"_s};
    FinderSupport::appendSelectedFinderItemsToArray(list, false);
    EXPECT_EQ(list, QStringList({"/a"_s, "/a"_s, "/b"_s}));
    FinderSupport::appendSelectedFinderItemsToArray(list, true);
    EXPECT_EQ(list.size(), 5);
}

TEST_F(Selection, IsEmptyWhenNothingIsSelected) {
    select({});
    EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false), QStringList());
}

TEST_F(Selection, IsEmptyWithoutAResult) {
    QStringList list{"/kept"_s};
    FinderSupport::appendSelectedFinderItemsToArray(list, false);
    FinderSupport::appendSelectedFinderItemsToArray(list, true);
    EXPECT_EQ(list, QStringList{"/kept"_s});
}

TEST_F(Selection, IsEmptyWhenTheResultIsNoList) {
    for (const Type type : {Type::Null, Type::Boolean, Type::Text, Type::Other}) {
        platform.scripts.answer = listOf({"/a"_s}); // even where it has items
        platform.scripts.answer->type = type;
        platform.scripts.answer->stringValue = "/a"_s;
        EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false), QStringList()) << static_cast<int>(type);
    }
}

TEST_F(Selection, LeavesOutItemsThatAreNoText) {
    platform.scripts.answer =
        FakeScripts::list({FakeScripts::text("/a"_s), {}, listOf({"/inner"_s}), FakeScripts::text("/b"_s)});
    EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false), QStringList({"/a"_s, "/b"_s}));
}

TEST_F(Selection, TakesTheTextOfAnItemOfAnyType) {
    platform.scripts.answer = FakeScripts::list({{Type::Other, "7"_s, false, {}}, {Type::Boolean, "true"_s, true, {}}});
    EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false), QStringList({"7"_s, "true"_s}));
}

class KeptSelection : public FinderTest {
protected:
    static constexpr auto kTick = std::chrono::microseconds(1);
    static constexpr auto kLifetime = std::chrono::milliseconds(2500);
    static constexpr Clock::Time kReferenceDate{std::chrono::seconds(978307200)};
    const Clock::Time start{std::chrono::microseconds(1709648102123456)};

    KeptSelection() { clock.set(start); }

    test::FakeClock clock;
    FinderSupport finder{clock};
};

TEST_F(KeptSelection, IsReadAtTheFirstCall) {
    select({"/a"_s});
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(false), QStringList{"/a"_s});
    EXPECT_EQ(calls(), QStringList{kSelectionRun});
}

TEST_F(KeptSelection, StaysForTwoAndAHalfSeconds) {
    select({"/a"_s});
    finder.getSelectedFinderItemsIsRetry(false);
    select({"/b"_s});
    clock.set(start + kLifetime);
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(false), QStringList{"/a"_s});
    EXPECT_EQ(calls().size(), 1);
}

TEST_F(KeptSelection, IsReadAnewAfterThat) {
    select({"/a"_s});
    finder.getSelectedFinderItemsIsRetry(false);
    select({"/b"_s});
    clock.set(start + kLifetime + kTick);
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(false), QStringList{"/b"_s});
    EXPECT_EQ(calls(), QStringList({kSelectionRun, kSelectionRun}));
}

TEST_F(KeptSelection, IsReadAnewInEveryRetry) {
    select({"/a"_s});
    finder.getSelectedFinderItemsIsRetry(false);
    select({"/b"_s});
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(true), QStringList{"/b"_s});
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(true), QStringList{"/b"_s});
    EXPECT_EQ(calls(), QStringList({kSelectionRun, kRetryRun, kRetryRun}));
}

TEST_F(KeptSelection, StaysAfterARetryToo) {
    select({"/a"_s});
    finder.getSelectedFinderItemsIsRetry(true);
    select({"/b"_s});
    clock.set(start + kLifetime);
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(false), QStringList{"/a"_s});
}

TEST_F(KeptSelection, IsAsOldAsTheCallHoweverLongTheScriptTook) { // deliberate
    platform.scripts.onExecute = [this] { clock.set(start + kLifetime + kTick); };
    finder.getSelectedFinderItemsIsRetry(false);
    finder.getSelectedFinderItemsIsRetry(false);
    EXPECT_EQ(calls().size(), 2);
}

TEST_F(KeptSelection, DoesNotGrowOldWhileTheClockIsSetBack) { // deliberate
    select({"/a"_s});
    finder.getSelectedFinderItemsIsRetry(false);
    clock.set(start - std::chrono::hours(1));
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(false), QStringList{"/a"_s});
    EXPECT_EQ(calls().size(), 1);
}

TEST_F(KeptSelection, CountsAsReadAtTheReferenceDateAtFirst) { // deliberate
    select({"/a"_s});
    clock.set(kReferenceDate + kLifetime);
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(false), QStringList());
    EXPECT_EQ(calls(), QStringList());
    clock.set(kReferenceDate + kLifetime + kTick);
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(false), QStringList{"/a"_s});
}

TEST_F(KeptSelection, IsEmptiedByAFinderThatDoesNotAnswer) {
    select({"/a"_s});
    finder.getSelectedFinderItemsIsRetry(false);
    platform.scripts.answer.reset();
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(true), QStringList());
    select({"/b"_s});
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(false), QStringList()); // that is kept as well
}

TEST_F(KeptSelection, IsOneListForAllCallersWhichChangesInTheirHands) { // deliberate
    select({"/a"_s});
    const QStringList &first = finder.getSelectedFinderItemsIsRetry(false);
    select({"/b"_s, "/c"_s});
    EXPECT_EQ(&finder.getSelectedFinderItemsIsRetry(true), &first);
    EXPECT_EQ(first, QStringList({"/b"_s, "/c"_s}));
}

TEST_F(KeptSelection, IsLeftAloneByNewLists) {
    select({"/a"_s});
    finder.getSelectedFinderItemsIsRetry(false);
    select({"/b"_s});
    FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false);
    FinderSupport::createSelectedFinderItemsArrayNoCacheIsRetry(true);
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(false), QStringList{"/a"_s});
    EXPECT_EQ(calls().size(), 3);
}

TEST_F(KeptSelection, IsFilledByOneThreadAtATime) {
    std::promise<void> secondHasBegun;
    std::thread second;
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    std::atomic<int> runs = 0;
    platform.scripts.onExecute = [&] {
        most = std::max<int>(most, ++inside);
        if (++runs == 1) {
            second = std::thread([&] {
                secondHasBegun.set_value();
                finder.getSelectedFinderItemsIsRetry(true);
            });
            secondHasBegun.get_future().wait();
            std::this_thread::sleep_for(std::chrono::milliseconds(50)); // time enough for a second one to come in
        }
        --inside;
    };
    select({"/a"_s});
    finder.getSelectedFinderItemsIsRetry(true);
    second.join();
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(most, 1);
    EXPECT_EQ(finder.getSelectedFinderItemsIsRetry(false), QStringList{"/a"_s});
}

TEST_F(KeptSelection, IsGivenWithoutWaitingWhileItIsFilledAnew) { // deliberate: it is empty then
    select({"/a"_s});
    const QStringList &list = finder.getSelectedFinderItemsIsRetry(false);
    const QStringList *seen = nullptr;
    platform.scripts.onExecute = [&] {
        std::thread([&] { seen = &finder.getSelectedFinderItemsIsRetry(false); }).join(); // or for ever
        EXPECT_TRUE(list.isEmpty());
    };
    finder.getSelectedFinderItemsIsRetry(true);
    EXPECT_EQ(seen, &list);
    EXPECT_EQ(list, QStringList{"/a"_s});
}

TEST_F(FinderTest, OneManagerIsSharedEvenWhenManyThreadsAskFirst) {
    FinderSupport *seen[4] = {};
    std::vector<std::thread> threads;
    for (FinderSupport *&slot : seen) {
        threads.emplace_back([&slot] { slot = &FinderSupport::sharedManager(); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (const FinderSupport *instance : seen) {
        EXPECT_EQ(instance, &FinderSupport::sharedManager());
    }
}

TEST_F(FinderTest, AFileIsUpdatedByAScriptThatIsCompiledAndRun) {
    FinderSupport::updateFileAtPath("/a/b ü"_s);
    const QString source =
        "tell application \"Finder\"\nset fileAlias to POSIX file \"/a/b ü\"\nupdate fileAlias\nend tell"_s;
    EXPECT_EQ(calls(), QStringList({"compile "_s + source, "execute "_s + source}));
}

TEST_F(FinderTest, AFileThatCannotBeUpdatedIsNotTold) {
    platform.scripts.doesCompile = false;
    FinderSupport::updateFileAtPath("/a"_s);
    EXPECT_EQ(calls().size(), 2); // deliberate: run all the same
}

TEST_F(FinderTest, ThePathOfAFileIsNotEscaped) { // deliberate
    FinderSupport::updateFileAtPath("/a\"\\%@"_s);
    EXPECT_TRUE(calls().constFirst().contains("POSIX file \"/a\"\\%@\"\n"_s));
}

using ConnectedServers = FinderTest;

TEST_F(ConnectedServers, AreAskedForByAScriptThatIsRun) {
    FinderSupport::showConnectedServersOnDesktop();
    EXPECT_EQ(calls(), QStringList{"execute on run argv\ntell application \"Finder\"\nreturn desktop shows connected "
                                   "servers of Finder preferences\nend tell\nend run\n"_s});
}

TEST_F(ConnectedServers, AreShownOrNotAsTheFinderSays) {
    platform.scripts.answer = FakeScripts::boolean(true);
    EXPECT_TRUE(FinderSupport::showConnectedServersOnDesktop());
    platform.scripts.answer = FakeScripts::boolean(false);
    EXPECT_FALSE(FinderSupport::showConnectedServersOnDesktop());
}

TEST_F(ConnectedServers, AreShownWhenTheFinderDoesNotAnswer) { // deliberate
    EXPECT_TRUE(FinderSupport::showConnectedServersOnDesktop());
}

TEST_F(ConnectedServers, AreNotShownWhenTheAnswerIsNoTruthValue) {
    for (const ScriptDescriptor &answer :
         {ScriptDescriptor(), FakeScripts::text("perhaps"_s), FakeScripts::list({}),
          FakeScripts::list({FakeScripts::boolean(true)}), ScriptDescriptor{Type::Other, {}, false, {}}}) {
        platform.scripts.answer = answer;
        EXPECT_FALSE(FinderSupport::showConnectedServersOnDesktop()) << static_cast<int>(answer.type);
    }
}

TEST_F(ConnectedServers, AreShownWhenTheAnswerCanBeReadAsTrue) {
    platform.scripts.answer = ScriptDescriptor{Type::Text, "true"_s, true, {}};
    EXPECT_TRUE(FinderSupport::showConnectedServersOnDesktop());
}

TEST_F(ConnectedServers, AreSetByAScriptThatIsRun) {
    const QString source = "execute on run argv\ntell application \"Finder\"\nset desktop shows connected servers of "
                           "Finder preferences to %1\nend tell\nend run\n"_s;
    FinderSupport::setShowConnectedServersOnDesktop(true);
    FinderSupport::setShowConnectedServersOnDesktop(false);
    EXPECT_EQ(calls(), QStringList({source.arg("true"_s), source.arg("false"_s)}));
}

class ITunes : public FinderTest {
protected:
    /// True when the request leaves the caller and its group of processes alone. It is made in a group that may end.
    bool isHarmless() {
        const pid_t child = ::fork();
        if (child == 0) {
            ::setsid();
            FinderSupport::quitiTunes();
            ::_exit(calls() == QStringList{"launchedApplications"_s} ? 0 : 1);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
};

TEST_F(ITunes, GetsTheSignalToTerminate) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::pause();
        ::_exit(1);
    }
    platform.workspace.addApplication("com.apple.finder"_s, ::getpid());
    platform.workspace.addApplication("com.apple.iTunes"_s, child);
    FinderSupport::quitiTunes();
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST_F(ITunes, GetsNothingWhenItDoesNotRun) {
    EXPECT_TRUE(isHarmless());
    platform.workspace.addApplication("com.apple.itunes"_s, ::getpid());
    EXPECT_TRUE(isHarmless());
}

TEST_F(ITunes, GetsNothingWithoutAProcessNumber) {
    const QVariant numbers[] = {QVariant(), 0, "none"_s};
    for (const QVariant &number : numbers) {
        platform.workspace.applications = {
            {{kApplicationBundleIdentifier, "com.apple.iTunes"_s}, {kApplicationProcessIdentifier, number}}};
        EXPECT_TRUE(isHarmless()) << number.typeName();
    }
}

using SystemProcess = FinderTest;

TEST_F(SystemProcess, GetsABareEvent) {
    EXPECT_EQ(FinderSupport::sendAppleEventToSystemProcess(fourCharacterCode("rest")), 0);
    EXPECT_EQ(calls(), QStringList({"createProcessAddress 0 1"_s, "createEvent aevt rest"_s, "dispose address"_s,
                                    "sendMessage"_s, "dispose event"_s}));
}

TEST_F(SystemProcess, GetsNothingWithoutAnAddress) {
    platform.appleEvents.addressStatus = -108;
    EXPECT_EQ(FinderSupport::sendAppleEventToSystemProcess(fourCharacterCode("shut")), -108);
    EXPECT_EQ(calls(), QStringList{"createProcessAddress 0 1"_s});
}

TEST_F(SystemProcess, GetsNothingWithoutAnEventAndTheAddressIsDisposedOf) {
    platform.appleEvents.createStatus = -50;
    EXPECT_EQ(FinderSupport::sendAppleEventToSystemProcess(fourCharacterCode("shut")), -50);
    EXPECT_EQ(calls(), QStringList({"createProcessAddress 0 1"_s, "createEvent aevt shut"_s, "dispose address"_s}));
}

TEST_F(SystemProcess, ThatDoesNotTakeTheEventIsToldByItsStatus) {
    platform.appleEvents.sendStatus = -600;
    EXPECT_EQ(FinderSupport::sendAppleEventToSystemProcess(fourCharacterCode("slep")), -600);
    EXPECT_EQ(calls().last(), "dispose event"_s);
}

} // namespace
} // namespace quillmark

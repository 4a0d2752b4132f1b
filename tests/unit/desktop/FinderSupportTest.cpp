#include "desktop/FinderSupport.h"
#include "desktop/CompiledFinderScripts.h"
#include "fakes/FakePlatform.h"
#include "support/IdleProcess.h"
#include "support/Threads.h"
#include "support/ValuePrinter.h"

#include <future>
#include <gmock/gmock.h>

namespace quillmark {
namespace {

using test::FakeScripts;
using test::Lines;
using Type = ScriptDescriptor::Type;

/// A script whose lines are indented like this.
std::string source(const std::string &indentation, const Lines &lines) {
    return indentation + test::joined(lines, '\n' + indentation);
}

const Lines kReadSelection{"set alist to selection as alias list",
                           "set plist to {}",
                           "repeat with afile in alist",
                           "set end of plist to (POSIX path of (afile as text))",
                           "end repeat",
                           "end tell",
                           "return plist"};
const std::string kSelectionSource =
    source("\t\t\t ", test::together({{"tell application \"Finder\""}, kReadSelection}));
const std::string kRetrySource =
    source("\t\t\t\t\t\t\t\t\t  ", test::together({{"tell application \"QuillmarkCore\"", "activate", "end tell",
                                                    "tell application \"Finder\"", "activate"},
                                                   kReadSelection}));

const std::string kSelectionRun = "execute " + kSelectionSource;
const std::string kRetryRun = "execute " + kRetrySource;

ScriptDescriptor listOf(const Lines &paths) {
    std::vector<ScriptDescriptor> items;
    for (const std::string &path : paths) {
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
    const CompiledFinderScripts made(scripts, "Quillmark");
    const std::string compilation = "compile " + kSelectionSource;
    EXPECT_EQ(transcript.calls(), (Lines{compilation, compilation}));
}

TEST_F(FinderScriptsTest, TheSourcesAreIndentedWithTabsAndBlanks) {
    CompiledFinderScripts made(scripts, "Quillmark");
    transcript.clear();
    made.run(false);
    made.run(true);
    EXPECT_EQ(transcript.calls(), (Lines{kSelectionRun, kRetryRun}));
}

TEST_F(FinderScriptsTest, TheRetryNamesTheCoreOfTheProductWhateverItsName) {
    CompiledFinderScripts made(scripts, "100%@ \"ü\"");
    transcript.clear();
    made.run(true);
    EXPECT_TRUE(
        transcript.calls().front().starts_with("execute \t\t\t\t\t\t\t\t\t  tell application \"100%@ \"ü\"Core\"\n"));
}

TEST_F(FinderScriptsTest, ThatDoNotCompileAreRunAllTheSame) {
    scripts.doesCompile = false;
    scripts.answer = listOf({"/a"});
    CompiledFinderScripts made(scripts, "Quillmark");
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
    void select(const Lines &paths) { platform.scripts.answer = listOf(paths); }
    const Lines &calls() const { return platform.transcript.calls(); }

    test::FakePlatform &platform = test::immortalPlatform();
};

using Selection = FinderTest;

TEST_F(Selection, IsThePathsInTheFindersOrder) {
    const Lines paths{"/b", "/a ü", "/b", ""};
    select(paths);
    EXPECT_EQ(FinderSupport::createSelectedFinderItemsArrayNoCacheIsRetry(false), paths);
    EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false), paths);
    EXPECT_EQ(calls(), (Lines{kSelectionRun, kSelectionRun}));
}

TEST_F(Selection, IsReadByTheRetryScriptInARetry) {
    select({"/a"});
    EXPECT_EQ(FinderSupport::createSelectedFinderItemsArrayNoCacheIsRetry(true), Lines{"/a"});
    EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(true), Lines{"/a"});
    EXPECT_EQ(calls(), (Lines{kRetryRun, kRetryRun}));
}

TEST_F(Selection, IsAppendedToWhatAListHolds) {
    select({"/a", "/b"});
    Lines list{"/a"};
    FinderSupport::appendSelectedFinderItemsToArray(list, false);
    EXPECT_EQ(list, (Lines{"/a", "/a", "/b"}));
    FinderSupport::appendSelectedFinderItemsToArray(list, true);
    EXPECT_EQ(list.size(), 5U);
}

TEST_F(Selection, IsEmptyWhenNothingIsSelected) {
    select({});
    EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false), Lines());
}

TEST_F(Selection, IsEmptyWithoutAResult) {
    Lines list{"/kept"};
    FinderSupport::appendSelectedFinderItemsToArray(list, false);
    FinderSupport::appendSelectedFinderItemsToArray(list, true);
    EXPECT_EQ(list, Lines{"/kept"});
}

TEST_F(Selection, IsEmptyWhenTheResultIsNoList) {
    for (const Type type : {Type::Null, Type::Boolean, Type::Text, Type::Other}) {
        platform.scripts.answer = listOf({"/a"}); // even where it has items
        platform.scripts.answer->type = type;
        platform.scripts.answer->stringValue = "/a";
        EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false), Lines()) << static_cast<int>(type);
    }
}

TEST_F(Selection, LeavesOutItemsThatAreNoText) {
    platform.scripts.answer =
        FakeScripts::list({FakeScripts::text("/a"), {}, listOf({"/inner"}), FakeScripts::text("/b")});
    EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false), (Lines{"/a", "/b"}));
}

TEST_F(Selection, TakesTheTextOfAnItemOfAnyType) {
    platform.scripts.answer = FakeScripts::list({{Type::Other, "7", false, {}}, {Type::Boolean, "true", true, {}}});
    EXPECT_EQ(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false), (Lines{"7", "true"}));
}

class KeptSelection : public FinderTest {
protected:
    static constexpr auto kTick = std::chrono::microseconds(1);
    static constexpr auto kLifetime = std::chrono::milliseconds(2500);
    static constexpr Clock::Time kReferenceDate{std::chrono::seconds(978307200)};
    const Clock::Time start{std::chrono::microseconds(1709648102123456)};

    KeptSelection() { clock.set(start); }

    const Lines &read() { return finder.getSelectedFinderItemsIsRetry(false); }
    const Lines &readAgain() { return finder.getSelectedFinderItemsIsRetry(true); }
    /// Reads the one path, after which another one is selected.
    void readBeforeAChange(const char *path, const char *next) {
        select({path});
        read();
        select({next});
    }

    test::FakeClock clock;
    FinderSupport finder{clock};
};

TEST_F(KeptSelection, IsReadAtTheFirstCall) {
    select({"/a"});
    EXPECT_EQ(read(), Lines{"/a"});
    EXPECT_EQ(calls(), Lines{kSelectionRun});
}

TEST_F(KeptSelection, StaysForTwoAndAHalfSeconds) {
    readBeforeAChange("/a", "/b");
    clock.set(start + kLifetime);
    EXPECT_EQ(read(), Lines{"/a"});
    EXPECT_EQ(calls().size(), 1U);
}

TEST_F(KeptSelection, IsReadAnewAfterThat) {
    readBeforeAChange("/a", "/b");
    clock.set(start + kLifetime + kTick);
    EXPECT_EQ(read(), Lines{"/b"});
    EXPECT_EQ(calls(), (Lines{kSelectionRun, kSelectionRun}));
}

TEST_F(KeptSelection, IsReadAnewInEveryRetry) {
    readBeforeAChange("/a", "/b");
    EXPECT_EQ(readAgain(), Lines{"/b"});
    EXPECT_EQ(readAgain(), Lines{"/b"});
    EXPECT_EQ(calls(), (Lines{kSelectionRun, kRetryRun, kRetryRun}));
}

TEST_F(KeptSelection, StaysAfterARetryToo) {
    select({"/a"});
    readAgain();
    select({"/b"});
    clock.set(start + kLifetime);
    EXPECT_EQ(read(), Lines{"/a"});
}

TEST_F(KeptSelection, IsAsOldAsTheCallHoweverLongTheScriptTook) { // deliberate
    platform.scripts.onExecute = [this] { clock.set(start + kLifetime + kTick); };
    read();
    read();
    EXPECT_EQ(calls().size(), 2U);
}

TEST_F(KeptSelection, DoesNotGrowOldWhileTheClockIsSetBack) { // deliberate
    select({"/a"});
    read();
    clock.set(start - std::chrono::hours(1));
    EXPECT_EQ(read(), Lines{"/a"});
    EXPECT_EQ(calls().size(), 1U);
}

TEST_F(KeptSelection, CountsAsReadAtTheReferenceDateAtFirst) { // deliberate
    select({"/a"});
    clock.set(kReferenceDate + kLifetime);
    EXPECT_EQ(read(), Lines());
    EXPECT_EQ(calls(), Lines());
    clock.set(kReferenceDate + kLifetime + kTick);
    EXPECT_EQ(read(), Lines{"/a"});
}

TEST_F(KeptSelection, IsEmptiedByAFinderThatDoesNotAnswer) {
    select({"/a"});
    read();
    platform.scripts.answer.reset();
    EXPECT_EQ(readAgain(), Lines());
    select({"/b"});
    EXPECT_EQ(read(), Lines()); // that is kept as well
}

TEST_F(KeptSelection, IsOneListForAllCallersWhichChangesInTheirHands) { // deliberate
    select({"/a"});
    const Lines &first = read();
    select({"/b", "/c"});
    EXPECT_EQ(&readAgain(), &first);
    EXPECT_EQ(first, (Lines{"/b", "/c"}));
}

TEST_F(KeptSelection, IsLeftAloneByNewLists) {
    readBeforeAChange("/a", "/b");
    FinderSupport::getSelectedFinderItemsNoCacheIsRetry(false);
    FinderSupport::createSelectedFinderItemsArrayNoCacheIsRetry(true);
    EXPECT_EQ(read(), Lines{"/a"});
    EXPECT_EQ(calls().size(), 3U);
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
                readAgain();
            });
            secondHasBegun.get_future().wait();
            std::this_thread::sleep_for(std::chrono::milliseconds(50)); // time enough for a second one to come in
        }
        --inside;
    };
    select({"/a"});
    readAgain();
    second.join();
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(most, 1);
    EXPECT_EQ(read(), Lines{"/a"});
}

TEST_F(KeptSelection, IsGivenWithoutWaitingWhileItIsFilledAnew) { // deliberate: it is empty then
    select({"/a"});
    const Lines &list = read();
    const Lines *seen = nullptr;
    platform.scripts.onExecute = [&] {
        std::thread([&] { seen = &read(); }).join(); // or for ever
        EXPECT_TRUE(list.empty());
    };
    readAgain();
    EXPECT_EQ(seen, &list);
    EXPECT_EQ(list, Lines{"/a"});
}

TEST_F(FinderTest, OneManagerIsSharedEvenWhenManyThreadsAskFirst) {
    EXPECT_THAT(test::answersToThreads([] { return &FinderSupport::sharedManager(); }),
                testing::Each(&FinderSupport::sharedManager()));
}

TEST_F(FinderTest, AFileIsUpdatedByAScriptThatIsCompiledAndRun) {
    FinderSupport::updateFileAtPath("/a/b ü");
    const std::string source =
        "tell application \"Finder\"\nset fileAlias to POSIX file \"/a/b ü\"\nupdate fileAlias\nend tell";
    EXPECT_EQ(calls(), (Lines{"compile " + source, "execute " + source}));
}

TEST_F(FinderTest, AFileThatCannotBeUpdatedIsNotTold) {
    platform.scripts.doesCompile = false;
    FinderSupport::updateFileAtPath("/a");
    EXPECT_EQ(calls().size(), 2U); // deliberate: run all the same
}

TEST_F(FinderTest, ThePathOfAFileIsNotEscaped) { // deliberate
    FinderSupport::updateFileAtPath("/a\"\\%@");
    EXPECT_THAT(calls().front(), testing::HasSubstr("POSIX file \"/a\"\\%@\"\n"));
}

using ConnectedServers = FinderTest;

TEST_F(ConnectedServers, AreAskedForByAScriptThatIsRun) {
    FinderSupport::showConnectedServersOnDesktop();
    EXPECT_EQ(calls(), Lines{"execute on run argv\ntell application \"Finder\"\nreturn desktop shows connected "
                             "servers of Finder preferences\nend tell\nend run\n"});
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
         {ScriptDescriptor(), FakeScripts::text("perhaps"), FakeScripts::list({}),
          FakeScripts::list({FakeScripts::boolean(true)}), ScriptDescriptor{Type::Other, {}, false, {}}}) {
        platform.scripts.answer = answer;
        EXPECT_FALSE(FinderSupport::showConnectedServersOnDesktop()) << static_cast<int>(answer.type);
    }
}

TEST_F(ConnectedServers, AreShownWhenTheAnswerCanBeReadAsTrue) {
    platform.scripts.answer = ScriptDescriptor{Type::Text, "true", true, {}};
    EXPECT_TRUE(FinderSupport::showConnectedServersOnDesktop());
}

TEST_F(ConnectedServers, AreSetByAScriptThatIsRun) {
    const std::string source =
        "execute on run argv\ntell application \"Finder\"\nset desktop shows connected servers of "
        "Finder preferences to ";
    const std::string behind = "\nend tell\nend run\n";
    FinderSupport::setShowConnectedServersOnDesktop(true);
    FinderSupport::setShowConnectedServersOnDesktop(false);
    EXPECT_EQ(calls(), (Lines{source + "true" + behind, source + "false" + behind}));
}

class ITunes : public FinderTest {
protected:
    /// True when the request leaves the caller and its group of processes alone. It is made in a group that may end.
    bool isHarmless() {
        const pid_t child = ::fork();
        if (child == 0) {
            ::setsid();
            FinderSupport::quitiTunes();
            ::_exit(calls() == Lines{"launchedApplications"} ? 0 : 1);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
};

TEST_F(ITunes, GetsTheSignalToTerminate) {
    const test::IdleProcess player;
    platform.workspace.addApplication("com.apple.finder", ::getpid());
    platform.workspace.addApplication("com.apple.iTunes", player.identifier);
    FinderSupport::quitiTunes();
    EXPECT_EQ(player.endingSignal(), SIGTERM);
}

TEST_F(ITunes, GetsNothingWhenItDoesNotRun) {
    EXPECT_TRUE(isHarmless());
    platform.workspace.addApplication("com.apple.itunes", ::getpid());
    EXPECT_TRUE(isHarmless());
}

TEST_F(ITunes, GetsNothingWithoutAProcessNumber) {
    for (const Value &number : {Value(), Value(0), Value("none")}) {
        platform.workspace.applications = {
            {{kApplicationBundleIdentifier, "com.apple.iTunes"}, {kApplicationProcessIdentifier, number}}};
        EXPECT_TRUE(isHarmless()) << testing::PrintToString(number);
    }
}

using SystemProcess = FinderTest;

TEST_F(SystemProcess, GetsABareEvent) {
    EXPECT_EQ(FinderSupport::sendAppleEventToSystemProcess(fourCharacterCode("rest")), 0);
    EXPECT_EQ(calls(), (Lines{"createProcessAddress 0 1", "createEvent aevt rest", "dispose address", "sendMessage",
                              "dispose event"}));
}

TEST_F(SystemProcess, GetsNothingWithoutAnAddress) {
    platform.appleEvents.addressStatus = -108;
    EXPECT_EQ(FinderSupport::sendAppleEventToSystemProcess(fourCharacterCode("shut")), -108);
    EXPECT_EQ(calls(), Lines{"createProcessAddress 0 1"});
}

TEST_F(SystemProcess, GetsNothingWithoutAnEventAndTheAddressIsDisposedOf) {
    platform.appleEvents.createStatus = -50;
    EXPECT_EQ(FinderSupport::sendAppleEventToSystemProcess(fourCharacterCode("shut")), -50);
    EXPECT_EQ(calls(), (Lines{"createProcessAddress 0 1", "createEvent aevt shut", "dispose address"}));
}

TEST_F(SystemProcess, ThatDoesNotTakeTheEventIsToldByItsStatus) {
    platform.appleEvents.sendStatus = -600;
    EXPECT_EQ(FinderSupport::sendAppleEventToSystemProcess(fourCharacterCode("slep")), -600);
    EXPECT_EQ(calls().back(), "dispose event");
}

} // namespace
} // namespace quillmark

#include "desktop/MoveToApplications.h"

#include "desktop/MoveOffer.h"
#include "platform/files/Path.h"
#include "support/LogFixture.h"
#include "support/ValuePrinter.h"
#include "utils/FileManager.h"
#include "utils/ReplaceAll.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace quillmark {
namespace {

constexpr int kExitedWith1 = 1 << 8; // as waitpid gives it
constexpr int kKilled = 9;

using test::Lines;
using testing::Contains;
using testing::ElementsAre;
using testing::StartsWith;

/// Those that hold a text.
Lines filtered(Lines lines, std::string_view text) {
    std::erase_if(lines, [text](const std::string &line) { return line.find(text) == std::string::npos; });
    return lines;
}

/// A bundle in a download folder, and a place for Applications; the bundle's files are real.
class MoveToApplications : public test::LogFixture {
protected:
    MoveToApplications() {
        setSource(home.path("Downloads/Quillmark.app"));
        home.write("Downloads/Quillmark.app/Contents/Info.plist", "new");
        platform.workspace.userFolders = {home.path("user")};
        platform.workspace.localFolders = {home.path("network"), home.makeFolder("local")};
        platform.systemInfo.appKit = 2487;
        platform.workspace.ownFolder = home.path();
        m_log = logToFile(kLogLevelVerbose);
        _setStandardStreams(nullptr, nullptr);
        beginAnew();
    }
    ~MoveToApplications() override {
        ::chmod(destination.c_str(), 0777); // so that it can be deleted
        gAlsoRemoveBundlePaths.clear();
        for (std::optional<std::string> *setting : {&gAltDstBundleName, &gAltDstBundleParentPath, &gAltSrcBundlePath}) {
            setting->reset();
        }
    }

    void setSource(const std::string &path) {
        platform.bundle.bundlePath = path;
        source = path;
        destination = home.path("local/") + lastPathComponent(path);
    }
    /// A bundle that could be moved, so that nothing but its place speaks against it.
    void putSource(const std::string &folder) {
        setSource(folder + "/Quillmark.app");
        std::filesystem::create_directories(source);
        EXPECT_TRUE(std::filesystem::is_directory(source));
    }
    /// An older copy that the move replaces. There has to be one for a move without a password.
    void putOldCopy() { home.write("local/Quillmark.app/Contents/old", "old"); }

    /// Another copy than the one in the way.
    std::string putStale(const std::string &relative) {
        return deletingLastPathComponent(home.write(relative + "/x", "x"));
    }

    /// An old copy that only an administrator may change.
    void putOldCopyOfAnAdministrator() {
        putOldCopy();
        for (const char *folder : {"", "local", "Downloads", "Downloads/Quillmark.app"}) {
            setMode(home.path(folder), kEverybodys);
        }
        setMode(destination, kAdministrators);
    }
    static void setMode(const std::string &path, mode_t mode) { EXPECT_EQ(::chmod(path.c_str(), mode), 0) << path; }
    static constexpr mode_t kEverybodys = 01777; // where each keeps his own
    static constexpr mode_t kAdministrators = 0555;

    /// Does something as a user who owns nothing, on a thread of its own: the bare system call changes that one alone.
    static void asStranger(const std::function<void()> &action) {
        std::thread([&action] {
            constexpr uid_t kNobody = 65534;
            if (::geteuid() == 0) {
                ASSERT_EQ(::syscall(SYS_setresuid, kNobody, kNobody, kNobody), 0);
            }
            action();
        }).join();
    }

    void offer() { PFMoveToApplicationsFolderIfNecessary(m_strings); }
    /// True when the user is asked. The answer is a refusal.
    bool isOffered() {
        platform.alerts.answers.clear();
        platform.transcript.clear();
        offer();
        return wasAsked();
    }
    /// Nothing was asked or done yet, and the user will want the move.
    void beginAnew() {
        platform.alerts.answers = {{0, false}};
        platform.transcript.clear();
    }
    /// A move after which this process stays.
    void move() { PFMove(m_strings); }
    void move(const AlertAnswer &answer) {
        platform.alerts.answers = {answer};
        move();
    }
    /// One after which it ends.
    void moveToTheEnd() { EXPECT_THROW(move(), test::Terminated); }
    MovePlan plan() { return planOfMove(m_strings); }

    bool wasAsked() const { return callsThatBeginWith("runModal").size() == 1; }
    Lines callsThatBeginWith(const char *beginning) const {
        Lines calls = platform.transcript.calls();
        std::erase_if(calls, [beginning](const std::string &call) { return !call.starts_with(beginning); });
        return calls;
    }
    std::string lastAlert() const {
        const Lines alerts = callsThatBeginWith("runModal");
        return alerts.empty() ? std::string() : alerts.back();
    }
    /// What was done behind the question to the user.
    Lines deeds() const {
        Lines calls = platform.transcript.calls();
        const auto question =
            std::ranges::find_if(calls, [](const std::string &call) { return call.starts_with("runModal"); });
        if (question != calls.end()) {
            calls.erase(calls.begin(), question + 1);
        }
        std::erase(calls, "objectForKey moveToApplicationsFolderAlertSuppress");
        return calls;
    }
    Lines log() const { return linesOf(m_log); }

    static bool exists(const std::string &path) { return __QMCurrentThreadFileManager().fileExists(path); }
    bool isMoved() const { return test::readAll(destination + "/Contents/Info.plist") == "new"; }
    std::string relaunch() const {
        return "start /bin/sh -c (while [ `ps -p 311 | wc -l` -gt 1 ]; do sleep 0.1; done; "
               "/usr/bin/xattr -d -r com.apple.quarantine '" +
               destination + "'; open '" + destination + "') &";
    }
    std::string programs() const { return "  with programs of " + destination + "/Contents/Helpers"; }
    static std::string recycled(const std::string &path) {
        return "recycle " + lastPathComponent(path) + " in " + deletingLastPathComponent(path);
    }

    std::string source;
    std::string destination;

private:
    std::string m_log;
    LocalizedStrings m_strings{platform.bundle};
};

constexpr const char *kFailureAlert = "runModal [Quillmark] Could not move to Applications folder |  | OK";

Lines withFailureAlert(const Lines &deeds) { return test::together({deeds, {kFailureAlert}}); }

/// \name When the move is offered

TEST_F(MoveToApplications, IsOfferedOutsideTheApplicationsFolders) { EXPECT_TRUE(isOffered()); }

TEST_F(MoveToApplications, IsNotOfferedToAUserWhoAskedNotToBeAskedAgain) {
    for (const Value &value : {Value(true), Value(1), Value(2.5), Value("YES"), Value(" 01"), Value("true")}) {
        platform.userDefaults.stored.insert_or_assign(std::string(kMoveAlertSuppress), value);
        EXPECT_FALSE(isOffered()) << testing::PrintToString(value);
    }
    EXPECT_EQ(log(), Lines());
}

TEST_F(MoveToApplications, IsOfferedWhenTheWishIsOffOrOfAWrongType) {
    for (const Value &value : {Value(false), Value(0), Value("NO"), Value("maybe"), Value(""), Value(Bytes{"YES"}),
                               Value(List{true}), Value(Dictionary{{"a", 1}})}) {
        platform.userDefaults.stored.insert_or_assign(std::string(kMoveAlertSuppress), value);
        EXPECT_TRUE(isOffered()) << testing::PrintToString(value);
    }
}

TEST_F(MoveToApplications, IsNotOfferedInTheApplicationsFolderOfAnyDomain) {
    for (const std::string &folder :
         test::together({platform.workspace.userFolders, platform.workspace.localFolders})) {
        putSource(folder);
        EXPECT_FALSE(isOffered()) << folder;
    }
    EXPECT_EQ(log(), Lines());
}

TEST_F(MoveToApplications, IsNotOfferedWhereAPathMerelyBeginsLikeAnApplicationsFolderEither) {
    putSource(platform.workspace.localFolders[0] + "Old"); // deliberate
    EXPECT_FALSE(isOffered());
}

TEST_F(MoveToApplications, IsNotOfferedBelowAnyFolderThatIsCalledApplications) {
    for (const char *folder : {"Applications", "Applications/Cloud", "Cloud/Applications/new/1"}) {
        putSource(home.path(folder));
        EXPECT_FALSE(isOffered()) << folder;
    }
}

TEST_F(MoveToApplications, IsOfferedBelowFoldersWhoseNamesAreMerelyLikeIt) {
    for (const char *name : {"applications", "Applications2", "My Applications"}) {
        putSource(home.path(name));
        EXPECT_TRUE(isOffered()) << name;
    }
}

TEST_F(MoveToApplications, TakesBackAnAlternativeSourceAndFolderBeforeItsOffer) {
    PFAltSrcBundlePath("/elsewhere/Quillmark.app");
    PFAltDstBundleParentPath("/somewhere");
    EXPECT_TRUE(isOffered()); // deliberate: they have no effect
    EXPECT_FALSE(gAltSrcBundlePath);
    EXPECT_FALSE(gAltDstBundleParentPath);
    EXPECT_EQ(plan().source, source);
    EXPECT_EQ(plan().destination, destination);
}

TEST_F(MoveToApplications, TakesThemBackEvenWhereItOffersNothing) {
    platform.userDefaults.stored.insert_or_assign(std::string(kMoveAlertSuppress), true);
    PFAltSrcBundlePath("/elsewhere/Quillmark.app");
    EXPECT_FALSE(isOffered());
    EXPECT_FALSE(gAltSrcBundlePath);
}

TEST_F(MoveToApplications, GoesByAnAlternativeSourceAndFolderWhenCalledItself) {
    PFAltSrcBundlePath("/elsewhere/Other.app");
    PFAltDstBundleParentPath("/somewhere");
    EXPECT_EQ(plan().source, "/elsewhere/Other.app");
    EXPECT_EQ(plan().destination, "/somewhere/Other.app");
}

TEST_F(MoveToApplications, KeepsAnAlternativeNameThatNobodyReads) {
    PFAltDstBundleName("Feder");
    EXPECT_EQ(gAltDstBundleName, "Feder");
    EXPECT_EQ(plan().destination, destination); // deliberate: with the source's own name
}

TEST_F(MoveToApplications, GoesToTheLastApplicationsFolderOfTheLocalDomain) {
    EXPECT_EQ(plan().destination, home.path("local/Quillmark.app"));
}

TEST_F(MoveToApplications, IsNotOfferedForABundleThatCannotBeDeleted) {
    PFAltSrcBundlePath("/nowhere/Quillmark.app");
    move();
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(log(), Lines{"nrm No access to delete the app. Not offering to move it."});
}

TEST_F(MoveToApplications, IsOfferedOnAVolumeThatCannotBeWrittenTo) {
    setSource("/Volumes/Quillmark 1.14/Quillmark.app");
    EXPECT_TRUE(plan().isOnDiskImage);
    EXPECT_FALSE(plan().obstacle);
}

TEST_F(MoveToApplications, IsNotOfferedWhereAPathMerelyBeginsLikeAVolume) {
    setSource("/VolumesOld/Quillmark.app");
    EXPECT_FALSE(plan().isOnDiskImage);
    EXPECT_TRUE(plan().obstacle);
}

TEST_F(MoveToApplications, TakesAWritableSourceForNoDiskImage) { EXPECT_FALSE(plan().isOnDiskImage); }

TEST_F(MoveToApplications, IsNotOfferedWhereALinkHasLedToTheApplicationsFolder) {
    const std::string link = home.link("linked", home.path("Downloads"));
    PFAltDstBundleParentPath(link);
    move();
    EXPECT_EQ(log(), Lines{"nrm \"" + source + "\" and \"" + link +
                           "/Quillmark.app\" are the same place. Not offering to move it."});
    EXPECT_TRUE(exists(source));
}

TEST_F(MoveToApplications, IsNotOfferedIntoTheBundleItselfOrOutOfWhatItWouldReplace) {
    PFAltDstBundleParentPath(home.makeFolder("Downloads/Quillmark.app/Contents/inner"));
    move();
    home.write("local/Quillmark.app/old/Quillmark.app/x", "x");
    PFAltDstBundleParentPath(home.path("local"));
    PFAltSrcBundlePath(home.path("local/Quillmark.app/old/Quillmark.app"));
    move();
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(filtered(log(), "are the same place").size(), 2U);
}

TEST_F(MoveToApplications, TakesAVolumeThatCanBeWrittenToForNoDiskImage) {
    platform.workspace.volumes = {home.path("Volumes/")};
    home.write("Volumes/Stick/Quillmark.app/x", "x");
    setSource(home.path("Volumes/Stick/Quillmark.app"));
    EXPECT_FALSE(plan().obstacle);
    EXPECT_FALSE(plan().isOnDiskImage);
    EXPECT_FALSE(plan().detachCommand);
}

TEST_F(MoveToApplications, IsNotOfferedForAPathWithASingleQuote) {
    home.write("Downloads/Ada's.app/x", "x");
    setSource(home.path("Downloads/Ada's.app"));
    move();
    PFAltSrcBundlePath(home.path("Downloads/Quillmark.app"));
    PFAltDstBundleParentPath("/Ada's");
    move();
    PFAltDstBundleParentPath({});
    PFAltSrcBundlePath("/Volumes/Ada's/Quillmark.app");
    move();
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(log()[0], "nrm The path \"" + source + "\" holds a single quote. Not offering to move it.");
    EXPECT_EQ(filtered(log(), "holds a single quote").size(), 3U);
}

TEST_F(MoveToApplications, IsOfferedBelowAFolderWithASingleQuoteWhichReachesNoShell) {
    putSource(home.path("Ada's"));
    EXPECT_FALSE(plan().obstacle);
    EXPECT_EQ(plan().relaunchCommand.find("Ada"), std::string::npos);
}

TEST_F(MoveToApplications, IsNotOfferedToAPlaceWithAColonWhichNoSearchPathCanHold) {
    putSource(home.path("a:b"));
    EXPECT_FALSE(plan().obstacle);
    home.write("Downloads/Quill:mark.app/x", "x");
    setSource(home.path("Downloads/Quill:mark.app"));
    move();
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(log(), Lines{"nrm The path \"" + destination + "\" holds a colon. Not offering to move it."});
}

TEST_F(MoveToApplications, IsOfferedWhereALinkToTheBundleStandsInItsPlace) {
    ASSERT_EQ(::symlink(source.c_str(), destination.c_str()), 0);
    moveToTheEnd();
    EXPECT_EQ(deeds()[0], recycled(destination));
    EXPECT_TRUE(isMoved());
    EXPECT_FALSE(std::filesystem::is_symlink(destination));
}

TEST_F(MoveToApplications, IsOfferedFromTheDesktopsVolumesAsWell) {
    setSource("/media/ada/Quillmark 1.14/Quillmark.app");
    EXPECT_TRUE(plan().isOnDiskImage);
    EXPECT_EQ(plan().detachCommand, "(sleep 5 && hdiutil detach '/media/ada/Quillmark 1.14') &");
}

TEST_F(MoveToApplications, TakesASlashBehindAnAlternativeSourceForNothing) {
    PFAltSrcBundlePath(source + '/');
    EXPECT_EQ(plan().destination, destination);
}

/// \name What the system's window library can do

struct LibraryRow {
    const char *name;
    double version;
    bool hasSuppression;
    bool findsDownloads;
    bool copiesBundles;
    const char *quarantine;
};
class MoveByWindowLibrary : public MoveToApplications, public testing::WithParamInterface<LibraryRow> {};

TEST_P(MoveByWindowLibrary, HasTheAbilitiesOfItsVersion) {
    const LibraryRow &row = GetParam();
    const WindowLibraryAbilities &abilities = abilitiesOfWindowLibrary(row.version);
    EXPECT_EQ(abilities.hasSuppression, row.hasSuppression);
    EXPECT_EQ(abilities.findsDownloads, row.findsDownloads);
    EXPECT_EQ(abilities.copiesBundles, row.copiesBundles);
    platform.systemInfo.appKit = row.version;
    std::string quarantine = row.quarantine;
    replaceAll(quarantine, "@", destination);
    EXPECT_EQ(plan().relaunchCommand, "(while [ `ps -p 311 | wc -l` -gt 1 ]; do sleep 0.1; done; " + quarantine +
                                          " open '" + destination + "') &");
}

constexpr LibraryRow kLibraryRows[] = {
    {"Newest", 2487, true, true, true, "/usr/bin/xattr -d -r com.apple.quarantine '@';"},
    {"FirstThatCopies", 950, true, true, true, "/usr/bin/xattr -d -r com.apple.quarantine '@';"},
    {"LastThatDoesNotCopy", 949.54, true, true, false, "/usr/bin/xattr -d com.apple.quarantine '@';"},
    {"FirstWithTheCheckBox", 825, true, true, false, "/usr/bin/xattr -d com.apple.quarantine '@';"},
    {"LastWithoutTheCheckBox", 824.99, false, false, false, ""},
    {"Unknown", 0, false, false, false, ""},
};
INSTANTIATE_TEST_SUITE_P(Versions, MoveByWindowLibrary, testing::ValuesIn(kLibraryRows),
                         [](const auto &row) { return std::string(row.param.name); });

/// \name When an administrator's password is needed

TEST_F(MoveToApplications, NeedsAPasswordForAFirstCopyEvenInAWritableFolder) {
    EXPECT_TRUE(plan().needsAuthorisation); // deliberate: what is not there is not writable
}

TEST_F(MoveToApplications, NeedsNoPasswordToReplaceAWritableCopy) {
    putOldCopy();
    EXPECT_FALSE(plan().needsAuthorisation);
}

TEST_F(MoveToApplications, NeedsNoPasswordInAWritableFolderThatIsNamedWithATilde) {
    putOldCopy();
    PFAltDstBundleParentPath("~/local");
    EXPECT_EQ(plan().destination, "~/local/Quillmark.app");
    EXPECT_FALSE(plan().needsAuthorisation);
}

TEST_F(MoveToApplications, NeedsAPasswordForAFolderThatCannotBeWrittenToThoughTheCopyInItCan) {
    putOldCopyOfAnAdministrator();
    setMode(destination, kEverybodys);
    setMode(home.path("local"), kAdministrators);
    asStranger([this] { EXPECT_TRUE(plan().needsAuthorisation); });
    setMode(home.path("local"), kEverybodys);
}

TEST_F(MoveToApplications, NeedsAPasswordForAFolderThatCannotBeWrittenTo) {
    PFAltDstBundleParentPath("/nowhere");
    EXPECT_TRUE(plan().needsAuthorisation);
}

TEST_F(MoveToApplications, NeedsAPasswordForAnOldCopyThatCannotBeWrittenTo) {
    putOldCopyOfAnAdministrator();
    asStranger([this] { EXPECT_TRUE(plan().needsAuthorisation); });
    setMode(destination, kEverybodys);
    asStranger([this] { EXPECT_FALSE(plan().needsAuthorisation); });
}

TEST_F(MoveToApplications, NeedsAPasswordForAnyOtherCopyThatIsThereAndCannotBeWrittenTo) {
    putOldCopyOfAnAdministrator();
    setMode(destination, kEverybodys);
    const std::string stale = deletingLastPathComponent(home.write("Stale.app/x", "x"));
    const auto needsAuthorisation = [this, &stale](mode_t mode) {
        bool answer = false;
        setMode(stale, mode);
        asStranger([&] { answer = plan().needsAuthorisation; });
        return answer;
    };
    PFAlsoRemoveBundles({"~/none.app", "~/Stale.app"});
    EXPECT_TRUE(needsAuthorisation(kAdministrators));
    EXPECT_FALSE(needsAuthorisation(kEverybodys));
}

/// \name The question

TEST_F(MoveToApplications, SaysThatAPasswordIsRequired) {
    platform.workspace.downloads = {home.path("Downloads")};
    EXPECT_EQ(plan().informativeText, "I can move myself to the Applications folder if you'd like. "
                                      "Note that this will require an administrator password.");
}

TEST_F(MoveToApplications, SaysThatTheDownloadsFolderStaysUncluttered) {
    putOldCopy();
    platform.workspace.downloads = {"/none", home.path("Downloads")};
    EXPECT_EQ(plan().informativeText, "I can move myself to the Applications folder if you'd like. "
                                      "This will keep your Downloads folder uncluttered.");
}

TEST_F(MoveToApplications, SaysNoMoreElsewhere) {
    putOldCopy();
    EXPECT_EQ(plan().informativeText, "I can move myself to the Applications folder if you'd like.");
}

TEST_F(MoveToApplications, KnowsADownloadsFolderByItsNameAloneOnOldSystems) {
    putOldCopy();
    platform.systemInfo.appKit = 824;
    platform.workspace.downloads = {"/none"};
    EXPECT_TRUE(plan().informativeText.ends_with("uncluttered."));
    setSource(deletingLastPathComponent(home.write("Downloads/below/Quillmark.app/x", "x")));
    EXPECT_FALSE(plan().informativeText.ends_with("uncluttered."));
    EXPECT_TRUE(callsThatBeginWith("downloadsFolders").empty());
}

TEST_F(MoveToApplications, LocalisesEachPartByItselfAndNotTheBlankBetween) {
    platform.bundle.strings["I can move myself to the Applications folder if you'd like."] = "A.";
    platform.bundle.strings["Note that this will require an administrator password."] = "B.";
    EXPECT_EQ(plan().informativeText, "A. B.");
}

TEST_F(MoveToApplications, AsksWithTwoButtonsAndTheCheckBox) {
    platform.alerts.answers.clear();
    move();
    EXPECT_EQ(lastAlert(), "runModal [Quillmark] Move to Applications folder? | " + plan().informativeText +
                               " | Move to Applications Folder, Do Not Move | Do not show this message again");
    EXPECT_EQ(platform.alerts.last.escapeButton, 1);
}

TEST_F(MoveToApplications, AsksWithoutTheCheckBoxOnOldSystems) {
    platform.systemInfo.appKit = 824;
    platform.alerts.answers.clear();
    move();
    EXPECT_TRUE(lastAlert().ends_with("Do Not Move"));
}

TEST_F(MoveToApplications, BringsAnApplicationToTheFrontThatIsNotActive) {
    platform.alerts.answers.clear();
    move();
    EXPECT_TRUE(callsThatBeginWith("activate").empty());
    platform.application.isActiveNow = false;
    move();
    EXPECT_EQ(callsThatBeginWith("activate").size(), 1U);
    const Lines calls = platform.transcript.calls();
    const auto activation = std::find(calls.begin(), calls.end(), "activateIgnoringOtherApps");
    const auto behindAlert = std::find(calls.rbegin(), calls.rend(), lastAlert()).base();
    EXPECT_EQ(behindAlert - activation, 2);
}

TEST_F(MoveToApplications, IsOfferedAgainAfterAPlainRefusal) {
    move({1, false});
    EXPECT_EQ(deeds(), Lines());
    EXPECT_EQ(log(), Lines());
    EXPECT_TRUE(exists(source));
}

TEST_F(MoveToApplications, TakesAnAnswerThatIsNoButtonForARefusal) {
    putOldCopy();
    move({-1, false});
    EXPECT_EQ(deeds(), Lines());
}

TEST_F(MoveToApplications, IsNeverOfferedAgainAfterARefusalWithTheCheckBoxOn) {
    move({1, true});
    EXPECT_EQ(valueOf(platform.userDefaults.stored, kMoveAlertSuppress), Value(true));
    EXPECT_EQ(deeds(), (Lines{"setObject moveToApplicationsFolderAlertSuppress", "synchronize"}));
}

TEST_F(MoveToApplications, IsNeverOfferedAgainAfterAnyRefusalOnOldSystems) {
    platform.systemInfo.appKit = 824;
    move({1, false});
    EXPECT_EQ(valueOf(platform.userDefaults.stored, kMoveAlertSuppress), Value(true));
}

TEST_F(MoveToApplications, DoesNotMindTheCheckBoxOfAUserWhoWantsTheMove) {
    platform.alerts.answers = {{0, true}};
    putOldCopy();
    moveToTheEnd();
    EXPECT_FALSE(platform.userDefaults.stored.contains(kMoveAlertSuppress));
}

TEST_F(MoveToApplications, SaysThatAWishCouldNotBeKept) {
    platform.transcript.failAt("synchronize", 1);
    move({1, true});
    EXPECT_EQ(log(),
              Lines{"ERR The preferences \"/preferences.plist\" can't be written: the user will be asked again"});
}

/// \name Without a password

TEST_F(MoveToApplications, ReplacesTheOldCopyAndStartsTheNewOne) {
    putOldCopy();
    moveToTheEnd();
    EXPECT_EQ(deeds(), (Lines{recycled(destination), recycled(source), relaunch(), programs(), "terminate"}));
    EXPECT_TRUE(isMoved());
    EXPECT_FALSE(exists(destination + "/Contents/old"));
    EXPECT_FALSE(exists(source));
    EXPECT_EQ(log(), (Lines{"nrm Moving myself to the Applications folder", "vrb Trashing \"" + destination + "\"...",
                            "vrb Trashed \"" + destination + "\"", "vrb Trashing \"" + source + "\"...",
                            "vrb Trashed \"" + source + "\""}));
}

TEST_F(MoveToApplications, FailsWhenTheOldCopyCannotBeTrashed) {
    putOldCopy();
    PFAlsoRemoveBundles({"~/Stale.app"});
    home.write("Stale.app/x", "x");
    platform.transcript.failAt("recycle", 1);
    move();
    EXPECT_EQ(deeds(), withFailureAlert({recycled(destination)}));
    EXPECT_EQ(log().back(), "ERR Could not trash \"" + destination + "\"");
    EXPECT_TRUE(exists(destination + "/Contents/old"));
}

TEST_F(MoveToApplications, TrashesEachOtherCopyThatIsThereAndPassesOverTheOnesThatStay) {
    putOldCopy();
    const std::string one = putStale("a/One.app");
    const std::string two = putStale("a/Two.app");
    PFAlsoRemoveBundles({"/none.app", "~/a/One.app", two, "~/a/Two.app", destination});
    platform.transcript.failAt("recycle", 2);
    moveToTheEnd();
    EXPECT_EQ(callsThatBeginWith("recycle"),
              (Lines{recycled(destination), recycled(one), recycled(two), recycled(source)}));
    EXPECT_THAT(log(), Contains("ERR Could not trash \"" + one + "\""));
    EXPECT_THAT(log(), Contains("vrb Failed to trash \"" + one + "\""));
    EXPECT_TRUE(isMoved());
}

TEST_F(MoveToApplications, NeverRemovesTheApplicationItselfOrWhatHoldsIt) {
    putOldCopy();
    home.write("Downloads/Quillmark.app2/x", "x");
    home.link("linked", home.path("Downloads"));
    const Lines kept = {source,
                        home.path("Downloads"),
                        home.path("Downloads/"),
                        home.path("local/../Downloads"),
                        home.path("linked/Quillmark.app"),
                        home.path(),
                        "~",
                        home.path("local")};
    PFAlsoRemoveBundles(test::together({kept, {home.path("Downloads/Quillmark.app2")}}));
    moveToTheEnd();
    EXPECT_EQ(callsThatBeginWith("recycle"),
              (Lines{recycled(destination), recycled(home.path("Downloads/Quillmark.app2")), recycled(source)}));
    EXPECT_EQ(filtered(log(), "nrm Not removing").size(), kept.size());
    EXPECT_EQ(filtered(log(), "nrm Not removing")[0], "nrm Not removing \"" + source + "\": the application is in it");
}

TEST_F(MoveToApplications, RemovesALinkThatMerelyLeadsToTheApplication) {
    putOldCopy();
    const std::string link = home.link("Link.app", source);
    PFAlsoRemoveBundles({link});
    moveToTheEnd();
    EXPECT_THAT(callsThatBeginWith("recycle"), Contains(recycled(link)));
}

TEST_F(MoveToApplications, FailsWhenTheBundleCannotBeCopied) {
    putOldCopy();
    platform.workspace.ownFolder.clear(); // so that the place is taken
    move();
    EXPECT_EQ(deeds(), withFailureAlert({recycled(destination)}));
    EXPECT_THAT(test::linesFrom(log(), 3),
                ElementsAre(StartsWith("ERR Could not copy '" + source + "' to '" + destination + "' ("),
                            "ERR Could not copy myself to " + destination));
    EXPECT_TRUE(exists(source));
}

TEST_F(MoveToApplications, CopiesNothingOnOldSystems) {
    putOldCopy();
    platform.systemInfo.appKit = 949;
    move(); // deliberate: it fails behind the removals
    EXPECT_EQ(deeds(), withFailureAlert({recycled(destination)}));
    EXPECT_EQ(log().back(), "ERR Could not copy myself to " + destination);
    EXPECT_TRUE(exists(source));
}

TEST_F(MoveToApplications, GoesOnWhenTheSourceCannotBeTrashed) {
    putOldCopy();
    platform.transcript.failAt("recycle", 2);
    moveToTheEnd();
    EXPECT_EQ(deeds(), (Lines{recycled(destination), recycled(source), relaunch(), programs(), "terminate"}));
    EXPECT_EQ(log().back(), "nrm Warning! Could not delete application after moving it to Applications folder");
}

TEST_F(MoveToApplications, SaysWhatToDoWhenTheNewCopyCannotBeStarted) {
    putOldCopy();
    platform.tasks.canStart = false;
    moveToTheEnd();
    EXPECT_EQ(log().back(), "ERR \"/bin/sh\" can't be started; open \"" + destination + "\" by hand");
}

TEST_F(MoveToApplications, MovesOddlyNamedBundlesToo) {
    for (const std::string &name : {std::string("My Quillmark \"2\".app"), std::string("a\nb.app"),
                                    std::string("$HOME`id`.app"), std::string(200, 'x') + ".app"}) {
        beginAnew();
        const std::string folder = std::string(200, 'y') + '/';
        const std::string file = folder + folder + folder + folder + folder + name; // more than a thousand characters
        setSource(
            deletingLastPathComponent(deletingLastPathComponent(home.write(file + "/Contents/Info.plist", "new"))));
        home.write("local/" + name + "/x", "x");
        moveToTheEnd();
        EXPECT_TRUE(isMoved()) << name;
        EXPECT_THAT(deeds(), Contains(relaunch()));
    }
}

/// \name With a password

class MoveWithPassword : public MoveToApplications {
protected:
    static std::string create() { return "AuthorizationCreate"; }
    static std::string rights() { return "AuthorizationCopyRights system.privilege.admin 13"; }
    static std::string remove(const std::string &path) {
        return "AuthorizationExecuteWithPrivileges /bin/rm -rf " + path;
    }
    std::string copy() const { return "AuthorizationExecuteWithPrivileges /bin/cp -pR " + source + " " + destination; }
    static std::string wait() { return "wait"; }
    static std::string free() { return "AuthorizationFree"; }
    void expectFailureBehindARemovalOf(std::optional<int> status) {
        const std::string one = putStale("a/One.app");
        PFAlsoRemoveBundles({"~/a/One.app"});
        platform.authorization.childStatuses = {status};
        move();
        EXPECT_EQ(deeds(), withFailureAlert({create(), rights(), remove(one), wait(), free()}));
    }
    static std::string errorLine() { return "ERR Could not copy myself to /Applications with authorization"; }
};

TEST_F(MoveWithPassword, CopiesAsTheAdministrator) {
    moveToTheEnd();
    EXPECT_EQ(deeds(), (Lines{create(), rights(), copy(), wait(), free(), recycled(source), relaunch(), programs(),
                              "terminate"}));
    EXPECT_EQ(log(), (Lines{"nrm Moving myself to the Applications folder", "vrb Asking for authorisation...",
                            "vrb Copying \"" + source + "\" to \"" + destination + "\"",
                            "vrb Trashing \"" + source + "\"...", "vrb Trashed \"" + source + "\""}));
}

TEST_F(MoveWithPassword, MakesTheFolderOnASystemThatHasNone) {
    const std::string folder = home.path("none/Applications");
    platform.workspace.localFolders = {folder};
    destination = folder + "/Quillmark.app";
    moveToTheEnd();
    const std::string make = "AuthorizationExecuteWithPrivileges /bin/mkdir -p " + folder;
    EXPECT_EQ(deeds(), (Lines{create(), rights(), make, wait(), copy(), wait(), free(), recycled(source), relaunch(),
                              programs(), "terminate"}));
    EXPECT_THAT(log(), Contains("vrb Making \"" + folder + "\""));
}

TEST_F(MoveWithPassword, FailsWhenThatFolderCannotBeMade) {
    platform.workspace.localFolders = {home.path("none")};
    platform.authorization.childStatuses = {kExitedWith1};
    move();
    EXPECT_EQ(filtered(deeds(), "/bin/cp").size(), 0U);
    EXPECT_EQ(lastAlert(), kFailureAlert);
}

TEST_F(MoveWithPassword, RemovesWhatIsInTheWayAndEachOtherCopyFirst) {
    putOldCopyOfAnAdministrator();
    const std::string one = putStale("a/One.app");
    const std::string two = putStale("a/Two.app");
    PFAlsoRemoveBundles({"~/a/One.app", "~/none.app", source, "~/a/Two.app"});
    platform.authorization.childStatuses = {kExitedWith1, kExitedWith1, kExitedWith1, 0};
    asStranger([this] { moveToTheEnd(); }); // deliberate: the exit codes of the removals are not looked at
    EXPECT_EQ(deeds(), (Lines{create(), rights(), remove(destination), wait(), remove(one), wait(), remove(two), wait(),
                              copy(), wait(), free(), recycled(source), relaunch(), programs(), "terminate"}));
    EXPECT_THAT(log(), Contains("vrb Removing \"" + one + "\""));
    EXPECT_THAT(log(), Contains("nrm Not removing \"" + source + "\": the application is in it"));
}

TEST_F(MoveWithPassword, NeverRemovesWhatHoldsTheApplication) {
    PFAlsoRemoveBundles({source, "~", "/"});
    moveToTheEnd();
    EXPECT_EQ(filtered(deeds(), "/bin/rm"), Lines());
    EXPECT_EQ(filtered(log(), "nrm Not removing").size(), 3U);
    EXPECT_THAT(deeds(), Contains(copy()));
}

TEST_F(MoveWithPassword, LeavesAloneWhatOthersCouldExchangeMeanwhile) {
    home.write("open/One.app/x", "x");
    const std::string open = home.path("open");
    ASSERT_EQ(::chmod(open.c_str(), 0777), 0);
    PFAlsoRemoveBundles({"~/open/One.app"});
    moveToTheEnd();
    EXPECT_EQ(filtered(deeds(), "/bin/rm"), Lines());
    EXPECT_THAT(deeds(), Contains(copy()));
    EXPECT_THAT(log(),
                Contains("ERR Leaving \"" + open + "/One.app\" alone: others can change what is in \"" + open + "\""));
}

TEST_F(MoveWithPassword, FailsWhereOthersCouldExchangeThePlaceItself) {
    const std::string open = home.makeFolder("open");
    ASSERT_EQ(::chmod(open.c_str(), 0777), 0);
    platform.workspace.localFolders = {open + "/Applications"};
    move();
    EXPECT_EQ(filtered(deeds(), "/bin/"), Lines());
    EXPECT_EQ(lastAlert(), kFailureAlert);
}

TEST_F(MoveWithPassword, RemovesWhatIsInAFolderThatIsNamedWithATilde) {
    putOldCopyOfAnAdministrator();
    PFAltDstBundleParentPath("~/local");
    asStranger([this] { moveToTheEnd(); });
    EXPECT_THAT(deeds(), Contains(remove(destination)));
}

TEST_F(MoveWithPassword, ComesBackWithoutAnAlertWhenTheUserCancels) {
    platform.authorization.rightsStatus = kAuthorizationCanceled;
    move();
    EXPECT_EQ(deeds(), (Lines{create(), rights(), free()}));
    EXPECT_EQ(log(), (Lines{"nrm Moving myself to the Applications folder", "vrb Asking for authorisation...",
                            "vrb Authorisation denied", "nrm Not moving because user canceled authorization"}));
    EXPECT_TRUE(exists(source));
}

TEST_F(MoveWithPassword, FailsForAnyOtherRefusal) {
    for (const std::int32_t status : {kAuthorizationDenied, kAuthorizationToolExecuteFailure, 1}) {
        beginAnew();
        platform.authorization.rightsStatus = status;
        move();
        EXPECT_EQ(deeds(), withFailureAlert({create(), rights(), free()}));
        EXPECT_EQ(test::linesFrom(log(), log().size() - 2), (Lines{"vrb Authorisation denied", errorLine()}));
    }
}

TEST_F(MoveWithPassword, FailsWithoutAReference) {
    platform.authorization.createStatus = kAuthorizationDenied;
    move();
    EXPECT_EQ(deeds(), withFailureAlert({create()}));
    EXPECT_EQ(log().back(), errorLine());
}

TEST_F(MoveWithPassword, AsksForNothingForABundleThatIsNotCalledApp) {
    setSource(deletingLastPathComponent(home.write("Downloads/Quillmark.APP/x", "x")));
    move();
    EXPECT_EQ(deeds(), withFailureAlert({}));
    EXPECT_EQ(log().back(), errorLine());
}

TEST_F(MoveWithPassword, FailsWhenARemovalCannotBeStarted) {
    putOldCopyOfAnAdministrator();
    platform.transcript.failAt("AuthorizationExecuteWithPrivileges", 1);
    asStranger([this] { move(); });
    EXPECT_EQ(deeds(), withFailureAlert({create(), rights(), remove(destination), free()}));
    EXPECT_EQ(log().back(), errorLine());
}

TEST_F(MoveWithPassword, FailsWhenARemovalCannotBeWaitedFor) { expectFailureBehindARemovalOf({}); }

TEST_F(MoveWithPassword, FailsWhenASignalEndsARemoval) { expectFailureBehindARemovalOf(kKilled); }

TEST_F(MoveWithPassword, FailsWhenTheCopyFails) {
    for (const std::optional<int> &status :
         {std::optional(kExitedWith1), std::optional(kKilled), std::optional<int>()}) {
        beginAnew();
        platform.authorization.childStatuses = {status};
        move();
        EXPECT_EQ(deeds(), withFailureAlert({create(), rights(), copy(), wait(), free()}));
        EXPECT_EQ(log().back(), errorLine());
        EXPECT_TRUE(exists(source));
    }
}

TEST_F(MoveWithPassword, FailsWhenTheCopyCannotBeStarted) {
    platform.authorization.executeStatus = kAuthorizationToolExecuteFailure;
    move();
    EXPECT_EQ(deeds(), withFailureAlert({create(), rights(), copy(), free()}));
}

TEST_F(MoveWithPassword, CopiesOnOldSystemsToo) {
    platform.systemInfo.appKit = 824;
    moveToTheEnd();
    EXPECT_THAT(deeds(), Contains(copy()));
    EXPECT_TRUE(callsThatBeginWith("start")[0].ends_with("sleep 0.1; done;  open '" + destination + "') &"));
}

/// \name From a disk image

TEST_F(MoveWithPassword, LeavesTheDiskImageAsItIsAndLetsGoOfIt) {
    setSource("/Volumes/Quillmark 1.14/Quillmark.app");
    moveToTheEnd();
    EXPECT_EQ(deeds(), (Lines{create(), rights(), copy(), wait(), free(), relaunch(), programs(),
                              "start /bin/sh -c (sleep 5 && hdiutil detach '/Volumes/Quillmark 1.14') &", programs(),
                              "terminate"}));
}

/// \name The Trash

TEST_F(MoveToApplications, TrashesOneItemByItsNameAndFolder) {
    EXPECT_TRUE(Trash("/a b/c.app"));
    EXPECT_EQ(platform.transcript.calls(), Lines{"recycle c.app in /a b"});
    EXPECT_TRUE(Trash("/c.app"));
    EXPECT_EQ(platform.transcript.calls().back(), "recycle c.app in /");
    EXPECT_EQ(test::linesFrom(log(), 0, 2), (Lines{"vrb Trashing \"/a b/c.app\"...", "vrb Trashed \"/a b/c.app\""}));
}

TEST_F(MoveToApplications, TellsWhatCouldNotBeTrashed) {
    platform.transcript.failAt("recycle", 1);
    EXPECT_FALSE(Trash("/a/c.app"));
    EXPECT_EQ(log(), (Lines{"vrb Trashing \"/a/c.app\"...", "ERR Could not trash \"/a/c.app\""}));
}

} // namespace
} // namespace quillmark

#include "desktop/MoveToApplications.h"

#include "desktop/MovePlan.h"
#include "platform/Path.h"
#include "support/LogFixture.h"
#include "utils/FileManager.h"

#include <QDir>
#include <QFileInfo>
#include <cstdlib>
#include <functional>
#include <optional>
#include <sched.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace quillmark {
namespace {

constexpr int kExitedWith1 = 1 << 8; // as waitpid gives it
constexpr int kKilled = 9;

/// A bundle in a download folder, and a place for Applications; the bundle's files are real.
class MoveToApplications : public test::LogFixture {
protected:
    MoveToApplications() {
        setSource(home.path(QStringLiteral("Downloads/Quillmark.app")));
        home.write(QStringLiteral("Downloads/Quillmark.app/Contents/Info.plist"), "new");
        platform.workspace.userFolders = {home.path(QStringLiteral("user"))};
        platform.workspace.localFolders = {home.path(QStringLiteral("network")),
                                           home.makeFolder(QStringLiteral("local"))};
        platform.systemInfo.appKit = 2487;
        platform.workspace.ownFolder = home.path();
        platform.alerts.answers = {{0, false}};
        m_log = logToFile(kLogLevelVerbose);
        platform.transcript.clear();
    }
    ~MoveToApplications() override {
        QFile::setPermissions(destination, QFile::Permissions(0x7777)); // so that it can be deleted
        gAlsoRemoveBundlePaths.clear();
        for (QString *setting : {&gAltDstBundleName, &gAltDstBundleParentPath, &gAltSrcBundlePath}) {
            *setting = QString();
        }
    }

    void setSource(const QString &path) {
        platform.bundle.bundlePath = path;
        source = path;
        destination = home.path(QStringLiteral("local/")) + lastPathComponent(path);
    }
    /// A bundle that could be moved, so that nothing but its place speaks against it.
    void putSource(const QString &folder) {
        setSource(folder + QStringLiteral("/Quillmark.app"));
        EXPECT_TRUE(QDir().mkpath(source));
    }
    /// An older copy that the move replaces. There has to be one for a move without a password.
    void putOldCopy() { home.write(QStringLiteral("local/Quillmark.app/Contents/old"), "old"); }

    /// One that only an administrator may change.
    void putOldCopyOfAnAdministrator() {
        putOldCopy();
        for (const char *folder : {"", "local", "Downloads", "Downloads/Quillmark.app"}) {
            setMode(home.path(QLatin1StringView(folder)), kEverybodys);
        }
        setMode(destination, kAdministrators);
    }
    static void setMode(const QString &path, mode_t mode) {
        EXPECT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0) << path.toStdString();
    }
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

    /// Answers in a process of its own, whose root folder the home folder is; nothing where the machine forbids that.
    std::optional<bool> withHomeAsRoot(const std::function<bool()> &question) const {
        constexpr int kForbidden = 2;
        const QByteArray root = QFile::encodeName(home.path());
        const pid_t child = ::fork();
        if (child == 0) {
            const bool isRoot = ::geteuid() == 0 || ::unshare(CLONE_NEWUSER) == 0;
            const bool isThere = isRoot && ::chroot(root.constData()) == 0 && ::chdir("/") == 0;
            ::_exit(!isThere ? kForbidden : question() ? EXIT_SUCCESS : EXIT_FAILURE);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status));
        return WEXITSTATUS(status) == kForbidden ? std::nullopt : std::optional(WEXITSTATUS(status) == EXIT_SUCCESS);
    }

    void offer() { PFMoveToApplicationsFolderIfNecessary(platform.platform, m_strings); }
    /// A move after which this process stays.
    void move() { PFMove(platform.platform, m_strings); }
    /// One after which it ends.
    void moveToTheEnd() { EXPECT_THROW(move(), test::Terminated); }
    MovePlan plan() { return planOfMove(platform.platform, m_strings); }

    bool wasAsked() const { return callsThatBeginWith("runModal").size() == 1; }
    QStringList callsThatBeginWith(const char *beginning) const {
        QStringList found;
        for (const QString &call : platform.transcript.calls()) {
            if (call.startsWith(QLatin1StringView(beginning))) {
                found << call;
            }
        }
        return found;
    }
    QString lastAlert() const {
        return callsThatBeginWith("runModal").value(callsThatBeginWith("runModal").size() - 1);
    }
    /// What was done behind the question to the user.
    QStringList deeds() const {
        const QStringList calls = platform.transcript.calls();
        QStringList behind = calls.mid(calls.indexOf(callsThatBeginWith("runModal").value(0)) + 1);
        behind.removeAll(QStringLiteral("objectForKey moveToApplicationsFolderAlertSuppress"));
        return behind;
    }
    QStringList log() const { return linesOf(m_log); }

    static bool exists(const QString &path) { return __QMCurrentThreadFileManager().fileExists(path); }
    bool isMoved() const { return test::readAll(destination + QStringLiteral("/Contents/Info.plist")) == "new"; }
    QString relaunch() const {
        return QStringLiteral("start /bin/sh -c (while [ `ps -p 311 | wc -l` -gt 1 ]; do sleep 0.1; done; "
                              "/usr/bin/xattr -d -r com.apple.quarantine '%1'; open '%1') &")
            .arg(destination);
    }
    QString programs() const { return QStringLiteral("  with programs of %1/Contents/Helpers").arg(destination); }
    static QString recycled(const QString &path) {
        return QStringLiteral("recycle %1 in %2").arg(lastPathComponent(path), deletingLastPathComponent(path));
    }

    QString source;
    QString destination;

private:
    QString m_log;
    LocalizedStrings m_strings{platform.bundle};
};

QStringList failureAlert() {
    return {QStringLiteral("runModal [Quillmark] Could not move to Applications folder |  | OK")};
}

/// \name When the move is offered

TEST_F(MoveToApplications, IsOfferedOutsideTheApplicationsFolders) {
    platform.alerts.answers.clear();
    offer();
    EXPECT_TRUE(wasAsked());
}

TEST_F(MoveToApplications, IsNotOfferedToAUserWhoAskedNotToBeAskedAgain) {
    for (const QVariant &value : {QVariant(true), QVariant(1), QVariant(2.5), QVariant(QStringLiteral("YES")),
                                  QVariant(QStringLiteral(" 01")), QVariant(QStringLiteral("true"))}) {
        platform.userDefaults.stored[kMoveAlertSuppress] = value;
        offer();
        EXPECT_FALSE(wasAsked()) << value.toString().toStdString();
    }
    EXPECT_EQ(log(), QStringList());
}

TEST_F(MoveToApplications, IsOfferedWhenTheWishIsOffOrOfAWrongType) {
    for (const QVariant &value : {QVariant(false), QVariant(0), QVariant(QStringLiteral("NO")),
                                  QVariant(QStringLiteral("maybe")), QVariant(QString()), QVariant(QByteArray("YES")),
                                  QVariant(QVariantList{true}), QVariant(QVariantMap{{QStringLiteral("a"), 1}})}) {
        platform.alerts.answers.clear();
        platform.transcript.clear();
        platform.userDefaults.stored[kMoveAlertSuppress] = value;
        offer();
        EXPECT_TRUE(wasAsked()) << value.typeName();
    }
}

TEST_F(MoveToApplications, IsNotOfferedInTheApplicationsFolderOfAnyDomain) {
    for (const QString &folder : platform.workspace.userFolders + platform.workspace.localFolders) {
        putSource(folder);
        offer();
    }
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(log(), QStringList());
}

TEST_F(MoveToApplications, IsNotOfferedWhereAPathMerelyBeginsLikeAnApplicationsFolderEither) {
    putSource(platform.workspace.localFolders[0] + QStringLiteral("Old")); // deliberate
    offer();
    EXPECT_FALSE(wasAsked());
}

TEST_F(MoveToApplications, IsNotOfferedBelowAnyFolderThatIsCalledApplications) {
    for (const char *folder : {"Applications", "Applications/Cloud", "Cloud/Applications/new/1"}) {
        putSource(home.path(QLatin1StringView(folder)));
        offer();
        EXPECT_FALSE(wasAsked()) << folder;
    }
}

TEST_F(MoveToApplications, IsOfferedBelowFoldersWhoseNamesAreMerelyLikeIt) {
    for (const char *name : {"applications", "Applications2", "My Applications"}) {
        platform.alerts.answers.clear();
        platform.transcript.clear();
        putSource(home.path(QLatin1StringView(name)));
        offer();
        EXPECT_TRUE(wasAsked()) << name;
    }
}

TEST_F(MoveToApplications, TakesBackAnAlternativeSourceAndFolderBeforeItsOffer) {
    PFAltSrcBundlePath(QStringLiteral("/elsewhere/Quillmark.app"));
    PFAltDstBundleParentPath(QStringLiteral("/somewhere"));
    platform.alerts.answers.clear();
    offer(); // deliberate: they have no effect
    EXPECT_TRUE(wasAsked());
    EXPECT_TRUE(gAltSrcBundlePath.isNull());
    EXPECT_TRUE(gAltDstBundleParentPath.isNull());
    EXPECT_EQ(plan().source, source);
    EXPECT_EQ(plan().destination, destination);
}

TEST_F(MoveToApplications, TakesThemBackEvenWhereItOffersNothing) {
    platform.userDefaults.stored[kMoveAlertSuppress] = true;
    PFAltSrcBundlePath(QStringLiteral("/elsewhere/Quillmark.app"));
    offer();
    EXPECT_TRUE(gAltSrcBundlePath.isNull());
}

TEST_F(MoveToApplications, GoesByAnAlternativeSourceAndFolderWhenCalledItself) {
    PFAltSrcBundlePath(QStringLiteral("/elsewhere/Other.app"));
    PFAltDstBundleParentPath(QStringLiteral("/somewhere"));
    EXPECT_EQ(plan().source, QStringLiteral("/elsewhere/Other.app"));
    EXPECT_EQ(plan().destination, QStringLiteral("/somewhere/Other.app"));
}

TEST_F(MoveToApplications, KeepsAnAlternativeNameThatNobodyReads) {
    PFAltDstBundleName(QStringLiteral("Feder"));
    EXPECT_EQ(gAltDstBundleName, QStringLiteral("Feder"));
    EXPECT_EQ(plan().destination, destination); // deliberate: with the source's own name
}

TEST_F(MoveToApplications, GoesToTheLastApplicationsFolderOfTheLocalDomain) {
    EXPECT_EQ(plan().destination, home.path(QStringLiteral("local/Quillmark.app")));
}

TEST_F(MoveToApplications, IsNotOfferedForABundleThatCannotBeDeleted) {
    PFAltSrcBundlePath(QStringLiteral("/nowhere/Quillmark.app"));
    move();
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(log(), QStringList{QStringLiteral("nrm No access to delete the app. Not offering to move it.")});
}

TEST_F(MoveToApplications, IsOfferedOnAVolumeThatCannotBeWrittenTo) {
    setSource(QStringLiteral("/Volumes/Quillmark 1.14/Quillmark.app"));
    EXPECT_TRUE(plan().isOnDiskImage);
    EXPECT_TRUE(plan().obstacle.isNull());
}

TEST_F(MoveToApplications, IsNotOfferedWhereAPathMerelyBeginsLikeAVolume) {
    setSource(QStringLiteral("/VolumesOld/Quillmark.app"));
    EXPECT_FALSE(plan().isOnDiskImage);
    EXPECT_FALSE(plan().obstacle.isNull());
}

TEST_F(MoveToApplications, TakesAWritableSourceForNoDiskImage) { EXPECT_FALSE(plan().isOnDiskImage); }

TEST_F(MoveToApplications, IsNotOfferedWhereALinkHasLedToTheApplicationsFolder) {
    const QString link = home.path(QStringLiteral("linked"));
    ASSERT_TRUE(QFile::link(home.path(QStringLiteral("Downloads")), link));
    PFAltDstBundleParentPath(link);
    move();
    EXPECT_EQ(log(), QStringList{QStringLiteral(R"(nrm "%1" and "%2" are the same place. Not offering to move it.)")
                                     .arg(source, link + QStringLiteral("/Quillmark.app"))});
    EXPECT_TRUE(exists(source));
}

TEST_F(MoveToApplications, IsNotOfferedIntoTheBundleItselfOrOutOfWhatItWouldReplace) {
    PFAltDstBundleParentPath(home.makeFolder(QStringLiteral("Downloads/Quillmark.app/Contents/inner")));
    move();
    home.write(QStringLiteral("local/Quillmark.app/old/Quillmark.app/x"), "x");
    PFAltDstBundleParentPath(home.path(QStringLiteral("local")));
    PFAltSrcBundlePath(home.path(QStringLiteral("local/Quillmark.app/old/Quillmark.app")));
    move();
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(log().filter(QStringLiteral("are the same place")).size(), 2);
}

TEST_F(MoveToApplications, TakesAVolumeThatCanBeWrittenToForNoDiskImage) {
    home.write(QStringLiteral("Volumes/Stick/Quillmark.app/x"), "x");
    setSource(QStringLiteral("/Volumes/Stick/Quillmark.app"));
    const auto tellsSo = [this] {
        const MovePlan found = plan();
        return found.obstacle.isNull() && !found.isOnDiskImage && found.detachCommand.isNull();
    };
    const std::optional<bool> answer = withHomeAsRoot(tellsSo);
    if (!answer) {
        GTEST_SKIP() << "this machine lets the test change no root folder";
    }
    EXPECT_TRUE(*answer);
}

TEST_F(MoveToApplications, IsNotOfferedForAPathWithASingleQuote) {
    home.write(QStringLiteral("Downloads/Ada's.app/x"), "x");
    setSource(home.path(QStringLiteral("Downloads/Ada's.app")));
    move();
    PFAltSrcBundlePath(home.path(QStringLiteral("Downloads/Quillmark.app")));
    PFAltDstBundleParentPath(QStringLiteral("/Ada's"));
    move();
    PFAltDstBundleParentPath(QString());
    PFAltSrcBundlePath(QStringLiteral("/Volumes/Ada's/Quillmark.app"));
    move();
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(log()[0],
              QStringLiteral("nrm The path \"%1\" holds a single quote. Not offering to move it.").arg(source));
    EXPECT_EQ(log().filter(QStringLiteral("holds a single quote")).size(), 3);
}

TEST_F(MoveToApplications, IsOfferedBelowAFolderWithASingleQuoteWhichReachesNoShell) {
    putSource(home.path(QStringLiteral("Ada's")));
    EXPECT_TRUE(plan().obstacle.isNull());
    EXPECT_FALSE(plan().relaunchCommand.contains(u"Ada"));
}

TEST_F(MoveToApplications, IsNotOfferedToAPlaceWithAColonWhichNoSearchPathCanHold) {
    putSource(home.path(QStringLiteral("a:b")));
    EXPECT_TRUE(plan().obstacle.isNull());
    home.write(QStringLiteral("Downloads/Quill:mark.app/x"), "x");
    setSource(home.path(QStringLiteral("Downloads/Quill:mark.app")));
    move();
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(
        log(),
        QStringList{QStringLiteral("nrm The path \"%1\" holds a colon. Not offering to move it.").arg(destination)});
}

TEST_F(MoveToApplications, IsOfferedWhereALinkToTheBundleStandsInItsPlace) {
    ASSERT_TRUE(QFile::link(source, destination));
    moveToTheEnd();
    EXPECT_EQ(deeds()[0], recycled(destination));
    EXPECT_TRUE(isMoved());
    EXPECT_FALSE(QFileInfo(destination).isSymLink());
}

TEST_F(MoveToApplications, IsOfferedFromTheDesktopsVolumesAsWell) {
    setSource(QStringLiteral("/media/ada/Quillmark 1.14/Quillmark.app"));
    EXPECT_TRUE(plan().isOnDiskImage);
    EXPECT_EQ(plan().detachCommand, QStringLiteral("(sleep 5 && hdiutil detach '/media/ada/Quillmark 1.14') &"));
}

TEST_F(MoveToApplications, TakesASlashBehindAnAlternativeSourceForNothing) {
    PFAltSrcBundlePath(source + u'/');
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
    EXPECT_EQ(plan().relaunchCommand,
              QStringLiteral("(while [ `ps -p 311 | wc -l` -gt 1 ]; do sleep 0.1; done; %1 open '%2') &")
                  .arg(QString::fromLatin1(row.quarantine).replace(u'@', destination), destination));
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
    PFAltDstBundleParentPath(QStringLiteral("~/local"));
    EXPECT_EQ(plan().destination, QStringLiteral("~/local/Quillmark.app"));
    EXPECT_FALSE(plan().needsAuthorisation);
}

TEST_F(MoveToApplications, NeedsAPasswordForAFolderThatCannotBeWrittenToThoughTheCopyInItCan) {
    putOldCopyOfAnAdministrator();
    setMode(destination, kEverybodys);
    setMode(home.path(QStringLiteral("local")), kAdministrators);
    asStranger([this] { EXPECT_TRUE(plan().needsAuthorisation); });
    setMode(home.path(QStringLiteral("local")), kEverybodys);
}

TEST_F(MoveToApplications, NeedsAPasswordForAFolderThatCannotBeWrittenTo) {
    PFAltDstBundleParentPath(QStringLiteral("/nowhere"));
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
    const QString stale = QFileInfo(home.write(QStringLiteral("Stale.app/x"), "x")).path();
    const auto needsAuthorisation = [this, &stale](mode_t mode) {
        bool answer = false;
        setMode(stale, mode);
        asStranger([&] { answer = plan().needsAuthorisation; });
        return answer;
    };
    PFAlsoRemoveBundles({QStringLiteral("~/none.app"), QStringLiteral("~/Stale.app")});
    EXPECT_TRUE(needsAuthorisation(kAdministrators));
    EXPECT_FALSE(needsAuthorisation(kEverybodys));
}

/// \name The question

TEST_F(MoveToApplications, SaysThatAPasswordIsRequired) {
    platform.workspace.downloads = {home.path(QStringLiteral("Downloads"))};
    EXPECT_EQ(plan().informativeText, QStringLiteral("I can move myself to the Applications folder if you'd like. "
                                                     "Note that this will require an administrator password."));
}

TEST_F(MoveToApplications, SaysThatTheDownloadsFolderStaysUncluttered) {
    putOldCopy();
    platform.workspace.downloads = {QStringLiteral("/none"), home.path(QStringLiteral("Downloads"))};
    EXPECT_EQ(plan().informativeText, QStringLiteral("I can move myself to the Applications folder if you'd like. "
                                                     "This will keep your Downloads folder uncluttered."));
}

TEST_F(MoveToApplications, SaysNoMoreElsewhere) {
    putOldCopy();
    EXPECT_EQ(plan().informativeText, QStringLiteral("I can move myself to the Applications folder if you'd like."));
}

TEST_F(MoveToApplications, KnowsADownloadsFolderByItsNameAloneOnOldSystems) {
    putOldCopy();
    platform.systemInfo.appKit = 824;
    platform.workspace.downloads = {QStringLiteral("/none")};
    EXPECT_TRUE(plan().informativeText.endsWith(QStringLiteral("uncluttered.")));
    setSource(QFileInfo(home.write(QStringLiteral("Downloads/below/Quillmark.app/x"), "x")).path());
    EXPECT_FALSE(plan().informativeText.endsWith(QStringLiteral("uncluttered.")));
    EXPECT_TRUE(callsThatBeginWith("downloadsFolders").isEmpty());
}

TEST_F(MoveToApplications, LocalisesEachPartByItselfAndNotTheBlankBetween) {
    platform.bundle.strings[QStringLiteral("I can move myself to the Applications folder if you'd like.")] =
        QStringLiteral("A.");
    platform.bundle.strings[QStringLiteral("Note that this will require an administrator password.")] =
        QStringLiteral("B.");
    EXPECT_EQ(plan().informativeText, QStringLiteral("A. B."));
}

TEST_F(MoveToApplications, AsksWithTwoButtonsAndTheCheckBox) {
    platform.alerts.answers.clear();
    move();
    EXPECT_EQ(lastAlert(),
              QStringLiteral("runModal [Quillmark] Move to Applications folder? | ") + plan().informativeText +
                  QStringLiteral(" | Move to Applications Folder, Do Not Move | Do not show this message again"));
    EXPECT_EQ(platform.alerts.last.escapeButton, 1);
}

TEST_F(MoveToApplications, AsksWithoutTheCheckBoxOnOldSystems) {
    platform.systemInfo.appKit = 824;
    platform.alerts.answers.clear();
    move();
    EXPECT_TRUE(lastAlert().endsWith(QStringLiteral("Do Not Move")));
}

TEST_F(MoveToApplications, BringsAnApplicationToTheFrontThatIsNotActive) {
    platform.alerts.answers.clear();
    move();
    EXPECT_TRUE(callsThatBeginWith("activate").isEmpty());
    platform.application.isActiveNow = false;
    move();
    EXPECT_EQ(callsThatBeginWith("activate").size(), 1);
    const QStringList calls = platform.transcript.calls();
    EXPECT_EQ(calls.indexOf(u"activateIgnoringOtherApps") + 1, calls.lastIndexOf(lastAlert()));
}

TEST_F(MoveToApplications, IsOfferedAgainAfterAPlainRefusal) {
    platform.alerts.answers = {{1, false}};
    move();
    EXPECT_EQ(deeds(), QStringList());
    EXPECT_EQ(log(), QStringList());
    EXPECT_TRUE(exists(source));
}

TEST_F(MoveToApplications, TakesAnAnswerThatIsNoButtonForARefusal) {
    putOldCopy();
    platform.alerts.answers = {{-1, false}};
    move();
    EXPECT_EQ(deeds(), QStringList());
}

TEST_F(MoveToApplications, IsNeverOfferedAgainAfterARefusalWithTheCheckBoxOn) {
    platform.alerts.answers = {{1, true}};
    move();
    EXPECT_EQ(platform.userDefaults.stored.value(kMoveAlertSuppress), QVariant(true));
    EXPECT_EQ(deeds(), QStringList({QStringLiteral("setObject moveToApplicationsFolderAlertSuppress"),
                                    QStringLiteral("synchronize")}));
}

TEST_F(MoveToApplications, IsNeverOfferedAgainAfterAnyRefusalOnOldSystems) {
    platform.systemInfo.appKit = 824;
    platform.alerts.answers = {{1, false}};
    move();
    EXPECT_EQ(platform.userDefaults.stored.value(kMoveAlertSuppress), QVariant(true));
}

TEST_F(MoveToApplications, DoesNotMindTheCheckBoxOfAUserWhoWantsTheMove) {
    platform.alerts.answers = {{0, true}};
    putOldCopy();
    moveToTheEnd();
    EXPECT_FALSE(platform.userDefaults.stored.contains(kMoveAlertSuppress));
}

TEST_F(MoveToApplications, SaysThatAWishCouldNotBeKept) {
    platform.alerts.answers = {{1, true}};
    platform.transcript.failAt(QStringLiteral("synchronize"), 1);
    _setStandardStreams(nullptr, nullptr);
    move();
    EXPECT_EQ(log(), QStringList{QStringLiteral(
                         "ERR The preferences \"/preferences.plist\" can't be written: the user will be asked again")});
}

/// \name Without a password

TEST_F(MoveToApplications, ReplacesTheOldCopyAndStartsTheNewOne) {
    putOldCopy();
    moveToTheEnd();
    EXPECT_EQ(deeds(), QStringList({recycled(destination), recycled(source), relaunch(), programs(),
                                    QStringLiteral("terminate")}));
    EXPECT_TRUE(isMoved());
    EXPECT_FALSE(exists(destination + QStringLiteral("/Contents/old")));
    EXPECT_FALSE(exists(source));
    EXPECT_EQ(log(), QStringList({QStringLiteral("nrm Moving myself to the Applications folder"),
                                  QStringLiteral("vrb Trashing \"%1\"...").arg(destination),
                                  QStringLiteral("vrb Trashed \"%1\"").arg(destination),
                                  QStringLiteral("vrb Trashing \"%1\"...").arg(source),
                                  QStringLiteral("vrb Trashed \"%1\"").arg(source)}));
}

TEST_F(MoveToApplications, FailsWhenTheOldCopyCannotBeTrashed) {
    putOldCopy();
    PFAlsoRemoveBundles({QStringLiteral("~/Stale.app")});
    home.write(QStringLiteral("Stale.app/x"), "x");
    platform.transcript.failAt(QStringLiteral("recycle"), 1);
    _setStandardStreams(nullptr, nullptr);
    move();
    EXPECT_EQ(deeds(), QStringList{recycled(destination)} + failureAlert());
    EXPECT_EQ(log().last(), QStringLiteral("ERR Could not trash \"%1\"").arg(destination));
    EXPECT_TRUE(exists(destination + QStringLiteral("/Contents/old")));
}

TEST_F(MoveToApplications, TrashesEachOtherCopyThatIsThereAndPassesOverTheOnesThatStay) {
    putOldCopy();
    home.write(QStringLiteral("a/One.app/x"), "x");
    home.write(QStringLiteral("a/Two.app/x"), "x");
    PFAlsoRemoveBundles({QStringLiteral("/none.app"), QStringLiteral("~/a/One.app"),
                         home.path(QStringLiteral("a/Two.app")), QStringLiteral("~/a/Two.app"), destination});
    platform.transcript.failAt(QStringLiteral("recycle"), 2);
    _setStandardStreams(nullptr, nullptr);
    moveToTheEnd();
    const QString one = home.path(QStringLiteral("a/One.app"));
    EXPECT_EQ(callsThatBeginWith("recycle"),
              QStringList({recycled(destination), recycled(one), recycled(home.path(QStringLiteral("a/Two.app"))),
                           recycled(source)}));
    EXPECT_TRUE(log().contains(QStringLiteral("ERR Could not trash \"%1\"").arg(one)));
    EXPECT_TRUE(log().contains(QStringLiteral("vrb Failed to trash \"%1\"").arg(one)));
    EXPECT_TRUE(isMoved());
}

TEST_F(MoveToApplications, NeverRemovesTheApplicationItselfOrWhatHoldsIt) {
    putOldCopy();
    home.write(QStringLiteral("Downloads/Quillmark.app2/x"), "x");
    ASSERT_TRUE(QFile::link(home.path(QStringLiteral("Downloads")), home.path(QStringLiteral("linked"))));
    const QStringList kept = {source,
                              home.path(QStringLiteral("Downloads")),
                              home.path(QStringLiteral("Downloads/")),
                              home.path(QStringLiteral("local/../Downloads")),
                              home.path(QStringLiteral("linked/Quillmark.app")),
                              home.path(),
                              QStringLiteral("~"),
                              home.path(QStringLiteral("local"))};
    PFAlsoRemoveBundles(kept + QStringList{home.path(QStringLiteral("Downloads/Quillmark.app2"))});
    moveToTheEnd();
    EXPECT_EQ(callsThatBeginWith("recycle"),
              QStringList({recycled(destination), recycled(home.path(QStringLiteral("Downloads/Quillmark.app2"))),
                           recycled(source)}));
    EXPECT_EQ(log().filter(QStringLiteral("nrm Not removing")).size(), kept.size());
    EXPECT_EQ(log().filter(QStringLiteral("nrm Not removing"))[0],
              QStringLiteral("nrm Not removing \"%1\": the application is in it").arg(source));
}

TEST_F(MoveToApplications, RemovesALinkThatMerelyLeadsToTheApplication) {
    putOldCopy();
    const QString link = home.path(QStringLiteral("Link.app"));
    ASSERT_TRUE(QFile::link(source, link));
    PFAlsoRemoveBundles({link});
    moveToTheEnd();
    EXPECT_TRUE(callsThatBeginWith("recycle").contains(recycled(link)));
}

TEST_F(MoveToApplications, FailsWhenTheBundleCannotBeCopied) {
    putOldCopy();
    platform.workspace.ownFolder.clear(); // so that the place is taken
    _setStandardStreams(nullptr, nullptr);
    move();
    EXPECT_EQ(deeds(), QStringList{recycled(destination)} + failureAlert());
    const QStringList lines = log();
    EXPECT_TRUE(lines[3].startsWith(QStringLiteral("ERR Could not copy '%1' to '%2' (").arg(source, destination)));
    EXPECT_EQ(lines[4], QStringLiteral("ERR Could not copy myself to %1").arg(destination));
    EXPECT_TRUE(exists(source));
}

TEST_F(MoveToApplications, CopiesNothingOnOldSystems) {
    putOldCopy();
    platform.systemInfo.appKit = 949;
    _setStandardStreams(nullptr, nullptr);
    move(); // deliberate: it fails behind the removals
    EXPECT_EQ(deeds(), QStringList{recycled(destination)} + failureAlert());
    EXPECT_EQ(log().last(), QStringLiteral("ERR Could not copy myself to %1").arg(destination));
    EXPECT_TRUE(exists(source));
}

TEST_F(MoveToApplications, GoesOnWhenTheSourceCannotBeTrashed) {
    putOldCopy();
    platform.transcript.failAt(QStringLiteral("recycle"), 2);
    _setStandardStreams(nullptr, nullptr);
    moveToTheEnd();
    EXPECT_EQ(deeds(), QStringList({recycled(destination), recycled(source), relaunch(), programs(),
                                    QStringLiteral("terminate")}));
    EXPECT_EQ(log().last(),
              QStringLiteral("nrm Warning! Could not delete application after moving it to Applications folder"));
}

TEST_F(MoveToApplications, SaysWhatToDoWhenTheNewCopyCannotBeStarted) {
    putOldCopy();
    platform.tasks.canStart = false;
    _setStandardStreams(nullptr, nullptr);
    moveToTheEnd();
    EXPECT_EQ(log().last(), QStringLiteral("ERR \"/bin/sh\" can't be started; open \"%1\" by hand").arg(destination));
}

TEST_F(MoveToApplications, MovesOddlyNamedBundlesToo) {
    for (const QString &name : {QStringLiteral("My Quillmark \"2\".app"), QStringLiteral("a\nb.app"),
                                QStringLiteral("$HOME`id`.app"), QString(200, u'x') + QStringLiteral(".app")}) {
        platform.alerts.answers = {{0, false}};
        platform.transcript.clear();
        const QString folder = QString(200, u'y') + u'/';
        const QString file = folder + folder + folder + folder + folder + name; // more than a thousand characters
        setSource(
            deletingLastPathComponent(home.write(file + QStringLiteral("/Contents/Info.plist"), "new")).chopped(9));
        home.write(QStringLiteral("local/") + name + QStringLiteral("/x"), "x");
        moveToTheEnd();
        EXPECT_TRUE(isMoved()) << name.toStdString();
        EXPECT_TRUE(deeds().contains(relaunch()));
    }
}

/// \name With a password

class MoveWithPassword : public MoveToApplications {
protected:
    MoveWithPassword() { _setStandardStreams(nullptr, nullptr); }

    static QString create() { return QStringLiteral("AuthorizationCreate"); }
    static QString rights() { return QStringLiteral("AuthorizationCopyRights system.privilege.admin 13"); }
    static QString remove(const QString &path) {
        return QStringLiteral("AuthorizationExecuteWithPrivileges /bin/rm -rf ") + path;
    }
    QString copy() const {
        return QStringLiteral("AuthorizationExecuteWithPrivileges /bin/cp -pR %1 %2").arg(source, destination);
    }
    static QString wait() { return QStringLiteral("wait"); }
    static QString free() { return QStringLiteral("AuthorizationFree"); }
    static QString errorLine() {
        return QStringLiteral("ERR Could not copy myself to /Applications with authorization");
    }
};

TEST_F(MoveWithPassword, CopiesAsTheAdministrator) {
    moveToTheEnd();
    EXPECT_EQ(deeds(), QStringList({create(), rights(), copy(), wait(), free(), recycled(source), relaunch(),
                                    programs(), QStringLiteral("terminate")}));
    EXPECT_EQ(log(), QStringList({QStringLiteral("nrm Moving myself to the Applications folder"),
                                  QStringLiteral("vrb Asking for authorisation..."),
                                  QStringLiteral("vrb Copying \"%1\" to \"%2\"").arg(source, destination),
                                  QStringLiteral("vrb Trashing \"%1\"...").arg(source),
                                  QStringLiteral("vrb Trashed \"%1\"").arg(source)}));
}

TEST_F(MoveWithPassword, MakesTheFolderOnASystemThatHasNone) {
    const QString folder = home.path(QStringLiteral("none/Applications"));
    platform.workspace.localFolders = {folder};
    destination = folder + QStringLiteral("/Quillmark.app");
    moveToTheEnd();
    const QString make = QStringLiteral("AuthorizationExecuteWithPrivileges /bin/mkdir -p ") + folder;
    EXPECT_EQ(deeds(), QStringList({create(), rights(), make, wait(), copy(), wait(), free(), recycled(source),
                                    relaunch(), programs(), QStringLiteral("terminate")}));
    EXPECT_TRUE(log().contains(QStringLiteral("vrb Making \"%1\"").arg(folder)));
}

TEST_F(MoveWithPassword, FailsWhenThatFolderCannotBeMade) {
    platform.workspace.localFolders = {home.path(QStringLiteral("none"))};
    platform.authorization.childStatuses = {kExitedWith1};
    move();
    EXPECT_EQ(deeds().filter(QStringLiteral("/bin/cp")).size(), 0);
    EXPECT_EQ(lastAlert(), QStringLiteral("runModal [Quillmark] Could not move to Applications folder |  | OK"));
}

TEST_F(MoveWithPassword, RemovesWhatIsInTheWayAndEachOtherCopyFirst) {
    putOldCopyOfAnAdministrator();
    home.write(QStringLiteral("a/One.app/x"), "x");
    home.write(QStringLiteral("a/Two.app/x"), "x");
    PFAlsoRemoveBundles(
        {QStringLiteral("~/a/One.app"), QStringLiteral("~/none.app"), source, QStringLiteral("~/a/Two.app")});
    platform.authorization.childStatuses = {kExitedWith1, kExitedWith1, kExitedWith1, 0};
    asStranger([this] { moveToTheEnd(); }); // deliberate: the exit codes of the removals are not looked at
    const QString one = home.path(QStringLiteral("a/One.app"));
    const QString two = home.path(QStringLiteral("a/Two.app"));
    EXPECT_EQ(deeds(), QStringList({create(), rights(), remove(destination), wait(), remove(one), wait(), remove(two),
                                    wait(), copy(), wait(), free(), recycled(source), relaunch(), programs(),
                                    QStringLiteral("terminate")}));
    EXPECT_TRUE(log().contains(QStringLiteral("vrb Removing \"%1\"").arg(one)));
    EXPECT_TRUE(log().contains(QStringLiteral("nrm Not removing \"%1\": the application is in it").arg(source)));
}

TEST_F(MoveWithPassword, NeverRemovesWhatHoldsTheApplication) {
    PFAlsoRemoveBundles({source, QStringLiteral("~"), QStringLiteral("/")});
    moveToTheEnd();
    EXPECT_EQ(deeds().filter(QStringLiteral("/bin/rm")), QStringList());
    EXPECT_EQ(log().filter(QStringLiteral("nrm Not removing")).size(), 3);
    EXPECT_TRUE(deeds().contains(copy()));
}

TEST_F(MoveWithPassword, LeavesAloneWhatOthersCouldExchangeMeanwhile) {
    home.write(QStringLiteral("open/One.app/x"), "x");
    const QString open = home.path(QStringLiteral("open"));
    ASSERT_EQ(::chmod(QFile::encodeName(open).constData(), 0777), 0);
    PFAlsoRemoveBundles({QStringLiteral("~/open/One.app")});
    moveToTheEnd();
    EXPECT_EQ(deeds().filter(QStringLiteral("/bin/rm")), QStringList());
    EXPECT_TRUE(deeds().contains(copy()));
    EXPECT_TRUE(log().contains(
        QStringLiteral("ERR Leaving \"%1/One.app\" alone: others can change what is in \"%1\"").arg(open)));
}

TEST_F(MoveWithPassword, FailsWhereOthersCouldExchangeThePlaceItself) {
    const QString open = home.path(QStringLiteral("open"));
    home.write(QStringLiteral("open/x"), "x");
    ASSERT_EQ(::chmod(QFile::encodeName(open).constData(), 0777), 0);
    platform.workspace.localFolders = {open + QStringLiteral("/Applications")};
    move();
    EXPECT_EQ(deeds().filter(QStringLiteral("/bin/")), QStringList());
    EXPECT_EQ(lastAlert(), QStringLiteral("runModal [Quillmark] Could not move to Applications folder |  | OK"));
}

TEST_F(MoveWithPassword, RemovesWhatIsInAFolderThatIsNamedWithATilde) {
    putOldCopyOfAnAdministrator();
    PFAltDstBundleParentPath(QStringLiteral("~/local"));
    asStranger([this] { moveToTheEnd(); });
    EXPECT_TRUE(deeds().contains(remove(destination)));
}

TEST_F(MoveWithPassword, ComesBackWithoutAnAlertWhenTheUserCancels) {
    platform.authorization.rightsStatus = kAuthorizationCanceled;
    move();
    EXPECT_EQ(deeds(), QStringList({create(), rights(), free()}));
    EXPECT_EQ(log(), QStringList({QStringLiteral("nrm Moving myself to the Applications folder"),
                                  QStringLiteral("vrb Asking for authorisation..."),
                                  QStringLiteral("vrb Authorisation denied"),
                                  QStringLiteral("nrm Not moving because user canceled authorization")}));
    EXPECT_TRUE(exists(source));
}

TEST_F(MoveWithPassword, FailsForAnyOtherRefusal) {
    for (const qint32 status : {kAuthorizationDenied, kAuthorizationToolExecuteFailure, 1}) {
        platform.alerts.answers = {{0, false}};
        platform.transcript.clear();
        platform.authorization.rightsStatus = status;
        move();
        EXPECT_EQ(deeds(), QStringList({create(), rights(), free()}) + failureAlert());
        EXPECT_EQ(log().mid(log().size() - 2), QStringList({QStringLiteral("vrb Authorisation denied"), errorLine()}));
    }
}

TEST_F(MoveWithPassword, FailsWithoutAReference) {
    platform.authorization.createStatus = kAuthorizationDenied;
    move();
    EXPECT_EQ(deeds(), QStringList{create()} + failureAlert());
    EXPECT_EQ(log().last(), errorLine());
}

TEST_F(MoveWithPassword, AsksForNothingForABundleThatIsNotCalledApp) {
    setSource(QFileInfo(home.write(QStringLiteral("Downloads/Quillmark.APP/x"), "x")).path());
    move();
    EXPECT_EQ(deeds(), failureAlert());
    EXPECT_EQ(log().last(), errorLine());
}

TEST_F(MoveWithPassword, FailsWhenARemovalCannotBeStarted) {
    putOldCopyOfAnAdministrator();
    platform.transcript.failAt(QStringLiteral("AuthorizationExecuteWithPrivileges"), 1);
    asStranger([this] { move(); });
    EXPECT_EQ(deeds(), QStringList({create(), rights(), remove(destination), free()}) + failureAlert());
    EXPECT_EQ(log().last(), errorLine());
}

TEST_F(MoveWithPassword, FailsWhenARemovalCannotBeWaitedFor) {
    home.write(QStringLiteral("a/One.app/x"), "x");
    PFAlsoRemoveBundles({QStringLiteral("~/a/One.app")});
    platform.authorization.childStatuses = {std::nullopt};
    move();
    EXPECT_EQ(deeds(),
              QStringList({create(), rights(), remove(home.path(QStringLiteral("a/One.app"))), wait(), free()}) +
                  failureAlert());
}

TEST_F(MoveWithPassword, FailsWhenASignalEndsARemoval) {
    home.write(QStringLiteral("a/One.app/x"), "x");
    PFAlsoRemoveBundles({QStringLiteral("~/a/One.app")});
    platform.authorization.childStatuses = {kKilled};
    move();
    EXPECT_EQ(deeds().mid(3), QStringList({wait(), free()}) + failureAlert());
}

TEST_F(MoveWithPassword, FailsWhenTheCopyFails) {
    for (const std::optional<int> &status :
         {std::optional(kExitedWith1), std::optional(kKilled), std::optional<int>()}) {
        platform.alerts.answers = {{0, false}};
        platform.transcript.clear();
        platform.authorization.childStatuses = {status};
        move();
        EXPECT_EQ(deeds(), QStringList({create(), rights(), copy(), wait(), free()}) + failureAlert());
        EXPECT_EQ(log().last(), errorLine());
        EXPECT_TRUE(exists(source));
    }
}

TEST_F(MoveWithPassword, FailsWhenTheCopyCannotBeStarted) {
    platform.authorization.executeStatus = kAuthorizationToolExecuteFailure;
    move();
    EXPECT_EQ(deeds(), QStringList({create(), rights(), copy(), free()}) + failureAlert());
}

TEST_F(MoveWithPassword, CopiesOnOldSystemsToo) {
    platform.systemInfo.appKit = 824;
    moveToTheEnd();
    EXPECT_TRUE(deeds().contains(copy()));
    EXPECT_TRUE(
        callsThatBeginWith("start")[0].endsWith(QStringLiteral("sleep 0.1; done;  open '%1') &").arg(destination)));
}

/// \name From a disk image

TEST_F(MoveWithPassword, LeavesTheDiskImageAsItIsAndLetsGoOfIt) {
    setSource(QStringLiteral("/Volumes/Quillmark 1.14/Quillmark.app"));
    moveToTheEnd();
    EXPECT_EQ(deeds(),
              QStringList({create(), rights(), copy(), wait(), free(), relaunch(), programs(),
                           QStringLiteral("start /bin/sh -c (sleep 5 && hdiutil detach '/Volumes/Quillmark 1.14') &"),
                           programs(), QStringLiteral("terminate")}));
}

/// \name The Trash

TEST_F(MoveToApplications, TrashesOneItemByItsNameAndFolder) {
    EXPECT_TRUE(Trash(QStringLiteral("/a b/c.app"), platform.platform));
    EXPECT_EQ(platform.transcript.calls(), QStringList{QStringLiteral("recycle c.app in /a b")});
    EXPECT_TRUE(Trash(QStringLiteral("/c.app"), platform.platform));
    EXPECT_EQ(platform.transcript.calls().last(), QStringLiteral("recycle c.app in /"));
    EXPECT_EQ(log()[0], QStringLiteral("vrb Trashing \"/a b/c.app\"..."));
    EXPECT_EQ(log()[1], QStringLiteral("vrb Trashed \"/a b/c.app\""));
}

TEST_F(MoveToApplications, TellsWhatCouldNotBeTrashed) {
    _setStandardStreams(nullptr, nullptr);
    platform.transcript.failAt(QStringLiteral("recycle"), 1);
    EXPECT_FALSE(Trash(QStringLiteral("/a/c.app"), platform.platform));
    EXPECT_EQ(log(), QStringList({QStringLiteral("vrb Trashing \"/a/c.app\"..."),
                                  QStringLiteral("ERR Could not trash \"/a/c.app\"")}));
}

} // namespace
} // namespace quillmark

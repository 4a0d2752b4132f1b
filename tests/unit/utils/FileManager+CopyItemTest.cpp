#include "fakes/FakePlatform.h"
#include "platform/process/Descriptor.h"
#include "support/FileFacts.h"
#include "support/ProcessSettings.h"
#include "support/TemporaryHome.h"
#include "utils/FileManager.h"

#include <cerrno>
#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>

namespace quillmark {
namespace {

class CopyItem : public testing::Test {
protected:
    test::FakePlatform platform;
    test::TemporaryHome home;
    const FileManager files{};

    std::string at(const std::string &relative) const { return home.path(relative); }
    std::string write(const std::string &relative, const std::string &contents = "contents") const {
        return home.write(relative, contents);
    }
    void link(const char *text, const char *relative) const { ASSERT_EQ(::symlink(text, at(relative).c_str()), 0); }
    void changeMode(const char *relative, mode_t mode) const { ASSERT_EQ(::chmod(at(relative).c_str(), mode), 0); }
    mode_t modeOf(const char *relative) const { return test::permissionsOf(at(relative)); }
    std::string linkText(const char *relative) const { return std::filesystem::read_symlink(at(relative)); }
    bool isThere(const std::string &relative) const { return ::access(at(relative).c_str(), F_OK) == 0; }

    /// Copies "a" to "b".
    void copy() const { EXPECT_FALSE(files.copyItem(at("a"), at("b"))); }
    /// Does so, which has to fail; nothing may be left of it. \returns the error.
    Error failure() const {
        const auto error = files.copyItem(at("a"), at("b"));
        EXPECT_FALSE(isThere("b"));
        EXPECT_TRUE(error);
        return error.value_or(Error());
    }
    static std::string stopAt(const std::string &path) { return "Copying stopped at '" + path + "'"; }
};

TEST_F(CopyItem, CopiesAFileWithItsModeToWhereThereIsNothing) {
    write("a");
    changeMode("a", 0640);
    copy();
    EXPECT_EQ(test::readAll(at("b")), "contents");
    EXPECT_EQ(modeOf("b"), 0640U);
}

TEST_F(CopyItem, CopiesAFolderWithAllThatIsInIt) {
    write("a/Contents/MacOS/program", "x");
    write("a/Contents/empty", "");
    write("a/with blank\nand line", "y");
    home.makeFolder("a/none");
    const std::string longest(255, 'n');
    write("a/" + longest, "z");
    EXPECT_FALSE(files.copyItem(at("a/"), at("b/")));
    EXPECT_EQ(test::readAll(at("b/Contents/MacOS/program")), "x");
    EXPECT_EQ(test::readAll(at("b/Contents/empty")), "");
    EXPECT_EQ(test::readAll(at("b/with blank\nand line")), "y");
    EXPECT_EQ(test::readAll(at("b/" + longest)), "z");
    EXPECT_TRUE(isThere("b/none"));
    EXPECT_EQ(test::namesIn(at("b")).size(), 4U);
}

TEST_F(CopyItem, KeepsModesOfFilesAndFoldersWhateverTheMask) {
    write("a/secret");
    write("a/tool");
    write("a/locked/file");
    home.makeFolder("a/shared");
    changeMode("a/secret", 0400);
    changeMode("a/tool", 06755);
    changeMode("a/shared", 01777);
    changeMode("a/locked", 0500);
    const test::Mask mask(077);
    copy();
    EXPECT_EQ(modeOf("b/secret"), 0400U);
    EXPECT_EQ(modeOf("b/tool"), 06755U);
    EXPECT_EQ(modeOf("b/shared"), 01777U);
    EXPECT_EQ(modeOf("b/locked"), 0500U);
    EXPECT_EQ(modeOf("b"), modeOf("a"));
    changeMode("a/locked", 0700);
    changeMode("b/locked", 0700);
}

TEST_F(CopyItem, KeepsTimesToTheNanosecondOfFoldersAndLinksToo) {
    write("a/folder/file");
    link("nowhere", "a/link");
    const timespec accessed{1'000'000'000, 123'456'789};
    const timespec modified{1'234'567'890, 987'654'321};
    for (const char *path : {"a/folder/file", "a/folder", "a/link", "a"}) {
        test::setTimes(at(path), accessed, modified);
    }
    copy();
    const auto both = [](const timespec &time) { return std::pair(time.tv_sec, time.tv_nsec); };
    for (const char *path : {"b/folder/file", "b/folder", "b/link", "b"}) {
        EXPECT_EQ(both(test::statusOf(at(path)).st_mtim), both(modified)) << path;
    }
    EXPECT_EQ(both(test::statusOf(at("b/folder/file")).st_atim), both(accessed));
}

TEST_F(CopyItem, CopiesLinksAsTheyAreAndFollowsNone) {
    write("outside/file", "outside");
    home.makeFolder("a");
    link("../outside", "a/folder");
    link("../outside/file", "a/file");
    link("nowhere", "a/broken");
    copy();
    EXPECT_EQ(linkText("b/folder"), "../outside");
    EXPECT_EQ(linkText("b/file"), "../outside/file");
    EXPECT_EQ(linkText("b/broken"), "nowhere");
}

TEST_F(CopyItem, CopiesALinkItselfWhateverItLeadsTo) {
    home.makeFolder("folder");
    link("folder", "a");
    EXPECT_FALSE(files.copyItem(at("a/"), at("b")));
    EXPECT_EQ(linkText("b"), "folder");
}

TEST_F(CopyItem, KeepsHardLinksWithinAFolder) {
    write("a/first");
    ASSERT_EQ(::link(at("a/first").c_str(), at("a/second").c_str()), 0);
    home.makeFolder("a/below");
    ASSERT_EQ(::link(at("a/first").c_str(), at("a/below/x").c_str()), 0);
    ASSERT_EQ(::link(at("a/first").c_str(), at("outside").c_str()), 0);
    copy();
    const auto first = test::statusOf(at("b/first"));
    EXPECT_EQ(test::statusOf(at("b/second")).st_ino, first.st_ino);
    EXPECT_EQ(test::statusOf(at("b/below/x")).st_ino, first.st_ino);
    EXPECT_EQ(first.st_nlink, 3U);
    EXPECT_NE(test::statusOf(at("outside")).st_ino, first.st_ino);
}

TEST_F(CopyItem, KeepsExtendedAttributes) {
    // The temporary folder may be in memory, where not every kernel keeps any.
    const test::TemporaryHome built(std::filesystem::current_path());
    const std::string file = built.write("a/file", "contents");
    const std::string quarantine("0083;5f3c;Browser;\0x", 20);
    const std::string large(3000, 'x');
    ASSERT_TRUE(test::setAttribute(file, "user.com.apple.quarantine", quarantine))
        << "this needs a build folder whose file system keeps extended attributes";
    ASSERT_TRUE(test::setAttribute(built.path("a"), "user.large", large));
    ASSERT_TRUE(test::setAttribute(built.path("a"), "user.empty", ""));
    EXPECT_FALSE(files.copyItem(built.path("a"), built.path("b")));
    EXPECT_EQ(test::attribute(built.path("b/file"), "user.com.apple.quarantine"), quarantine);
    EXPECT_EQ(test::attribute(built.path("b"), "user.large"), large);
    EXPECT_EQ(test::attribute(built.path("b"), "user.empty"), "");
}

TEST_F(CopyItem, KeepsTheHolesOfAFile) {
    constexpr off_t kSize = off_t{64} << 20;
    write("a", "begin");
    Descriptor file(::open(at("a").c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_EQ(::pwrite(file.get(), "middle", 6, kSize / 2), 6);
    ASSERT_EQ(::ftruncate(file.get(), kSize), 0);
    file.close();
    copy();
    const auto copied = test::statusOf(at("b"));
    EXPECT_EQ(copied.st_size, kSize);
    EXPECT_LT(copied.st_blocks, 1024);
    EXPECT_EQ(test::readAll(at("b")), test::readAll(at("a")));
}

TEST_F(CopyItem, CopiesAFileThatIsNothingButAHole) {
    write("a", "");
    ASSERT_EQ(::truncate(at("a").c_str(), 1 << 20), 0);
    copy();
    EXPECT_EQ(test::readAll(at("b")), std::string(1 << 20, '\0'));
}

TEST_F(CopyItem, CopiesPipesAndSocketsWithoutOpeningThem) {
    home.makeFolder("a");
    ASSERT_EQ(::mkfifo(at("a/pipe").c_str(), 0640), 0);
    changeMode("a/pipe", 0622);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    at("a/socket").copy(address.sun_path, sizeof address.sun_path - 1);
    const int listening = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(listening, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    ::close(listening);
    copy();
    EXPECT_TRUE(S_ISFIFO(test::statusOf(at("b/pipe")).st_mode));
    EXPECT_EQ(modeOf("b/pipe"), 0622U);
    EXPECT_TRUE(S_ISSOCK(test::statusOf(at("b/socket")).st_mode));
}

TEST_F(CopyItem, LeavesWhatIsThereAlready) {
    write("file");
    write("folder/file");
    link("nowhere", "link");
    write("old", "old");
    home.makeFolder("empty");
    link("nowhere either", "dangling");
    for (const char *source : {"file", "folder", "link"}) {
        for (const char *target : {"old", "empty", "dangling"}) {
            const auto error = files.copyItem(at(source), at(target));
            ASSERT_TRUE(error);
            EXPECT_EQ(error->domain, kPosixErrorDomain);
            EXPECT_EQ(error->code, EEXIST);
            EXPECT_EQ(error->failureReason(), stopAt(at(target)));
        }
    }
    EXPECT_EQ(test::readAll(at("old")), "old");
    EXPECT_TRUE(std::filesystem::is_empty(at("empty")));
    EXPECT_EQ(linkText("dangling"), "nowhere either");
}

TEST_F(CopyItem, NamesWhatIsMissing) {
    platform.systemInfo.errorTexts.insert_or_assign(ENOENT, "No such file");
    const Error error = failure();
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_EQ(error.failureReason(), stopAt(at("a")));
    EXPECT_EQ(error.description(), "Posix error 2 (No such file)");
    write("a");
    EXPECT_EQ(files.copyItem(at("a"), at("none/b"))->failureReason(), stopAt(at("none/b")));
    EXPECT_EQ(files.copyItem("", at("b"))->code, ENOENT);
}

TEST_F(CopyItem, RefusesToCopyAFolderIntoItself) {
    write("a/file");
    EXPECT_EQ(files.copyItem(at("a"), at("a/b"))->code, EINVAL);
    EXPECT_EQ(test::namesIn(at("a")), std::set<std::string>{"file"});
}

TEST_F(CopyItem, OfATreeThatIsTooDeepLeavesNothing) {
    std::string folder = "a";
    for (int level = 0; level < 100; ++level) {
        folder += "/a";
    }
    home.makeFolder(folder);
    {
        const test::Limit few(RLIMIT_NOFILE, 120);
        EXPECT_EQ(failure().code, EMFILE);
    }
    copy();
    EXPECT_TRUE(isThere('b' + folder.substr(1)));
}

TEST_F(CopyItem, ThatFailsLaterRemovesFoldersThatForbidIt) {
    write("a/1locked/file");
    changeMode("a/1locked", 0500);
    write("a/2large", std::string(100'000, 'x'));
    const test::Limit small(RLIMIT_FSIZE, 1000);
    const Error error = failure();
    EXPECT_EQ(error.code, EFBIG);
    EXPECT_EQ(error.failureReason(), stopAt(at("b/2large")));
    changeMode("a/1locked", 0700);
}

} // namespace
} // namespace quillmark

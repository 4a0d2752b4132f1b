#include "utils/FileManager.h"
#include "support/FileFacts.h"
#include "support/TemporaryHome.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace quillmark {
namespace {

class CurrentThreadFileManager : public testing::Test {
protected:
    const test::TemporaryHome home;
    const FileManager files{};
};

TEST_F(CurrentThreadFileManager, IsTheThreadsOwnAndAlwaysTheSame) {
    const FileManager *mine = &__QMCurrentThreadFileManager();
    EXPECT_EQ(&__QMCurrentThreadFileManager(), mine);
    const FileManager *other = nullptr;
    std::thread([&other] { other = &__QMCurrentThreadFileManager(); }).join();
    EXPECT_NE(other, mine);
}

TEST_F(CurrentThreadFileManager, FollowsLinksWhenItLooksForFiles) {
    const std::string file = home.write("a", "");
    EXPECT_TRUE(files.fileExists(file));
    home.link("link", file);
    EXPECT_TRUE(files.fileExists(home.path("link")));
    ASSERT_TRUE(std::filesystem::remove(file));
    EXPECT_FALSE(files.fileExists(home.path("link")));
}

TEST_F(CurrentThreadFileManager, TellsAFilesOwnerAndMode) {
    const auto owned = files.attributes("/usr/bin/passwd");
    ASSERT_TRUE(owned);
    EXPECT_EQ(owned->ownerAccountName, "root");
    EXPECT_EQ(owned->posixPermissions, 04755U);
    const std::string file = home.write("a", "");
    for (const mode_t mode : {0755U, 0775U, 0U, 06711U, 01777U}) {
        ASSERT_EQ(::chmod(file.c_str(), mode), 0);
        EXPECT_EQ(files.attributes(file)->posixPermissions, mode);
    }
}

TEST_F(CurrentThreadFileManager, TellsAFoldersOwnerAndMode) {
    const std::string folder = home.makeFolder("a");
    ASSERT_EQ(::chmod(folder.c_str(), 01777), 0);
    EXPECT_EQ(files.attributes(folder)->posixPermissions, 01777U);
    EXPECT_EQ(files.attributes("/usr/bin")->ownerAccountName, "root");
}

TEST_F(CurrentThreadFileManager, TellsTheAttributesOfALinkItselfAndNothingOfWhatIsNotThere) {
    const std::string link = home.link("link", "/usr/bin/passwd");
    EXPECT_EQ(files.attributes(link)->posixPermissions, 0777U);
    EXPECT_FALSE(files.attributes(home.path("none")));
    EXPECT_FALSE(files.attributes(""));
    EXPECT_FALSE(files.attributes("/usr/bin/passwd/x"));
}

TEST_F(CurrentThreadFileManager, ANumberThatNoAccountHasIsAnOwnerWithoutAName) {
    const std::string file = home.write("a", "");
    constexpr uid_t kNobodysNumber = 3'999'999'999;
    // Only the administrator can give files away; others see at least that the file is their own.
    const bool isGiven = ::chown(file.c_str(), kNobodysNumber, static_cast<gid_t>(-1)) == 0;
    EXPECT_EQ(files.attributes(file)->ownerAccountName.empty(), isGiven);
}

/// A folder of this user's in which others may do what the mode says.
class OthersFolders : public CurrentThreadFileManager {
protected:
    std::string makeFolder(const char *name, mode_t mode) {
        const std::string path = home.path(name);
        EXPECT_EQ(::mkdir(path.c_str(), S_IRWXU), 0);
        EXPECT_EQ(::chmod(path.c_str(), mode), 0);
        return path;
    }
};

TEST_F(OthersFolders, AreThoseInWhichOthersCanExchangeThings) {
    const std::string folder = makeFolder("open", 0777);
    EXPECT_EQ(files.folderOfOthers(folder + "/a/b"), folder);
    EXPECT_EQ(files.folderOfOthers(folder), std::nullopt); // what may be done in it is another matter
    EXPECT_EQ(files.folderOfOthers(home.path("x")), std::nullopt);
}

TEST_F(OthersFolders, AreNoneWhereEachKeepsHisOwnAndTheNextThingIsThere) {
    const std::string folder = makeFolder("shared", 01777);
    home.write("shared/mine", "x");
    EXPECT_EQ(files.folderOfOthers(folder + "/mine"), std::nullopt);
    EXPECT_EQ(files.folderOfOthers(folder + "/not yet"), folder);
}

TEST_F(OthersFolders, AreLinksToo) {
    const std::string folder = makeFolder("folder", 0755);
    const std::string link = home.link("link", folder);
    EXPECT_EQ(files.folderOfOthers(link + "/a"), link);
    EXPECT_EQ(files.folderOfOthers(link), std::nullopt);
}

TEST_F(CurrentThreadFileManager, TrustsPlainFilesOfThisUsersOfASensibleSize) {
    const std::string file = home.write("file", "12345");
    EXPECT_TRUE(files.isTrustedFile(file, 5));
    EXPECT_FALSE(files.isTrustedFile(file, 4));
    const std::string link = home.link("link", file);
    EXPECT_FALSE(files.isTrustedFile(link, 5));
    EXPECT_FALSE(files.isTrustedFile(home.path(), 5));
    EXPECT_FALSE(files.isTrustedFile(home.path("none"), 5));
}

TEST_F(CurrentThreadFileManager, TellsWhyAFolderCannotBeCreated) {
    home.write("file", "");
    EXPECT_EQ(files.createFolder(home.path("a/b"), 0700), 0);
    EXPECT_EQ(files.createFolder(home.path("a/b"), 0700), 0);
    EXPECT_EQ(files.createFolder(home.path("file/b"), 0700), ENOTDIR);
    EXPECT_EQ(test::statusOf(home.path("a")).st_mode & S_IROTH, 0U);
}

} // namespace
} // namespace quillmark

#include "platform/linux/desktop/UserDirectories.h"

#include "support/TemporaryHome.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace quillmark {
namespace {

/// The list of the user's folders, in a home folder of the test's own.
class UserDirectories : public testing::Test {
protected:
    UserDirectories() {
        if (const char *folder = std::getenv("XDG_CONFIG_HOME")) {
            m_configurationFolder = folder;
        }
        ::unsetenv("XDG_CONFIG_HOME");
    }
    ~UserDirectories() override {
        m_configurationFolder ? ::setenv("XDG_CONFIG_HOME", m_configurationFolder->c_str(), 1)
                              : ::unsetenv("XDG_CONFIG_HOME");
    }
    /// The Downloads folder by a list of these lines.
    std::optional<std::string> downloadsIn(const std::string &lines) {
        home.write(".config/user-dirs.dirs", lines);
        return downloadsFolderOfDesktop();
    }

    test::TemporaryHome home;

private:
    std::optional<std::string> m_configurationFolder;
};

TEST_F(UserDirectories, TellNothingWithoutTheirList) {
    EXPECT_EQ(downloadsFolderOfDesktop(), std::nullopt);
    home.makeFolder(".config/user-dirs.dirs");
    EXPECT_EQ(downloadsFolderOfDesktop(), std::nullopt);
}

TEST_F(UserDirectories, TellNothingWithoutALineForDownloads) {
    for (const char *lines : {"", "\n", "XDG_DESKTOP_DIR=\"$HOME/Desktop\"\n", "# XDG_DOWNLOAD_DIR=\"/d\"\n",
                              " XDG_DOWNLOAD_DIR=\"/d\"\n", "XDG_DOWNLOAD_DIR \"/d\"\n", "OLD_XDG_DOWNLOAD_DIR=/d\n"}) {
        EXPECT_EQ(downloadsIn(lines), std::nullopt) << lines;
    }
}

TEST_F(UserDirectories, AreTakenFromAmongTheOthers) {
    EXPECT_EQ(downloadsIn("# written by a program\n"
                          "XDG_DESKTOP_DIR=\"$HOME/Desktop\"\n"
                          "XDG_DOWNLOAD_DIR=\"$HOME/Herunter geladenes ü\"\n"
                          "XDG_MUSIC_DIR=\"$HOME/Music\"\n"),
              home.path("Herunter geladenes ü"));
}

TEST_F(UserDirectories, MayStandInQuotationMarksOrNot) {
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=\"/a b\"\n"), "/a b");
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=/a b\n"), "/a b");
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=/a"), "/a"); // a last line without an end
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=\"/a\n"), "\"/a");
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=\n"), "");
}

TEST_F(UserDirectories, MayBeginWithTheHomeFolder) {
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=\"$HOME/Downloads\"\n"), home.path("Downloads"));
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=$HOME/Downloads\n"), home.path("Downloads"));
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=\"$HOME\"\n"), home.path());
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=\"/a/$HOME\"\n"), "/a/$HOME");
}

TEST_F(UserDirectories, LoseASlashAtTheEnd) {
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=\"$HOME/\"\n"), home.path());
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=\"/a/b/\"\n"), "/a/b");
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=\"/\"\n"), "/");
}

TEST_F(UserDirectories, AreThoseOfTheLastLine) {
    EXPECT_EQ(downloadsIn("XDG_DOWNLOAD_DIR=\"/a\"\nXDG_MUSIC_DIR=\"/b\"\nXDG_DOWNLOAD_DIR=\"/c\"\n"), "/c");
}

TEST_F(UserDirectories, AreReadFromTheFolderForConfigurations) {
    home.write(".config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"/usual\"\n");
    home.write("other/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"/other\"\n");
    ::setenv("XDG_CONFIG_HOME", home.path("other").c_str(), 1);
    EXPECT_EQ(downloadsFolderOfDesktop(), "/other");
    ::setenv("XDG_CONFIG_HOME", home.path("none").c_str(), 1);
    EXPECT_EQ(downloadsFolderOfDesktop(), std::nullopt);
}

TEST_F(UserDirectories, PassOverARelativeFolderForConfigurations) {
    home.write(".config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"/usual\"\n");
    home.write("other/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"/other\"\n");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(home.path());
    for (const char *folder : {"other", "./other", ""}) {
        ::setenv("XDG_CONFIG_HOME", folder, 1);
        EXPECT_EQ(downloadsFolderOfDesktop(), "/usual") << folder;
    }
    std::filesystem::current_path(before);
}

} // namespace
} // namespace quillmark

#include "fakes/FakeClock.h"
#include "fakes/FakePropertyList.h"
#include "fakes/FakeSessionBus.h"
#include "platform/linux/desktop/LinuxWorkspace.h"
#include "support/FileFacts.h"
#include "support/Lines.h"
#include "support/TemporaryHome.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>

namespace quillmark {
namespace {

using Paths = std::vector<std::string>;

class TrashTest : public testing::Test {
protected:
    TrashTest() { ::unsetenv("XDG_DATA_HOME"); }

    test::TemporaryHome home;
    test::FakePropertyList propertyList;
    test::FakeSessionBus bus;
    test::FakeClock clock;
    LinuxWorkspace workspace{propertyList, bus, clock};

    std::string trash(const std::string &below) const { return home.path(".local/share/Trash/" + below); }
    bool recycle(const std::string &name) { return recycle(name, home.path()); }
    bool recycle(const std::string &name, const std::string &folder) { return workspace.recycle(name, folder); }
    std::set<std::string> trashed() const { return test::namesIn(trash("files")); }
    std::set<std::string> infos() const { return test::namesIn(trash("info")); }
    bool isThere(const std::string &name) const { return test::namesIn(home.path()).contains(name); }
    /// Where the info file says that the item was.
    std::string pathIn(const std::string &name) const {
        constexpr std::string_view kBegin = "[Trash Info]\nPath=";
        const std::string info = test::readAll(trash("info/" + name));
        EXPECT_EQ(std::ranges::count(info, '\n'), 3) << name;
        EXPECT_TRUE(info.starts_with(kBegin));
        std::string path;
        for (size_t i = kBegin.size(); i < info.size() && info[i] != '\n'; ++i) {
            if (info[i] == '%') {
                path += static_cast<char>(std::stoi(info.substr(i + 1, 2), nullptr, 16));
                i += 2;
            } else {
                path += info[i];
            }
        }
        return path;
    }
};

TEST_F(TrashTest, TakesABundleWithAllThatIsInIt) {
    home.write("A.app/Contents/MacOS/A", "x");
    EXPECT_TRUE(recycle("A.app"));
    EXPECT_FALSE(isThere("A.app"));
    EXPECT_EQ(test::readAll(trash("files/A.app/Contents/MacOS/A")), "x");
    EXPECT_EQ(infos(), std::set<std::string>{"A.app.trashinfo"});
}

TEST_F(TrashTest, NotesWhereAndWhenAnItemWasTrashed) {
    home.write("a", "");
    const std::time_t before = std::time(nullptr) - 1;
    ASSERT_TRUE(recycle("a"));
    EXPECT_EQ(pathIn("a.trashinfo"), home.path("a"));
    const std::string info = test::readAll(trash("info/a.trashinfo"));
    std::tm date{};
    date.tm_isdst = -1; // not told
    const char *thirdLine = info.c_str() + info.find('\n', info.find('\n') + 1) + 1;
    ASSERT_STREQ(::strptime(thirdLine, "DeletionDate=%Y-%m-%dT%H:%M:%S", &date), "\n");
    const std::time_t trashedAt = std::mktime(&date);
    EXPECT_GE(trashedAt, before);
    EXPECT_LE(trashedAt, std::time(nullptr));
}

TEST_F(TrashTest, NotesNamesOfAnyBytes) {
    for (const std::string name : {"with blank", "100%", "line\nfeed", "\xc3\xa4", "a=b;[c]#", ".hidden"}) {
        home.write(name, "");
        EXPECT_TRUE(recycle(name));
        EXPECT_EQ(pathIn(name + ".trashinfo"), home.path(name)) << name;
    }
}

TEST_F(TrashTest, IsForTheUserAlone) {
    home.write("a", "");
    ASSERT_TRUE(recycle("a"));
    for (const char *folder : {"", "files", "info"}) {
        EXPECT_EQ(test::permissionsOf(trash(folder)), 0700U) << folder;
    }
    EXPECT_EQ(test::permissionsOf(trash("info/a.trashinfo")), 0600U);
}

TEST_F(TrashTest, KeepsItemsOfTheSameNameApart) {
    for (int i = 0; i < 3; ++i) {
        home.write("a", std::to_string(i));
        EXPECT_TRUE(recycle("a"));
    }
    EXPECT_EQ(trashed(), (std::set<std::string>{"a", "a.2", "a.3"}));
    EXPECT_EQ(test::readAll(trash("files/a.3")), "2");
    EXPECT_EQ(pathIn("a.3.trashinfo"), home.path("a"));
}

TEST_F(TrashTest, LeavesItemsThatNobodyKnowsTheOriginOf) {
    home.write(".local/share/Trash/files/a", "older");
    home.write("a", "newer");
    EXPECT_TRUE(recycle("a"));
    EXPECT_EQ(test::readAll(trash("files/a")), "older");
    EXPECT_EQ(infos(), std::set<std::string>{"a.2.trashinfo"});
}

TEST_F(TrashTest, ShortensNamesThatAreTooLongForAnInfoFileBetweenCharacters) {
    const auto umlauts = [](size_t count) { return test::repeated("ä", count); };
    const std::string name = umlauts(127) + 'x'; // 255 bytes
    for (int i = 0; i < 2; ++i) {
        home.write(name, "");
        EXPECT_TRUE(recycle(name));
    }
    const std::string longest = umlauts(122); // with ".trashinfo" 254 bytes
    EXPECT_EQ(trashed(), (std::set<std::string>{umlauts(121) + ".2", longest}));
    EXPECT_EQ(pathIn(longest + ".trashinfo"), home.path(name));
}

TEST_F(TrashTest, TakesALinkAndNotWhatItLeadsTo) {
    home.write("folder/file", "x");
    std::filesystem::create_symlink("folder", home.path("link"));
    std::filesystem::create_symlink("nowhere", home.path("broken"));
    EXPECT_TRUE(recycle("link"));
    EXPECT_TRUE(recycle("broken"));
    EXPECT_EQ(trashed(), (std::set<std::string>{"broken", "link"}));
    EXPECT_EQ(test::readAll(home.path("folder/file")), "x");
}

TEST_F(TrashTest, NotesThePlaceItselfWhenTheFolderIsALink) {
    home.write("real/a", "");
    std::filesystem::create_symlink(home.path("real"), home.path("link"));
    EXPECT_TRUE(recycle("a", home.path("link")));
    EXPECT_EQ(pathIn("a.trashinfo"), home.path("real/a"));
}

TEST_F(TrashTest, IsWhereTheDesktopKeepsItsData) {
    home.write("a", "");
    home.write("b", "");
    ::setenv("XDG_DATA_HOME", home.path("data").c_str(), 1);
    EXPECT_TRUE(recycle("a"));
    EXPECT_EQ(test::namesIn(home.path("data/Trash/files")), std::set<std::string>{"a"});
    ::setenv("XDG_DATA_HOME", "data", 1); // relative: it does not count
    EXPECT_TRUE(recycle("b"));
    EXPECT_EQ(trashed(), std::set<std::string>{"b"});
    ::unsetenv("XDG_DATA_HOME");
}

TEST_F(TrashTest, RefusesWhatIsNoNameOfAnItem) {
    home.write("folder/a", "");
    for (const char *name : {"", ".", "..", "folder/a", "/", "none"}) {
        EXPECT_FALSE(recycle(name)) << name;
    }
    EXPECT_FALSE(recycle("a", home.path("none")));
    EXPECT_FALSE(recycle("a", ""));
    EXPECT_EQ(infos(), std::set<std::string>());
    EXPECT_TRUE(std::filesystem::exists(home.path("folder/a")));
}

TEST_F(TrashTest, DoesNotTakeTheFolderThatItIsIn) {
    home.write(".local/share/a", "");
    EXPECT_FALSE(recycle(".local"));
    EXPECT_EQ(infos(), std::set<std::string>());
    EXPECT_TRUE(std::filesystem::exists(home.path(".local/share/a")));
}

TEST_F(TrashTest, WhoseFoldersAreLinksIsNotUsed) {
    for (const char *folder : {"files", "info"}) {
        home.write("a", "");
        home.makeFolder("elsewhere");
        home.makeFolder(".local/share/Trash");
        std::filesystem::create_symlink(home.path("elsewhere"), trash(folder));
        EXPECT_FALSE(recycle("a"));
        EXPECT_TRUE(isThere("a"));
        EXPECT_EQ(test::namesIn(home.path("elsewhere")), std::set<std::string>());
        ASSERT_GT(std::filesystem::remove_all(trash("")), 0U);
    }
}

TEST_F(TrashTest, ThatCannotBeMadeTakesNothing) {
    home.write(".local", "in the way");
    home.write("a", "");
    EXPECT_FALSE(recycle("a"));
    EXPECT_TRUE(isThere("a"));
}

TEST_F(TrashTest, MayBeLedElsewhereByItsOwner) {
    home.makeFolder("elsewhere");
    home.makeFolder(".local/share");
    std::filesystem::create_symlink(home.path("elsewhere"), home.path(".local/share/Trash"));
    home.write("a", "");
    EXPECT_TRUE(recycle("a"));
    EXPECT_EQ(test::namesIn(home.path("elsewhere/files")), std::set<std::string>{"a"});
}

TEST_F(TrashTest, DownloadsFoldersAreTheDesktopsAndTheUsualOne) {
    const std::string usual = home.path("Downloads");
    const auto foldersFor = [&](const std::string &setting) {
        home.write(".config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"" + setting + "\"\n");
        return workspace.downloadsFolders();
    };
    ::unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(workspace.downloadsFolders(), Paths{usual});
    EXPECT_EQ(foldersFor("$HOME/Downloads"), Paths{usual});
    EXPECT_EQ(foldersFor("$HOME/Heruntergeladen"), (Paths{home.path("Heruntergeladen"), usual}));
    EXPECT_EQ(foldersFor("/data/in"), (Paths{"/data/in", usual}));
    EXPECT_EQ(foldersFor("$HOME/"), Paths{usual});
    EXPECT_EQ(foldersFor("$HOME"), Paths{usual});
}

} // namespace
} // namespace quillmark

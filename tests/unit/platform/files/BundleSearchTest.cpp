#include "platform/files/BundleSearch.h"
#include "fakes/FakePropertyList.h"
#include "fakes/FakeWorkspace.h"
#include "launcher/StaleBundles.h"
#include "support/TemporaryHome.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {
namespace {

constexpr const char *kWanted = "com.quillmark.quillmarkclient";

class BundleSearchTest : public testing::Test {
protected:
    BundleSearchTest() {
        for (const char *identifier : {"com.quillmark.quillmarkclient", "com.quillmark.QuillmarkClient", "com.other"}) {
            propertyList.documents[identifier] = Dictionary{{"CFBundleIdentifier", identifier}};
        }
        propertyList.documents["number"] = Dictionary{{"CFBundleIdentifier", 5}};
        propertyList.documents["list"] = List{kWanted};
    }
    /// Makes a bundle whose Info.plist holds the given document.
    std::string bundle(const std::string &relative, const std::string &document = "com.quillmark.quillmarkclient") {
        home.write(relative + "/Contents/Info.plist", document);
        return home.path(relative);
    }
    void link(const std::string &target, const std::string &relative) {
        ASSERT_EQ(::symlink(target.c_str(), home.path(relative).c_str()), 0);
    }
    std::vector<std::string> found() {
        std::optional<std::vector<std::string>> paths;
        pathsForIdent(kWanted, home.path(), &paths, propertyList);
        return paths.value_or(std::vector<std::string>());
    }

    test::TemporaryHome home;
    test::FakePropertyList propertyList;
};

TEST_F(BundleSearchTest, ABundleWithTheIdentifierIsFoundInNestedFolders) {
    const std::string nested = bundle("Tools/Old/Q.app");
    const std::string top = bundle("A.app");
    EXPECT_EQ(found(), (std::vector<std::string>{top, nested}));
}

TEST_F(BundleSearchTest, TheIdentifierMustMatchExactly) {
    bundle("A.app", "com.quillmark.QuillmarkClient");
    bundle("B.app", "com.other");
    bundle("C.app", "number");
    bundle("D.app", "list");
    bundle("E.app", "malformed");
    EXPECT_EQ(found(), std::vector<std::string>());
}

TEST_F(BundleSearchTest, TheSuffixMayHaveAnyLetterCase) {
    const std::string upper = bundle("Foo.APP");
    const std::string mixed = bundle("Goo.aPp");
    EXPECT_EQ(found(), (std::vector<std::string>{upper, mixed}));
}

TEST_F(BundleSearchTest, BundlesAreNeverDescendedInto) {
    bundle("A.app", "com.other");
    bundle("A.app/Contents/Resources/Inner.app");
    EXPECT_EQ(found(), std::vector<std::string>());
}

TEST_F(BundleSearchTest, ANameThatHoldsTheSuffixEarlierIsAFolderLikeAnyOther) {
    const std::string a = bundle("a.app.old/Q.app"); // deliberate: neither a.app.old
    const std::string x = bundle("x.app.app/Q.app"); // nor x.app.app is a bundle
    bundle("y.app.app");
    EXPECT_EQ(found(), (std::vector<std::string>{a, x}));
}

TEST_F(BundleSearchTest, TheSuffixAloneIsABundlesName) {
    const std::string bare = bundle(".app");
    EXPECT_EQ(found(), std::vector{bare});
}

TEST_F(BundleSearchTest, HiddenFoldersAreSearched) {
    const std::string hidden = bundle(".hidden/Q.app");
    EXPECT_EQ(found(), std::vector{hidden});
}

TEST_F(BundleSearchTest, LinksToFoldersAreFollowed) {
    const std::string real = bundle("real/Q.app");
    link(home.path("real"), "link");
    EXPECT_EQ(found(), (std::vector<std::string>{home.path("link/Q.app"), real}));
}

TEST_F(BundleSearchTest, ALinkedBundleIsFoundUnderTheLinksName) {
    bundle("z.app.kept/Q.app");
    link(home.path("z.app.kept/Q.app"), "L.app");
    const std::vector<std::string> paths = found();
    EXPECT_NE(std::count(paths.begin(), paths.end(), home.path("L.app")), 0);
}

TEST_F(BundleSearchTest, ACycleOfLinksEndsAtTheSystemsLimit) {
    const std::string q = bundle("Q.app");
    link(".", "loop");
    const std::vector<std::string> paths = found();
    EXPECT_EQ(paths.front(), q);
    EXPECT_GT(paths.size(), 10U); // deliberate: nothing guards against cycles
    EXPECT_LT(paths.size(), 100U);
}

TEST_F(BundleSearchTest, FilesDanglingLinksAndPipesAreNoFolders) {
    home.write("file", "x");
    home.write("F.app", "a file with a bundle's name");
    link(home.path("nowhere"), "dangling");
    ASSERT_EQ(::mkfifo(home.path("pipe").c_str(), 0600), 0);
    home.makeFolder("P.app/Contents");
    ASSERT_EQ(::mkfifo(home.path("P.app/Contents/Info.plist").c_str(), 0600), 0);
    EXPECT_EQ(found(), std::vector<std::string>());
}

TEST_F(BundleSearchTest, AFolderThatCannotBeReadIsPassedOver) {
    std::optional<std::vector<std::string>> paths;
    pathsForIdent(kWanted, home.path("missing"), &paths, propertyList);
    pathsForIdent(kWanted, home.write("file", "x"), &paths, propertyList);
    EXPECT_FALSE(paths.has_value());
}

TEST_F(BundleSearchTest, FoldersDeeperThanAPathMayBeLongAreLeftOut) {
    const std::string name(200, 'd');
    ASSERT_EQ(::chdir(home.path().c_str()), 0);
    for (int depth = 0; depth < 30; ++depth) { // 6,000 characters
        ASSERT_EQ(::mkdir(name.c_str(), 0755), 0);
        ASSERT_EQ(::chdir(name.c_str()), 0);
    }
    ASSERT_EQ(::chdir("/"), 0);
    EXPECT_EQ(found(), std::vector<std::string>());
    ASSERT_EQ(::system(("rm -rf '" + home.path() + "'/d*").c_str()), 0); // NOLINT
}

TEST_F(BundleSearchTest, NoListIsMadeWhenNothingIsFound) {
    std::optional<std::vector<std::string>> paths;
    pathsForIdent(kWanted, home.path(), &paths, propertyList);
    EXPECT_FALSE(paths.has_value());
}

TEST_F(BundleSearchTest, AGivenListIsAddedTo) {
    const std::string q = bundle("Q.app");
    std::optional paths = std::vector<std::string>{"before"};
    pathsForIdent(kWanted, home.path() + '/', &paths, propertyList);
    EXPECT_EQ(*paths, (std::vector<std::string>{"before", q}));
}

TEST_F(BundleSearchTest, WithoutAPlaceForThePathsNothingHappens) {
    bundle("Q.app");
    pathsForIdent(kWanted, home.path(), nullptr, propertyList);
}

class StaleBundles : public BundleSearchTest {
protected:
    StaleBundles() {
        workspace.userFolders = {home.makeFolder("user")};
        workspace.localFolders = {home.makeFolder("local")};
    }
    std::vector<std::string> stale() { return staleClientBundles("P", workspace, propertyList); }
    /// The fixed paths behind others.
    static std::vector<std::string> fixedPaths(std::vector<std::string> paths = {}) {
        for (const char *name : {"P", "P Client"}) {
            for (const char *folder : {"~/Applications/", "/Applications/"}) {
                for (const char *suffix : {"", "-1", "-2", "-3", "-4", "-5"}) {
                    paths.push_back(std::string(folder) + name + suffix + ".app");
                }
            }
        }
        return paths;
    }

    test::Transcript transcript;
    test::FakeWorkspace workspace{transcript};
};

TEST_F(StaleBundles, WithoutAnyCopyTheyAreThe24FixedPathsInOrder) {
    EXPECT_EQ(stale(), fixedPaths());
    EXPECT_EQ(stale().size(), 24U);
    EXPECT_EQ(stale()[6], "/Applications/P.app");
    EXPECT_EQ(stale()[23], "/Applications/P Client-5.app");
}

TEST_F(StaleBundles, TheUsersFolderIsSearchedBeforeTheComputers) {
    const std::string local = bundle("local/A.app");
    const std::string user = bundle("user/Z.app");
    EXPECT_EQ(stale(), fixedPaths({user, local}));
    EXPECT_EQ(transcript.calls(), (std::vector<std::string>{"applicationsFolders user", "applicationsFolders local"}));
}

TEST_F(StaleBundles, TheLastFolderOfADomainIsTheOneSearched) {
    bundle("first/A.app");
    workspace.userFolders.insert(workspace.userFolders.begin(), home.path("first"));
    EXPECT_EQ(stale(), fixedPaths());
}

TEST_F(StaleBundles, ADomainWithoutFoldersIsPassedOver) {
    workspace.userFolders.clear();
    workspace.localFolders.clear();
    EXPECT_EQ(stale(), fixedPaths());
}

TEST_F(StaleBundles, ABundleAtAFixedPathIsListedTwice) {
    // Deliberate: duplicates stay. The second domain names the folder of the first one again.
    const std::string twice = bundle("user/P.app");
    workspace.localFolders = workspace.userFolders;
    EXPECT_EQ(stale(), fixedPaths({twice, twice}));
}

} // namespace
} // namespace quillmark

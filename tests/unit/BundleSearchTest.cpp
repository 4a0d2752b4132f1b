#include "platform/BundleSearch.h"
#include "fakes/FakePropertyList.h"
#include "fakes/FakeWorkspace.h"
#include "launcher/StaleBundles.h"
#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"

#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {
namespace {

const QString kWanted = QStringLiteral("com.quillmark.quillmarkclient");

class BundleSearchTest : public testing::Test {
protected:
    BundleSearchTest() {
        for (const char *identifier : {"com.quillmark.quillmarkclient", "com.quillmark.QuillmarkClient", "com.other"}) {
            propertyList.documents.insert(
                identifier, QVariantMap{{QStringLiteral("CFBundleIdentifier"), QString::fromLatin1(identifier)}});
        }
        propertyList.documents.insert("number", QVariantMap{{QStringLiteral("CFBundleIdentifier"), 5}});
        propertyList.documents.insert("list", QVariantList{kWanted});
    }
    /// Makes a bundle whose Info.plist holds the given document.
    QString bundle(const QString &relative, const QByteArray &document = "com.quillmark.quillmarkclient") {
        home.write(relative + QStringLiteral("/Contents/Info.plist"), document);
        return home.path(relative);
    }
    void link(const QString &target, const QString &relative) {
        ASSERT_EQ(::symlink(QFile::encodeName(target).constData(), QFile::encodeName(home.path(relative)).constData()),
                  0);
    }
    QStringList found() {
        std::optional<QStringList> paths;
        pathsForIdent(kWanted, home.path(), &paths, propertyList);
        return paths.value_or(QStringList());
    }

    test::TemporaryHome home;
    test::FakePropertyList propertyList;
};

TEST_F(BundleSearchTest, ABundleWithTheIdentifierIsFoundInNestedFolders) {
    const QString nested = bundle(QStringLiteral("Tools/Old/Q.app"));
    const QString top = bundle(QStringLiteral("A.app"));
    EXPECT_EQ(found(), QStringList({top, nested}));
}

TEST_F(BundleSearchTest, TheIdentifierMustMatchExactly) {
    bundle(QStringLiteral("A.app"), "com.quillmark.QuillmarkClient");
    bundle(QStringLiteral("B.app"), "com.other");
    bundle(QStringLiteral("C.app"), "number");
    bundle(QStringLiteral("D.app"), "list");
    bundle(QStringLiteral("E.app"), "malformed");
    EXPECT_EQ(found(), QStringList());
}

TEST_F(BundleSearchTest, TheSuffixMayHaveAnyLetterCase) {
    const QString upper = bundle(QStringLiteral("Foo.APP"));
    const QString mixed = bundle(QStringLiteral("Goo.aPp"));
    EXPECT_EQ(found(), QStringList({upper, mixed}));
}

TEST_F(BundleSearchTest, BundlesAreNeverDescendedInto) {
    bundle(QStringLiteral("A.app"), "com.other");
    bundle(QStringLiteral("A.app/Contents/Resources/Inner.app"));
    EXPECT_EQ(found(), QStringList());
}

TEST_F(BundleSearchTest, ANameThatHoldsTheSuffixEarlierIsAFolderLikeAnyOther) {
    const QString a = bundle(QStringLiteral("a.app.old/Q.app")); // deliberate: neither a.app.old
    const QString x = bundle(QStringLiteral("x.app.app/Q.app")); // nor x.app.app is a bundle
    bundle(QStringLiteral("y.app.app"));
    EXPECT_EQ(found(), QStringList({a, x}));
}

TEST_F(BundleSearchTest, TheSuffixAloneIsABundlesName) {
    const QString bare = bundle(QStringLiteral(".app"));
    EXPECT_EQ(found(), QStringList({bare}));
}

TEST_F(BundleSearchTest, HiddenFoldersAreSearched) {
    const QString hidden = bundle(QStringLiteral(".hidden/Q.app"));
    EXPECT_EQ(found(), QStringList({hidden}));
}

TEST_F(BundleSearchTest, LinksToFoldersAreFollowed) {
    const QString real = bundle(QStringLiteral("real/Q.app"));
    link(home.path(QStringLiteral("real")), QStringLiteral("link"));
    EXPECT_EQ(found(), QStringList({home.path(QStringLiteral("link/Q.app")), real}));
}

TEST_F(BundleSearchTest, ALinkedBundleIsFoundUnderTheLinksName) {
    bundle(QStringLiteral("z.app.kept/Q.app"));
    link(home.path(QStringLiteral("z.app.kept/Q.app")), QStringLiteral("L.app"));
    EXPECT_TRUE(found().contains(home.path(QStringLiteral("L.app"))));
}

TEST_F(BundleSearchTest, ACycleOfLinksEndsAtTheSystemsLimit) {
    const QString q = bundle(QStringLiteral("Q.app"));
    link(QStringLiteral("."), QStringLiteral("loop"));
    const QStringList paths = found();
    EXPECT_EQ(paths.first(), q);
    EXPECT_GT(paths.size(), 10); // deliberate: nothing guards against cycles
    EXPECT_LT(paths.size(), 100);
}

TEST_F(BundleSearchTest, FilesDanglingLinksAndPipesAreNoFolders) {
    home.write(QStringLiteral("file"), "x");
    home.write(QStringLiteral("F.app"), "a file with a bundle's name");
    link(home.path(QStringLiteral("nowhere")), QStringLiteral("dangling"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(home.path(QStringLiteral("pipe"))).constData(), 0600), 0);
    home.makeFolder(QStringLiteral("P.app/Contents"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(home.path(QStringLiteral("P.app/Contents/Info.plist"))).constData(), 0600), 0);
    EXPECT_EQ(found(), QStringList());
}

TEST_F(BundleSearchTest, AFolderThatCannotBeReadIsPassedOver) {
    std::optional<QStringList> paths;
    pathsForIdent(kWanted, home.path(QStringLiteral("missing")), &paths, propertyList);
    pathsForIdent(kWanted, home.write(QStringLiteral("file"), "x"), &paths, propertyList);
    EXPECT_FALSE(paths.has_value());
}

TEST_F(BundleSearchTest, FoldersDeeperThanAPathMayBeLongAreLeftOut) {
    QString relative;
    const QString name(200, u'd');
    ASSERT_EQ(::chdir(QFile::encodeName(home.path()).constData()), 0);
    for (int depth = 0; depth < 30; ++depth) { // 6,000 characters
        ASSERT_EQ(::mkdir(name.toLatin1().constData(), 0755), 0);
        ASSERT_EQ(::chdir(name.toLatin1().constData()), 0);
    }
    ASSERT_EQ(::chdir("/"), 0);
    EXPECT_EQ(found(), QStringList());
    ASSERT_EQ(::system(("rm -rf '" + home.path().toStdString() + "'/d*").c_str()), 0); // NOLINT
}

TEST_F(BundleSearchTest, NoListIsMadeWhenNothingIsFound) {
    std::optional<QStringList> paths;
    pathsForIdent(kWanted, home.path(), &paths, propertyList);
    EXPECT_FALSE(paths.has_value());
}

TEST_F(BundleSearchTest, AGivenListIsAddedTo) {
    const QString q = bundle(QStringLiteral("Q.app"));
    std::optional<QStringList> paths = QStringList{QStringLiteral("before")};
    pathsForIdent(kWanted, home.path() + u'/', &paths, propertyList);
    EXPECT_EQ(*paths, QStringList({QStringLiteral("before"), q}));
}

TEST_F(BundleSearchTest, WithoutAPlaceForThePathsNothingHappens) {
    bundle(QStringLiteral("Q.app"));
    pathsForIdent(kWanted, home.path(), nullptr, propertyList);
}

class StaleBundles : public BundleSearchTest {
protected:
    StaleBundles() {
        workspace.userFolders = QStringList{home.makeFolder(QStringLiteral("user"))};
        workspace.localFolders = QStringList{home.makeFolder(QStringLiteral("local"))};
    }
    QStringList stale() { return staleClientBundles(QStringLiteral("P"), workspace, propertyList); }
    static QStringList fixedPaths() {
        QStringList paths;
        for (const char *name : {"P", "P Client"}) {
            for (const char *folder : {"~/Applications/", "/Applications/"}) {
                for (const char *suffix : {"", "-1", "-2", "-3", "-4", "-5"}) {
                    paths << QString::fromLatin1(folder) + QString::fromLatin1(name) + QString::fromLatin1(suffix) +
                                 QStringLiteral(".app");
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
    EXPECT_EQ(stale().size(), 24);
    EXPECT_EQ(stale()[6], QStringLiteral("/Applications/P.app"));
    EXPECT_EQ(stale()[23], QStringLiteral("/Applications/P Client-5.app"));
}

TEST_F(StaleBundles, TheUsersFolderIsSearchedBeforeTheComputers) {
    const QString local = bundle(QStringLiteral("local/A.app"));
    const QString user = bundle(QStringLiteral("user/Z.app"));
    EXPECT_EQ(stale(), QStringList({user, local}) + fixedPaths());
    EXPECT_EQ(transcript.calls(),
              QStringList({QStringLiteral("applicationsFolders user"), QStringLiteral("applicationsFolders local")}));
}

TEST_F(StaleBundles, TheLastFolderOfADomainIsTheOneSearched) {
    bundle(QStringLiteral("first/A.app"));
    workspace.userFolders.prepend(home.path(QStringLiteral("first")));
    EXPECT_EQ(stale(), fixedPaths());
}

TEST_F(StaleBundles, ADomainWithoutFoldersIsPassedOver) {
    workspace.userFolders.clear();
    workspace.localFolders.clear();
    EXPECT_EQ(stale(), fixedPaths());
}

TEST_F(StaleBundles, ABundleAtAFixedPathIsListedTwice) {
    // Deliberate: duplicates stay. The second domain names the folder of the first one again.
    const QString twice = bundle(QStringLiteral("user/P.app"));
    workspace.localFolders = workspace.userFolders;
    EXPECT_EQ(stale(), QStringList({twice, twice}) + fixedPaths());
}

} // namespace
} // namespace quillmark

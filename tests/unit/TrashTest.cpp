#include "fakes/FakeClock.h"
#include "fakes/FakePropertyList.h"
#include "fakes/FakeSessionBus.h"
#include "platform/linux/LinuxWorkspace.h"
#include "support/FileFacts.h"
#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"

#include <QDateTime>
#include <gtest/gtest.h>
#include <unistd.h>

namespace quillmark {

namespace {

class TrashTest : public testing::Test {
protected:
    TrashTest() { qunsetenv("XDG_DATA_HOME"); }

    test::TemporaryHome home;
    test::FakePropertyList propertyList;
    test::FakeSessionBus bus;
    test::FakeClock clock;
    LinuxWorkspace workspace{propertyList, bus, clock};

    QString trash(const QString &below) const { return home.path(QStringLiteral(".local/share/Trash/") + below); }
    bool recycle(const QString &name) { return workspace.recycle(name, home.path()); }
    QStringList trashed() const { return namesIn(trash(QStringLiteral("files"))); }
    QStringList infos() const { return namesIn(trash(QStringLiteral("info"))); }
    static QStringList namesIn(const QString &folder) {
        return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                                      QDir::Name);
    }
    bool isThere(const QString &name) const { return namesIn(home.path()).contains(name); }
    /// Where the info file says that the item was.
    QByteArray pathIn(const QString &name) const {
        const QList<QByteArray> lines = test::readAll(trash(QStringLiteral("info/") + name)).split('\n');
        EXPECT_EQ(lines.size(), 4);
        EXPECT_EQ(lines.value(0), QByteArray("[Trash Info]"));
        EXPECT_TRUE(lines.value(1).startsWith("Path="));
        return QByteArray::fromPercentEncoding(lines.value(1).mid(5));
    }
};

TEST_F(TrashTest, TakesABundleWithAllThatIsInIt) {
    home.write(QStringLiteral("A.app/Contents/MacOS/A"), "x");
    EXPECT_TRUE(recycle(QStringLiteral("A.app")));
    EXPECT_FALSE(isThere(QStringLiteral("A.app")));
    EXPECT_EQ(test::readAll(trash(QStringLiteral("files/A.app/Contents/MacOS/A"))), QByteArray("x"));
    EXPECT_EQ(infos(), QStringList({QStringLiteral("A.app.trashinfo")}));
}

TEST_F(TrashTest, NotesWhereAndWhenAnItemWasTrashed) {
    home.write(QStringLiteral("a"), "");
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    ASSERT_TRUE(recycle(QStringLiteral("a")));
    EXPECT_EQ(pathIn(QStringLiteral("a.trashinfo")), QFile::encodeName(home.path(QStringLiteral("a"))));
    const QByteArray date = test::readAll(trash(QStringLiteral("info/a.trashinfo"))).split('\n').value(2);
    ASSERT_TRUE(date.startsWith("DeletionDate="));
    const QDateTime trashedAt = QDateTime::fromString(QString::fromLatin1(date.mid(13)), Qt::ISODate);
    EXPECT_GE(trashedAt, before);
    EXPECT_LE(trashedAt, QDateTime::currentDateTime());
}

TEST_F(TrashTest, NotesNamesOfAnyBytes) {
    for (const char *name : {"with blank", "100%", "line\nfeed", "\xc3\xa4", "a=b;[c]#", ".hidden"}) {
        home.write(QString::fromUtf8(name), "");
        EXPECT_TRUE(recycle(QString::fromUtf8(name)));
        const QByteArray info = test::readAll(trash(QStringLiteral("info/%1.trashinfo").arg(QString::fromUtf8(name))));
        EXPECT_EQ(info.count('\n'), 3) << name;
        EXPECT_EQ(pathIn(QString::fromUtf8(name) + QStringLiteral(".trashinfo")),
                  QFile::encodeName(home.path(QString::fromUtf8(name))));
    }
}

TEST_F(TrashTest, IsForTheUserAlone) {
    home.write(QStringLiteral("a"), "");
    ASSERT_TRUE(recycle(QStringLiteral("a")));
    for (const char *folder : {"", "files", "info"}) {
        EXPECT_EQ(test::statusOf(trash(QString::fromUtf8(folder))).st_mode & 07777U, 0700U) << folder;
    }
    EXPECT_EQ(test::statusOf(trash(QStringLiteral("info/a.trashinfo"))).st_mode & 07777U, 0600U);
}

TEST_F(TrashTest, KeepsItemsOfTheSameNameApart) {
    for (int i = 0; i < 3; ++i) {
        home.write(QStringLiteral("a"), QByteArray::number(i));
        EXPECT_TRUE(recycle(QStringLiteral("a")));
    }
    EXPECT_EQ(trashed(), QStringList({QStringLiteral("a"), QStringLiteral("a.2"), QStringLiteral("a.3")}));
    EXPECT_EQ(test::readAll(trash(QStringLiteral("files/a.3"))), QByteArray("2"));
    EXPECT_EQ(pathIn(QStringLiteral("a.3.trashinfo")), QFile::encodeName(home.path(QStringLiteral("a"))));
}

TEST_F(TrashTest, LeavesItemsThatNobodyKnowsTheOriginOf) {
    home.write(QStringLiteral(".local/share/Trash/files/a"), "older");
    home.write(QStringLiteral("a"), "newer");
    EXPECT_TRUE(recycle(QStringLiteral("a")));
    EXPECT_EQ(test::readAll(trash(QStringLiteral("files/a"))), QByteArray("older"));
    EXPECT_EQ(infos(), QStringList({QStringLiteral("a.2.trashinfo")}));
}

TEST_F(TrashTest, ShortensNamesThatAreTooLongForAnInfoFileBetweenCharacters) {
    const QString name = QString(127, QChar(0xe4)) + u'x'; // 255 bytes
    for (int i = 0; i < 2; ++i) {
        home.write(name, "");
        EXPECT_TRUE(recycle(name));
    }
    const QString longest(122, QChar(0xe4)); // with ".trashinfo" 254 bytes
    EXPECT_EQ(trashed(), QStringList({QString(121, QChar(0xe4)) + QStringLiteral(".2"), longest}));
    EXPECT_EQ(pathIn(longest + QStringLiteral(".trashinfo")), QFile::encodeName(home.path(name)));
}

TEST_F(TrashTest, TakesALinkAndNotWhatItLeadsTo) {
    home.write(QStringLiteral("folder/file"), "x");
    ASSERT_TRUE(QFile::link(QStringLiteral("folder"), home.path(QStringLiteral("link"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("nowhere"), home.path(QStringLiteral("broken"))));
    EXPECT_TRUE(recycle(QStringLiteral("link")));
    EXPECT_TRUE(recycle(QStringLiteral("broken")));
    EXPECT_EQ(trashed(), QStringList({QStringLiteral("broken"), QStringLiteral("link")}));
    EXPECT_EQ(test::readAll(home.path(QStringLiteral("folder/file"))), QByteArray("x"));
}

TEST_F(TrashTest, NotesThePlaceItselfWhenTheFolderIsALink) {
    home.write(QStringLiteral("real/a"), "");
    ASSERT_TRUE(QFile::link(home.path(QStringLiteral("real")), home.path(QStringLiteral("link"))));
    EXPECT_TRUE(workspace.recycle(QStringLiteral("a"), home.path(QStringLiteral("link"))));
    EXPECT_EQ(pathIn(QStringLiteral("a.trashinfo")), QFile::encodeName(home.path(QStringLiteral("real/a"))));
}

TEST_F(TrashTest, IsWhereTheDesktopKeepsItsData) {
    home.write(QStringLiteral("a"), "");
    home.write(QStringLiteral("b"), "");
    qputenv("XDG_DATA_HOME", QFile::encodeName(home.path(QStringLiteral("data"))));
    EXPECT_TRUE(recycle(QStringLiteral("a")));
    EXPECT_EQ(namesIn(home.path(QStringLiteral("data/Trash/files"))), QStringList({QStringLiteral("a")}));
    qputenv("XDG_DATA_HOME", "data"); // relative: it does not count
    EXPECT_TRUE(recycle(QStringLiteral("b")));
    EXPECT_EQ(trashed(), QStringList({QStringLiteral("b")}));
    qunsetenv("XDG_DATA_HOME");
}

TEST_F(TrashTest, RefusesWhatIsNoNameOfAnItem) {
    home.write(QStringLiteral("folder/a"), "");
    for (const char *name : {"", ".", "..", "folder/a", "/", "none"}) {
        EXPECT_FALSE(recycle(QString::fromUtf8(name))) << name;
    }
    EXPECT_FALSE(workspace.recycle(QStringLiteral("a"), home.path(QStringLiteral("none"))));
    EXPECT_FALSE(workspace.recycle(QStringLiteral("a"), QString()));
    EXPECT_EQ(infos(), QStringList());
    EXPECT_TRUE(QFile::exists(home.path(QStringLiteral("folder/a"))));
}

TEST_F(TrashTest, DoesNotTakeTheFolderThatItIsIn) {
    home.write(QStringLiteral(".local/share/a"), "");
    EXPECT_FALSE(recycle(QStringLiteral(".local")));
    EXPECT_EQ(infos(), QStringList());
    EXPECT_TRUE(QFile::exists(home.path(QStringLiteral(".local/share/a"))));
}

TEST_F(TrashTest, WhoseFoldersAreLinksIsNotUsed) {
    for (const char *folder : {"files", "info"}) {
        home.write(QStringLiteral("a"), "");
        home.makeFolder(QStringLiteral("elsewhere"));
        home.makeFolder(QStringLiteral(".local/share/Trash"));
        const QString link = trash(QString::fromUtf8(folder));
        ASSERT_TRUE(QFile::link(home.path(QStringLiteral("elsewhere")), link));
        EXPECT_FALSE(recycle(QStringLiteral("a")));
        EXPECT_TRUE(isThere(QStringLiteral("a")));
        EXPECT_EQ(namesIn(home.path(QStringLiteral("elsewhere"))), QStringList());
        ASSERT_TRUE(QDir(trash({})).removeRecursively());
    }
}

TEST_F(TrashTest, ThatCannotBeMadeTakesNothing) {
    home.write(QStringLiteral(".local"), "in the way");
    home.write(QStringLiteral("a"), "");
    EXPECT_FALSE(recycle(QStringLiteral("a")));
    EXPECT_TRUE(isThere(QStringLiteral("a")));
}

TEST_F(TrashTest, MayBeLedElsewhereByItsOwner) {
    home.makeFolder(QStringLiteral("elsewhere"));
    home.makeFolder(QStringLiteral(".local/share"));
    ASSERT_TRUE(QFile::link(home.path(QStringLiteral("elsewhere")), home.path(QStringLiteral(".local/share/Trash"))));
    home.write(QStringLiteral("a"), "");
    EXPECT_TRUE(recycle(QStringLiteral("a")));
    EXPECT_EQ(namesIn(home.path(QStringLiteral("elsewhere/files"))), QStringList({QStringLiteral("a")}));
}

TEST_F(TrashTest, DownloadsFoldersAreTheDesktopsAndTheUsualOne) {
    const QString usual = home.path(QStringLiteral("Downloads"));
    const auto foldersFor = [&](const QByteArray &setting) {
        home.write(QStringLiteral(".config/user-dirs.dirs"), "XDG_DOWNLOAD_DIR=\"" + setting + "\"\n");
        return workspace.downloadsFolders();
    };
    qunsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(workspace.downloadsFolders(), QStringList({usual}));
    EXPECT_EQ(foldersFor("$HOME/Downloads"), QStringList({usual}));
    EXPECT_EQ(foldersFor("$HOME/Heruntergeladen"), QStringList({home.path(QStringLiteral("Heruntergeladen")), usual}));
    EXPECT_EQ(foldersFor("/data/in"), QStringList({QStringLiteral("/data/in"), usual}));
    EXPECT_EQ(foldersFor("$HOME/"), QStringList({usual}));
    EXPECT_EQ(foldersFor("$HOME"), QStringList({usual}));
}

} // namespace

} // namespace quillmark

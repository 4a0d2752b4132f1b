#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"
#include "utils/FileManager.h"
#include "utils/String+Substring.h"
#include "utils/UUIDString.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace quillmark {
namespace {

TEST(Substring, IsFoundWhateverTheLetterCase) {
    EXPECT_TRUE(hasCaseInsensitiveSubstring(u"/tmp/macfuse-2.0.pkg", u"MacFUSE"));
    EXPECT_FALSE(hasCaseInsensitiveSubstring(u"Mac FUSE", u"MacFUSE"));
}

TEST(Substring, AnEmptyOneIsFoundNowhere) {
    EXPECT_FALSE(hasCaseInsensitiveSubstring(u"abc", u""));
    EXPECT_FALSE(hasCaseInsensitiveSubstring(u"", u""));
}

TEST(UUID, IsNewEachTimeInCanonicalUpperCase) {
    static const QRegularExpression form(
        QStringLiteral("^[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$"));
    const QString uuid = UUIDString();
    EXPECT_TRUE(form.match(uuid).hasMatch()) << uuid.toStdString();
    EXPECT_NE(UUIDString(), uuid);
}

TEST(CurrentThreadFileManager, IsTheThreadsOwnAndAlwaysTheSame) {
    const FileManager *mine = &__QMCurrentThreadFileManager();
    EXPECT_EQ(&__QMCurrentThreadFileManager(), mine);
    const FileManager *other = nullptr;
    std::thread([&other] { other = &__QMCurrentThreadFileManager(); }).join();
    EXPECT_NE(other, mine);
}

TEST(CurrentThreadFileManager, FollowsLinksWhenItLooksForFiles) {
    const test::TemporaryHome home;
    const FileManager files;
    const QString file = home.write(QStringLiteral("a"), "");
    EXPECT_TRUE(files.fileExists(file));
    ASSERT_TRUE(QFile::link(file, home.path(QStringLiteral("link"))));
    EXPECT_TRUE(files.fileExists(home.path(QStringLiteral("link"))));
    ASSERT_TRUE(QFile::remove(file));
    EXPECT_FALSE(files.fileExists(home.path(QStringLiteral("link"))));
}

TEST(CurrentThreadFileManager, TellsAFilesOwnerAndMode) {
    const FileManager files;
    const auto owned = files.attributes(QStringLiteral("/usr/bin/passwd"));
    ASSERT_TRUE(owned);
    EXPECT_EQ(owned->ownerAccountName, QStringLiteral("root"));
    EXPECT_EQ(owned->posixPermissions, 04755U);

    const test::TemporaryHome home;
    const QString file = home.write(QStringLiteral("a"), "");
    for (const mode_t mode : {0755U, 0775U, 0U, 06711U, 01777U}) {
        ASSERT_EQ(::chmod(QFile::encodeName(file).constData(), mode), 0);
        EXPECT_EQ(files.attributes(file)->posixPermissions, mode);
    }
}

TEST(CurrentThreadFileManager, TellsAFoldersOwnerAndMode) {
    const test::TemporaryHome home;
    const QString folder = home.makeFolder(QStringLiteral("a"));
    ASSERT_EQ(::chmod(QFile::encodeName(folder).constData(), 01777), 0);
    EXPECT_EQ(FileManager().attributes(folder)->posixPermissions, 01777U);
    EXPECT_EQ(FileManager().attributes(QStringLiteral("/usr/bin"))->ownerAccountName, QStringLiteral("root"));
}

TEST(CurrentThreadFileManager, TellsTheAttributesOfALinkItselfAndNothingOfWhatIsNotThere) {
    const test::TemporaryHome home;
    const FileManager files;
    const QString link = home.path(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/usr/bin/passwd"), link));
    EXPECT_EQ(files.attributes(link)->posixPermissions, 0777U);
    EXPECT_FALSE(files.attributes(home.path(QStringLiteral("none"))));
    EXPECT_FALSE(files.attributes(QString()));
    EXPECT_FALSE(files.attributes(QStringLiteral("/usr/bin/passwd/x")));
}

TEST(CurrentThreadFileManager, ANumberThatNoAccountHasIsAnOwnerWithoutAName) {
    const test::TemporaryHome home;
    const QString file = home.write(QStringLiteral("a"), "");
    constexpr uid_t kNobodysNumber = 3'999'999'999;
    // Only the administrator can give files away; others see at least that the file is their own.
    const bool isGiven = ::chown(QFile::encodeName(file).constData(), kNobodysNumber, static_cast<gid_t>(-1)) == 0;
    EXPECT_EQ(FileManager().attributes(file)->ownerAccountName.isEmpty(), isGiven);
}

/// A folder of this user's in which others may do what the mode says.
class OthersFolders : public testing::Test {
protected:
    QString makeFolder(const char *name, mode_t mode) {
        const QString path = home.path(QString::fromUtf8(name));
        const QByteArray bytes = QFile::encodeName(path);
        EXPECT_EQ(::mkdir(bytes.constData(), S_IRWXU), 0);
        EXPECT_EQ(::chmod(bytes.constData(), mode), 0);
        return path;
    }

    const test::TemporaryHome home;
    const FileManager &files = __QMCurrentThreadFileManager();
};

TEST_F(OthersFolders, AreThoseInWhichOthersCanExchangeThings) {
    const QString folder = makeFolder("open", 0777);
    EXPECT_EQ(files.folderOfOthers(folder + QStringLiteral("/a/b")), folder);
    EXPECT_EQ(files.folderOfOthers(folder), std::nullopt); // what may be done in it is another matter
    EXPECT_EQ(files.folderOfOthers(home.path(QStringLiteral("x"))), std::nullopt);
}

TEST_F(OthersFolders, AreNoneWhereEachKeepsHisOwnAndTheNextThingIsThere) {
    const QString folder = makeFolder("shared", 01777);
    home.write(QStringLiteral("shared/mine"), "x");
    EXPECT_EQ(files.folderOfOthers(folder + QStringLiteral("/mine")), std::nullopt);
    EXPECT_EQ(files.folderOfOthers(folder + QStringLiteral("/not yet")), folder);
}

TEST_F(OthersFolders, AreLinksToo) {
    const QString folder = makeFolder("folder", 0755);
    const QString link = home.path(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(folder, link));
    EXPECT_EQ(files.folderOfOthers(link + QStringLiteral("/a")), link);
    EXPECT_EQ(files.folderOfOthers(link), std::nullopt);
}

TEST(CurrentThreadFileManager, TrustsPlainFilesOfThisUsersOfASensibleSize) {
    const test::TemporaryHome home;
    const FileManager files;
    home.write(QStringLiteral("file"), "12345");
    const QString file = home.path(QStringLiteral("file"));
    EXPECT_TRUE(files.isTrustedFile(file, 5));
    EXPECT_FALSE(files.isTrustedFile(file, 4));
    const QString link = home.path(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(file, link));
    EXPECT_FALSE(files.isTrustedFile(link, 5));
    EXPECT_FALSE(files.isTrustedFile(home.path(), 5));
    EXPECT_FALSE(files.isTrustedFile(home.path(QStringLiteral("none")), 5));
}

TEST(CurrentThreadFileManager, TellsWhyAFolderCannotBeCreated) {
    const test::TemporaryHome home;
    const FileManager files;
    home.write(QStringLiteral("file"), "");
    EXPECT_EQ(files.createFolder(home.path(QStringLiteral("a/b")), 0700), 0);
    EXPECT_EQ(files.createFolder(home.path(QStringLiteral("a/b")), 0700), 0);
    EXPECT_EQ(files.createFolder(home.path(QStringLiteral("file/b")), 0700), ENOTDIR);
    EXPECT_EQ(QFileInfo(home.path(QStringLiteral("a"))).permissions() & QFile::ReadOther, 0);
}

} // namespace
} // namespace quillmark

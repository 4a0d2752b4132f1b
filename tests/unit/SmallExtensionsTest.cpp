#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"
#include "utils/FileManager.h"
#include "utils/String+Substring.h"
#include "utils/UUIDString.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <thread>

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

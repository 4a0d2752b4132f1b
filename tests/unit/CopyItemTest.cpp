#include "fakes/FakePlatform.h"
#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"
#include "utils/FileManager.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace quillmark {

namespace {

class CopyItem : public testing::Test {
protected:
    test::FakePlatform platform;
    test::TemporaryHome home;
    const FileManager files;

    QString at(const char *relative) const { return home.path(QString::fromUtf8(relative)); }
};

TEST_F(CopyItem, CopiesAFileWithItsModeToWhereThereIsNothing) {
    const QString source = home.write(QStringLiteral("a"), "contents");
    ASSERT_EQ(::chmod(QFile::encodeName(source).constData(), 0640), 0);
    EXPECT_FALSE(files.copyItem(source, at("b")));
    EXPECT_EQ(test::readAll(at("b")), QByteArray("contents"));
    EXPECT_EQ(files.attributes(at("b"))->posixPermissions, 0640U);
}

TEST_F(CopyItem, LeavesWhatIsThereAlready) {
    const QString source = home.write(QStringLiteral("a"), "new");
    const QString target = home.write(QStringLiteral("b"), "old");
    const auto error = files.copyItem(source, target);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain, kPosixErrorDomain);
    EXPECT_EQ(error->code, EEXIST);
    EXPECT_EQ(error->failureReason(), QStringLiteral("Copying stopped at '%1'").arg(target));
    EXPECT_EQ(test::readAll(target), QByteArray("old"));
}

} // namespace

} // namespace quillmark

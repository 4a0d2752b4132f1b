#include "utils/Folders.h"
#include "support/LogFixture.h"
#include "utils/Exception.h"

#include <QFileInfo>
#include <thread>
#include <vector>

namespace quillmark {
namespace {

class Folders : public test::LogFixture {};

TEST_F(Folders, AMissingFolderIsCreatedWithThoseAboveItAndLogged) {
    const QString file = logToFile(kLogLevelVerbose);
    const QString folder = home.path(QStringLiteral("a/b/c"));
    ensureFolderPathExists(folder);
    EXPECT_TRUE(QFileInfo(folder).isDir());
    EXPECT_EQ(messagesOf(file), QStringList({u'"' + folder + QStringLiteral("\" subfolder missing - created it")}));
}

TEST_F(Folders, WhatExistsIsLeftAloneWithoutALine) {
    const QString file = logToFile(kLogLevelVerbose);
    ensureFolderPathExists(home.path());
    ensureFolderPathExists(home.write(QStringLiteral("file"), "x")); // anything at the path will do
    EXPECT_EQ(contentsOf(file), "");
}

TEST_F(Folders, TrailingSlashesDoNoHarm) {
    ensureFolderPathExists(home.path(QStringLiteral("a/b//")));
    EXPECT_TRUE(QFileInfo(home.path(QStringLiteral("a/b"))).isDir());
}

TEST_F(Folders, AFailureNamesThePathAndTheReason) {
    home.write(QStringLiteral("file"), "x");
    platform.systemInfo.errorTexts.insert_or_assign(ENOTDIR, "Not a directory");
    const QString folder = home.path(QStringLiteral("file/a/b"));
    try {
        ensureFolderPathExists(folder);
        FAIL() << "nothing was raised";
    } catch (const Exception &exception) {
        EXPECT_EQ(exception.name(), QStringLiteral("NSGenericException"));
        EXPECT_EQ(exception.reason(), QStringLiteral("Failed to create \"%1\" (Not a directory)").arg(folder));
    }
}

TEST_F(Folders, APlaceWhereNoFolderCanBeIsAFailureToo) {
    EXPECT_THROW(ensureFolderPathExists(QStringLiteral("/proc/no/such/place")), Exception);
    EXPECT_THROW(ensureFolderPathExists(QStringLiteral("")), Exception);
}

TEST_F(Folders, SeveralThreadsMayMakeTheSameOne) {
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            try {
                ensureFolderPathExists(home.path(QStringLiteral("1/2/3/4/5/6/7/8")));
            } catch (const Exception &) {
                ++failures;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures, 0);
}

} // namespace
} // namespace quillmark

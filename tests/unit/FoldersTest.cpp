#include "utils/Folders.h"
#include "support/LogFixture.h"
#include "utils/Exception.h"

#include <atomic>
#include <thread>
#include <vector>

namespace quillmark {
namespace {

class Folders : public test::LogFixture {};

TEST_F(Folders, AMissingFolderIsCreatedWithThoseAboveItAndLogged) {
    const std::string file = logToFile(kLogLevelVerbose);
    const std::string folder = home.path("a/b/c");
    ensureFolderPathExists(folder);
    EXPECT_TRUE(std::filesystem::is_directory(folder));
    EXPECT_EQ(messagesOf(file), test::Lines{'"' + folder + "\" subfolder missing - created it"});
}

TEST_F(Folders, WhatExistsIsLeftAloneWithoutALine) {
    const std::string file = logToFile(kLogLevelVerbose);
    ensureFolderPathExists(home.path());
    ensureFolderPathExists(home.write("file", "x")); // anything at the path will do
    EXPECT_EQ(contentsOf(file), "");
}

TEST_F(Folders, TrailingSlashesDoNoHarm) {
    ensureFolderPathExists(home.path("a/b//"));
    EXPECT_TRUE(std::filesystem::is_directory(home.path("a/b")));
}

TEST_F(Folders, AFailureNamesThePathAndTheReason) {
    home.write("file", "x");
    platform.systemInfo.errorTexts.insert_or_assign(ENOTDIR, "Not a directory");
    const std::string folder = home.path("file/a/b");
    try {
        ensureFolderPathExists(folder);
        FAIL() << "nothing was raised";
    } catch (const Exception &exception) {
        EXPECT_EQ(exception.name(), "NSGenericException");
        EXPECT_EQ(exception.reason(), "Failed to create \"" + folder + "\" (Not a directory)");
    }
}

TEST_F(Folders, APlaceWhereNoFolderCanBeIsAFailureToo) {
    EXPECT_THROW(ensureFolderPathExists("/proc/no/such/place"), Exception);
    EXPECT_THROW(ensureFolderPathExists(""), Exception);
}

TEST_F(Folders, SeveralThreadsMayMakeTheSameOne) {
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            try {
                ensureFolderPathExists(home.path("1/2/3/4/5/6/7/8"));
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

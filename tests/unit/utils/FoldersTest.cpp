#include "utils/Folders.h"
#include "support/LogFixture.h"
#include "support/Threads.h"
#include "utils/Exception.h"

#include <filesystem>
#include <gmock/gmock.h>

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
    EXPECT_THAT([&] { ensureFolderPathExists(folder); },
                testing::ThrowsMessage<Exception>("NSGenericException (Failed to create \"" + folder +
                                                  "\" (Not a directory))"));
}

TEST_F(Folders, APlaceWhereNoFolderCanBeIsAFailureToo) {
    EXPECT_THROW(ensureFolderPathExists("/proc/no/such/place"), Exception);
    EXPECT_THROW(ensureFolderPathExists(""), Exception);
}

TEST_F(Folders, SeveralThreadsMayMakeTheSameOne) {
    test::onThreads(8,
                    [this](int /*thread*/) { EXPECT_NO_THROW(ensureFolderPathExists(home.path("1/2/3/4/5/6/7/8"))); });
}

} // namespace
} // namespace quillmark

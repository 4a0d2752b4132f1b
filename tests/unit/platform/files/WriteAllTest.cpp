#include "platform/files/WriteAll.h"

#include "support/TemporaryHome.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <thread>
#include <unistd.h>

namespace quillmark {
namespace {

TEST(WriteAll, WritesEveryByte) {
    const test::TemporaryHome home;
    const std::string bytes("a\0ü\n", 5);
    const int file = ::open(home.path("file").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    EXPECT_TRUE(writeAll(file, bytes));
    EXPECT_TRUE(writeAll(file, ""));
    EXPECT_TRUE(writeAll(file, bytes)); // behind it
    ::close(file);
    EXPECT_EQ(test::readAll(home.path("file")), bytes + bytes);
}

TEST(WriteAll, TellsWhyItFails) {
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    EXPECT_FALSE(writeAll(full, "x"));
    EXPECT_EQ(errno, ENOSPC);
    ::close(full);
    EXPECT_FALSE(writeAll(-1, "x"));
    EXPECT_EQ(errno, EBADF);
}

TEST(WriteAll, GoesOnWhereAPipeTakesAPartAndASignalInterrupts) {
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = [](int) {}; // without SA_RESTART, so that a waiting write ends early
    ::sigaction(SIGUSR1, &action, &before);
    int pipe[2];
    ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
    const std::string bytes(1'000'000, 'x'); // far more than a pipe holds
    bool isWritten = false;
    std::thread writer([&] {
        isWritten = writeAll(pipe[1], bytes);
        ::close(pipe[1]);
    });
    std::string read;
    std::string piece(1000, '\0');
    for (ssize_t count = 1; count > 0;) {
        ::pthread_kill(writer.native_handle(), SIGUSR1);
        count = ::read(pipe[0], piece.data(), piece.size());
        read.append(piece, 0, static_cast<size_t>(std::max<ssize_t>(count, 0)));
    }
    writer.join();
    ::close(pipe[0]);
    ::sigaction(SIGUSR1, &before, nullptr);
    EXPECT_TRUE(isWritten);
    EXPECT_EQ(read, bytes);
}

} // namespace
} // namespace quillmark

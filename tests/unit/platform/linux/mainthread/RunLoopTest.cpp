#include "platform/linux/mainthread/RunLoop.h"
#include "platform/linux/mainthread/LinuxMainThread.h"
#include "support/ProcessSettings.h"

#include <array>
#include <fcntl.h>
#include <string>
#include <system_error>
#include <unistd.h>

namespace quillmark {
namespace {

class Pipe {
public:
    Pipe() {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
        m_reading = Descriptor(ends[0]);
        m_writing = Descriptor(ends[1]);
    }
    void write(char character) const { EXPECT_EQ(::write(m_writing.get(), &character, 1), 1); }
    void close() { m_writing.close(); }
    int descriptor() const { return m_reading.get(); }
    /// Until the pipe is closed, one character at a time.
    Input input(std::string &text) const {
        return {m_reading.get(), [this, &text] {
                    char character = 0;
                    const ssize_t count = ::read(m_reading.get(), &character, 1);
                    text.append(count > 0 ? 1 : 0, character);
                    return count != 0;
                }};
    }

private:
    Descriptor m_reading;
    Descriptor m_writing;
};

class RunLoopTest : public testing::Test {
protected:
    RunLoop loop;
    std::string texts;
};

TEST_F(RunLoopTest, AQueuedCallEndsTheWaitOfAnotherThread) {
    std::thread::id caller;
    std::thread other([&] { loop.post([&] { caller = std::this_thread::get_id(); }); });
    loop.turn();
    other.join();
    EXPECT_EQ(caller, std::this_thread::get_id());
}

TEST_F(RunLoopTest, ACallThatTurnsTheLoopHasTheNextOnesMadeInside) {
    loop.post([&] {
        texts += '(';
        loop.turn();
        texts += ')';
    });
    loop.post([&] { texts += 'a'; });
    loop.post([&] { texts += 'b'; });
    loop.turn();
    loop.turn();
    EXPECT_EQ(texts, "(a)b");
}

TEST_F(RunLoopTest, WhatACallQueuesComesBehindWhatIsQueuedAlready) {
    loop.post([&] { loop.post([&] { texts += 'c'; }); });
    loop.post([&] { texts += 'b'; });
    for (int i = 0; i < 3; ++i) {
        loop.turn();
    }
    EXPECT_EQ(texts, "bc");
}

TEST_F(RunLoopTest, ServesInputsUntilTheLastOneHasEnded) {
    Pipe first;
    Pipe second;
    first.write('1');
    second.write('2');
    first.close();
    std::thread other([&] { // the second one ends only when the first one has
        loop.post([&] { second.write('3'); });
        loop.post([&] { second.close(); });
    });
    loop.serve({first.input(texts), second.input(texts)});
    other.join();
    EXPECT_EQ(texts.size(), 3U);
    EXPECT_LT(texts.find('2'), texts.find('3'));
}

TEST_F(RunLoopTest, AnInputIsServedInsideTheCallOfAnother) {
    Pipe outer;
    Pipe inner;
    outer.write('o');
    inner.write('i');
    inner.close();
    bool isFirst = true;
    loop.serve({{outer.descriptor(), [&] {
                     if (std::exchange(isFirst, false)) {
                         texts += '(';
                         loop.serve({inner.input(texts)});
                         texts += ')';
                         outer.close();
                     }
                     return outer.input(texts).onReadable();
                 }}});
    EXPECT_EQ(texts.front(), '(');
    EXPECT_LT(texts.find('i'), texts.find(')'));
    EXPECT_NE(texts.find('o'), std::string::npos);
}

TEST_F(RunLoopTest, AnInputThatRaisesIsNotWatchedAnyMore) {
    Pipe pipe;
    pipe.write('x');
    EXPECT_THROW(loop.serve({{pipe.descriptor(), []() -> bool { throw 7; }}}), int);
    bool isCalled = false;
    loop.post([&] { isCalled = true; });
    loop.turn();
    EXPECT_TRUE(isCalled);
}

TEST_F(RunLoopTest, WhatCannotBeWaitedForIsRefused) {
    const Descriptor file(::open("/proc/self/exe", O_RDONLY | O_CLOEXEC));
    EXPECT_THROW(loop.serve({{file.get(), [] { return false; }}}), std::system_error);
}

TEST_F(RunLoopTest, WithoutADescriptorThereIsNoLoop) {
    const test::Limit none(RLIMIT_NOFILE, 0);
    EXPECT_THROW(RunLoop(), std::system_error);
}

/// The library of windows, which waits for nothing.
class IdleWindows final : public Windows {
public:
    explicit IdleWindows(OtherEvents &others) : m_others(others) {}
    Alerts &alerts() override { throw std::logic_error("no alert is wanted"); }
    void turn() override {
        ++turns;
        m_others.serveReady();
    }
    void run() override { throw std::runtime_error("runs"); }
    CheckWindowView *loadCheckWindow(const std::string & /*interfaceFile*/, const HeaderBranding & /*branding*/,
                                     CheckWindowView::Owner & /*owner*/,
                                     std::vector<std::string> & /*problems*/) override {
        return nullptr;
    }
    int turns = 0;

private:
    OtherEvents &m_others;
};

TEST_F(RunLoopTest, OnceThereAreWindowsTheirLibraryWaits) {
    IdleWindows windows(loop);
    loop.waitWith(windows);
    Pipe pipe;
    pipe.write('x');
    pipe.close();
    bool isCalled = false;
    loop.post([&] { isCalled = true; });
    loop.serve({pipe.input(texts)});
    EXPECT_EQ(texts, "x");
    EXPECT_TRUE(isCalled);
    EXPECT_GT(windows.turns, 0);
    EXPECT_THROW(loop.run(), std::runtime_error);
}

TEST_F(RunLoopTest, WindowsThatComeWhileItRunsTakeOver) {
    IdleWindows windows(loop);
    loop.post([&] { loop.waitWith(windows); });
    EXPECT_THROW(loop.run(), std::runtime_error);
}

TEST(MainThreadTest, OtherThreadsServeTheirInputsAlone) {
    LinuxMainThread mainThread;
    bool isCalled = false;
    mainThread.post([&] { isCalled = true; });
    std::string texts;
    std::thread([&] {
        Pipe pipe;
        pipe.write('x');
        pipe.close();
        mainThread.serve({pipe.input(texts)});
    }).join();
    EXPECT_EQ(texts, "x");
    EXPECT_FALSE(isCalled);
}

} // namespace
} // namespace quillmark

#include "platform/linux/mainthread/RunLoop.h"

#include "platform/process/AtEnd.h"

#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace quillmark {

namespace {

constexpr std::uint64_t kWakeUp = 0;

[[noreturn]] void fail() { throw std::system_error(errno, std::generic_category(), "nothing can be waited for"); }

} // namespace

RunLoop::RunLoop()
    : m_poll(::epoll_create1(EPOLL_CLOEXEC)), m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE)) {
    if (!m_poll.isOpen() || !m_wakeUp.isOpen()) {
        fail();
    }
    watch(m_wakeUp.get(), kWakeUp);
}

void RunLoop::watch(int descriptor, std::uint64_t number) const {
    epoll_event event{EPOLLIN, {.u64 = number}};
    if (::epoll_ctl(m_poll.get(), EPOLL_CTL_ADD, descriptor, &event) != 0) {
        fail();
    }
}

void RunLoop::unwatch(int descriptor, std::uint64_t number) {
    m_watches.erase(number);
    ::epoll_ctl(m_poll.get(), EPOLL_CTL_DEL, descriptor, nullptr);
}

void RunLoop::post(std::function<void()> call) {
    const std::scoped_lock lock(m_mutex);
    m_calls.push_back(std::move(call));
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_wakeUp.get(), &one, sizeof one);
}

void RunLoop::turn() {
    constexpr int kForEver = -1;
    m_windows != nullptr ? m_windows->turn() : serveWithin(kForEver);
}

void RunLoop::run() {
    for (;;) {
        m_windows != nullptr ? m_windows->run() : turn();
    }
}

void RunLoop::serve(const std::vector<Input> &inputs) {
    std::map<std::uint64_t, int> open; // descriptors
    const AtEnd ended([&] {
        for (const auto &[number, descriptor] : open) {
            unwatch(descriptor, number);
        }
    });
    for (const Input &input : inputs) {
        const std::uint64_t number = ++m_lastNumber;
        watch(input.descriptor, number);
        open.emplace(number, input.descriptor);
        m_watches.emplace(number, [this, number, &input, &open] {
            if (!input.onReadable()) {
                unwatch(input.descriptor, number);
                open.erase(number);
            }
        });
    }
    while (!open.empty()) {
        turn();
    }
}

void RunLoop::serveWithin(int milliseconds) {
    std::array<epoll_event, 16> ready{};
    const int count = ::epoll_wait(m_poll.get(), ready.data(), ready.size(), milliseconds);
    for (int i = 0; i < count; ++i) {
        const std::uint64_t number = ready[static_cast<size_t>(i)].data.u64;
        if (number == kWakeUp) {
            makeQueuedCall();
        } else if (const auto watch = m_watches.find(number); watch != m_watches.end()) {
            const auto onReadable = watch->second; // it may end its own watch
            onReadable();
        }
    }
}

void RunLoop::makeQueuedCall() {
    std::uint64_t one = 0;
    if (::read(m_wakeUp.get(), &one, sizeof one) < 0) {
        return; // made inside another call, which turned the loop
    }
    std::function<void()> call;
    {
        const std::scoped_lock lock(m_mutex);
        call = std::move(m_calls.front());
        m_calls.pop_front();
    }
    call();
}

} // namespace quillmark

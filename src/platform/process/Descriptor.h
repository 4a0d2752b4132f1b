#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace quillmark {

/// An open file descriptor, closed with its owner; -1 when there is none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    Descriptor(Descriptor &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() { close(); }

    int get() const { return m_descriptor; }
    bool isOpen() const { return m_descriptor >= 0; }
    /// Hands it to the caller, who closes it.
    int release() { return std::exchange(m_descriptor, -1); }
    void close() {
        if (isOpen()) {
            ::close(std::exchange(m_descriptor, -1));
        }
    }

private:
    int m_descriptor = -1;
};

/// Makes a system call, again for as long as a signal interrupts it. \returns what it answers then.
template <typename Call>
auto uninterrupted(const Call &call) {
    auto answer = call();
    while (answer < 0 && errno == EINTR) {
        answer = call();
    }
    return answer;
}

} // namespace quillmark

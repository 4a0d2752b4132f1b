#pragma once

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace quillmark::test {

/// The process with another mask of permissions.
class Mask {
public:
    explicit Mask(mode_t mask) : m_previous(::umask(mask)) {}
    Mask(const Mask &) = delete;
    Mask &operator=(const Mask &) = delete;
    ~Mask() { ::umask(m_previous); }

private:
    mode_t m_previous;
};

/// The process with a lower limit. A file that grows beyond it is an error, and not the process's end.
class Limit {
public:
    using Resource = decltype(RLIMIT_FSIZE);

    Limit(Resource resource, rlim_t value) : m_resource(resource) {
        EXPECT_EQ(::getrlimit(resource, &m_previous), 0);
        const rlimit low{value, m_previous.rlim_max};
        EXPECT_EQ(::setrlimit(resource, &low), 0);
    }
    Limit(const Limit &) = delete;
    Limit &operator=(const Limit &) = delete;
    ~Limit() {
        ::setrlimit(m_resource, &m_previous);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    Resource m_resource;
    rlimit m_previous{};
    void (*m_handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

} // namespace quillmark::test

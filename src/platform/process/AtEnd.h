#pragma once

#include <functional>

namespace quillmark {

/// Makes a call at the end of a scope, however that is left.
class AtEnd {
public:
    explicit AtEnd(std::function<void()> call) : m_call(std::move(call)) {}
    AtEnd(const AtEnd &) = delete;
    AtEnd &operator=(const AtEnd &) = delete;
    ~AtEnd() {
        if (m_call) {
            m_call();
        }
    }

    /// The call is not made.
    void dismiss() { m_call = nullptr; }

private:
    std::function<void()> m_call;
};

} // namespace quillmark

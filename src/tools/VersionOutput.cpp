#include "tools/VersionOutput.h"

#include "platform/Tasks.h"
#include "tools/LaunchException.h"

#include <array>
#include <cerrno>
#include <memory>
#include <poll.h>
#include <unistd.h>
#include <utf8.h>

namespace quillmark {

namespace {

constexpr std::string_view kMarker = "Limited ";
constexpr size_t kLongestVersion = 1 << 20; // bytes; whoever prints more than that tells no version

/// The text that is being looked for, while the output passes by.
class VersionText {
public:
    void append(std::string_view piece) {
        m_rest += piece;
        if (const size_t last = m_rest.rfind(kMarker); last != std::string::npos) {
            m_rest.erase(0, last + kMarker.size());
            m_text.clear();
        }
        // What may be the beginning of a marker waits for the next piece.
        const size_t passed = m_rest.size() - std::min(m_rest.size(), kMarker.size() - 1);
        take(std::string_view(m_rest).substr(0, passed));
        m_rest.erase(0, passed);
    }

    std::string atEnd() {
        take(m_rest);
        m_text.erase(utf8::find_invalid(m_text.begin(), m_text.end()), m_text.end()); // a character that was cut
        return m_text;
    }

private:
    void take(std::string_view text) { m_text += text.substr(0, kLongestVersion - m_text.size()); }

    std::string m_text;
    std::string m_rest;
};

/// Whether bytes that pass by are UTF-8.
class Utf8Check {
public:
    void append(std::string_view piece) {
        m_rest += piece;
        const auto fault = utf8::find_invalid(m_rest.begin(), m_rest.end());
        m_isFaulty = m_isFaulty || !isBeginningOfCharacter(fault);
        m_rest.erase(m_rest.begin(), fault);
    }
    bool isPassed() const { return !m_isFaulty && m_rest.empty(); }

private:
    /// True at the end as well.
    bool isBeginningOfCharacter(std::string::const_iterator at) const {
        try {
            if (at != m_rest.end()) {
                utf8::next(at, m_rest.cend());
            }
        } catch (const utf8::not_enough_room &) {
            return true;
        } catch (const utf8::exception &) {
            return false;
        }
        return true;
    }

    std::string m_rest; ///< what may be the beginning of a character
    bool m_isFaulty = false;
};

/// Waits for the next piece. \returns nothing at the end.
std::string_view nextPiece(int pipe, std::array<char, 65536> &buffer) {
    while (true) {
        const ssize_t count = uninterrupted([&] { return ::read(pipe, buffer.data(), buffer.size()); });
        if (count >= 0 || errno != EAGAIN) {
            return {buffer.data(), static_cast<size_t>(std::max<ssize_t>(count, 0))};
        }
        pollfd wait{pipe, POLLIN, 0};
        ::poll(&wait, 1, -1);
    }
}

} // namespace

std::optional<std::string> versionPrintedBy(const std::string &path, Tasks &tasks) {
    const auto task = tasks.launch(path, {}, Tasks::StandardError::Inherited);
    if (!task) {
        throw launchException();
    }
    VersionText version;
    Utf8Check check;
    auto buffer = std::make_unique<std::array<char, 65536>>();
    for (std::string_view piece; !(piece = nextPiece(task->standardOutput.get(), *buffer)).empty();) {
        version.append(piece);
        check.append(piece);
    }
    tasks.terminationStatus(*task);
    return check.isPassed() ? std::optional(version.atEnd()) : std::nullopt;
}

} // namespace quillmark

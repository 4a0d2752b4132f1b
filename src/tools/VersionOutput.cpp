#include "tools/VersionOutput.h"

#include "platform/Tasks.h"
#include "tools/LaunchException.h"

#include <QStringDecoder>
#include <array>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace quillmark {

namespace {

constexpr QLatin1StringView kMarker("Limited ");
constexpr qsizetype kLongestVersion = 256; // characters; whoever prints more than that tells no version

/// The line that is being looked for, while the output passes by.
class VersionLine {
public:
    void append(const QString &piece) {
        m_rest += piece;
        if (const qsizetype last = m_rest.lastIndexOf(kMarker); last >= 0) {
            m_rest.remove(0, last + kMarker.size());
            m_line.clear();
            m_isComplete = false;
        }
        // What may be the beginning of a marker waits for the next piece.
        const qsizetype passed = std::max<qsizetype>(m_rest.size() - (kMarker.size() - 1), 0);
        take(m_rest.left(passed));
        m_rest.remove(0, passed);
    }

    QString atEnd() {
        take(std::exchange(m_rest, QString()));
        return m_line.isNull() ? QStringLiteral("") : m_line; // nothing printed is a text all the same
    }

private:
    void take(const QString &text) {
        if (!m_isComplete) {
            const qsizetype end = text.indexOf(u'\n');
            m_line += text.left(end);
            m_line.truncate(kLongestVersion);
            m_isComplete = end >= 0;
        }
    }

    QString m_line;
    QString m_rest;
    bool m_isComplete = false;
};

/// Waits for the next piece. \returns nothing at the end.
QByteArrayView nextPiece(int pipe, std::array<char, 65536> &buffer) {
    while (true) {
        const ssize_t count = ::read(pipe, buffer.data(), buffer.size());
        if (count >= 0) {
            return {buffer.data(), count};
        }
        if (errno == EAGAIN) {
            pollfd wait{pipe, POLLIN, 0};
            ::poll(&wait, 1, -1);
        } else if (errno != EINTR) {
            return {};
        }
    }
}

} // namespace

QString versionPrintedBy(const QString &path, Tasks &tasks) {
    const auto task = tasks.launch(path, {}, Tasks::StandardError::Inherited);
    if (!task) {
        throw launchException();
    }
    VersionLine line;
    QStringDecoder decoder(QStringDecoder::Utf8);
    auto buffer = std::make_unique<std::array<char, 65536>>();
    while (true) {
        const QByteArrayView piece = nextPiece(task->standardOutput.get(), *buffer);
        if (piece.isEmpty()) {
            break;
        }
        line.append(decoder.decode(piece));
    }
    tasks.terminationStatus(*task);
    line.append(decoder.decode("\n")); // a character that the end has cut off shows when another one follows
    return decoder.hasError() ? QString() : line.atEnd();
}

} // namespace quillmark

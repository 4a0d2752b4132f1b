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
constexpr qsizetype kLongestVersion = 1 << 20; // characters; whoever prints more than that tells no version

/// The text that is being looked for, while the output passes by.
class VersionText {
public:
    void append(const QString &piece) {
        m_rest += piece;
        if (const qsizetype last = m_rest.lastIndexOf(kMarker); last >= 0) {
            m_rest.remove(0, last + kMarker.size());
            m_text.clear();
        }
        // What may be the beginning of a marker waits for the next piece.
        const qsizetype passed = std::max<qsizetype>(m_rest.size() - (kMarker.size() - 1), 0);
        take(m_rest.left(passed));
        m_rest.remove(0, passed);
    }

    QString atEnd() {
        take(std::exchange(m_rest, QString()));
        return m_text.isNull() ? QStringLiteral("") : m_text; // nothing printed is a text all the same
    }

private:
    void take(const QString &text) {
        m_text += text;
        m_text.truncate(kLongestVersion);
    }

    QString m_text;
    QString m_rest;
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
    VersionText version;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    auto buffer = std::make_unique<std::array<char, 65536>>();
    while (true) {
        const QByteArrayView piece = nextPiece(task->standardOutput.get(), *buffer);
        if (piece.isEmpty()) {
            break;
        }
        version.append(decoder.decode(piece));
    }
    tasks.terminationStatus(*task);
    [[maybe_unused]] const QString end =
        decoder.decode("."); // a character that is cut off shows when another one follows
    return decoder.hasError() ? QString() : version.atEnd();
}

} // namespace quillmark

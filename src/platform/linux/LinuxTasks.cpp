#include "platform/linux/LinuxTasks.h"

#include <QFile>
#include <cerrno>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace quillmark {

std::optional<int> LinuxTasks::run(const QString &path, const QStringList &arguments) {
    QByteArray program = QFile::encodeName(path);
    std::vector<QByteArray> texts;
    texts.reserve(static_cast<size_t>(arguments.size()));
    std::vector<char *> vector = {program.data()};
    for (const QString &argument : arguments) {
        vector.push_back(texts.emplace_back(QFile::encodeName(argument)).data());
    }
    vector.push_back(nullptr);

    pid_t child = 0;
    if (::posix_spawn(&child, program.constData(), nullptr, nullptr, vector.data(), environ) != 0) {
        return std::nullopt;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return std::nullopt;
        }
    }
    constexpr int kEndedBySignal = 128;
    return WIFEXITED(status) ? WEXITSTATUS(status) : kEndedBySignal + WTERMSIG(status);
}

} // namespace quillmark

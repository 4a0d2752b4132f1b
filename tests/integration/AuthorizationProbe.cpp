/// Uses the platform's authorization as its arguments say, and prints each status:
///   AuthorizationProbe STEP...   a step is "rights RIGHT", "run N PATH ARGUMENT...", "output N PATH ARGUMENT..." or
///                                "wait", where N counts the arguments; "output" prints what the program prints, too;
///                                "wait" prints "exit CODE", "signal NUMBER" or "none"
/// It begins when a line comes on standard input, and ends when that is closed.

#include "platform/Authorization.h"
#include "platform/Platform.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <sys/wait.h>

namespace {

std::string next(std::deque<std::string> &words) {
    std::string word = words.front();
    words.pop_front();
    return word;
}

void printOutput(quillmark::CommunicationsPipe &pipe) {
    std::array<char, 64> piece{};
    for (std::int64_t count = 0; (count = pipe.read(piece.data(), piece.size())) > 0;) {
        std::fwrite(piece.data(), 1, static_cast<size_t>(count), stdout);
    }
}

void execute(quillmark::Authorization::Reference &reference, bool isOutputWanted, std::deque<std::string> &words) {
    const int count = std::stoi(next(words));
    const std::string path = next(words);
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) {
        arguments.push_back(next(words));
    }
    std::unique_ptr<quillmark::CommunicationsPipe> pipe;
    const std::int32_t status = reference.executeWithPrivileges(path, arguments, isOutputWanted ? &pipe : nullptr);
    std::printf("%d\n", status);
    if (pipe != nullptr) {
        printOutput(*pipe);
    }
}

void wait(quillmark::Authorization::Reference &reference) {
    const std::optional<int> status = reference.waitForChild();
    if (!status) {
        std::puts("none");
    } else if (WIFEXITED(*status)) {
        std::printf("exit %d\n", WEXITSTATUS(*status));
    } else {
        std::printf("signal %d\n", WTERMSIG(*status));
    }
}

} // namespace

int main(int count, char **arguments) {
    std::deque<std::string> words(arguments + 1, arguments + count);
    std::getchar();
    std::unique_ptr<quillmark::Authorization::Reference> reference;
    std::printf("%d\n", quillmark::platform().authorization.create(reference));
    while (!words.empty()) {
        const std::string step = next(words);
        if (step == "rights") {
            std::printf("%d\n", reference->copyRights(next(words), 0x13));
        } else if (step == "wait") {
            wait(*reference);
        } else {
            execute(*reference, step == "output", words);
        }
        std::fflush(stdout);
    }
    while (std::getchar() != EOF) {
    }
    return EXIT_SUCCESS;
}

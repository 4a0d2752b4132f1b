#include "platform/process/Problem.h"

#include "platform/process/AtEnd.h"

#include <atomic>
#include <utility>

namespace quillmark {

namespace {
constinit std::atomic<void (*)(const std::string &)> reporter{nullptr};
thread_local std::vector<std::string> *heldBack = nullptr;
} // namespace

void reportProblem(const std::string &sentence) {
    if (heldBack != nullptr) {
        heldBack->push_back(sentence);
    } else if (auto *const report = reporter.load(std::memory_order_acquire); report != nullptr) {
        report(sentence);
    }
}

void setProblemReporter(void (*report)(const std::string &)) { reporter.store(report, std::memory_order_release); }

std::vector<std::string> problemsOf(const std::function<void()> &call) {
    std::vector<std::string> problems;
    const AtEnd released([before = std::exchange(heldBack, &problems)] { heldBack = before; });
    call();
    return problems;
}

} // namespace quillmark

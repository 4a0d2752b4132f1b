#include "platform/Problem.h"

#include <atomic>

namespace quillmark {

namespace {
constinit std::atomic<void (*)(const QString &)> reporter{nullptr};
} // namespace

void reportProblem(const QString &sentence) {
    if (auto *const report = reporter.load(std::memory_order_acquire); report != nullptr) {
        report(sentence);
    }
}

void setProblemReporter(void (*report)(const QString &)) { reporter.store(report, std::memory_order_release); }

} // namespace quillmark

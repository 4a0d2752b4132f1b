#include "platform/Problem.h"

#include <QScopedValueRollback>
#include <atomic>

namespace quillmark {

namespace {
constinit std::atomic<void (*)(const QString &)> reporter{nullptr};
thread_local QStringList *heldBack = nullptr;
} // namespace

void reportProblem(const QString &sentence) {
    if (heldBack != nullptr) {
        heldBack->append(sentence);
    } else if (auto *const report = reporter.load(std::memory_order_acquire); report != nullptr) {
        report(sentence);
    }
}

void setProblemReporter(void (*report)(const QString &)) { reporter.store(report, std::memory_order_release); }

QStringList problemsOf(const std::function<void()> &call) {
    QStringList problems;
    const QScopedValueRollback holdingBack(heldBack, &problems);
    call();
    return problems;
}

} // namespace quillmark

#pragma once

#include "fakes/Transcript.h"
#include "platform/Tasks.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>
#include <sys/mman.h>
#include <unistd.h>

namespace quillmark::test {

/// Programs that end with the status that was set for their last argument, else with the usual one. One that is to fail
/// at its n-th "run" ends with 4.
class FakeTasks final : public Tasks, public Recorder {
public:
    using Recorder::Recorder;

    std::map<std::string, int> statuses;
    int usualStatus = 1;
    std::map<std::string, std::string> outputs; ///< by path
    std::vector<std::string> unstartable;       ///< paths
    std::function<void()> onRun;                ///< called before each run
    std::function<void()> onLaunch;             ///< called before each launch
    std::vector<std::string> programFolders;    ///< of the runs
    bool canStart = true;

    std::optional<int> run(const std::string &path, const std::vector<std::string> &arguments,
                           const std::optional<std::string> &programFolder) override {
        if (programFolder) {
            programFolders.push_back(*programFolder);
        }
        if (onRun) {
            onRun();
        }
        constexpr int kFailure = 4;
        if (recordOrFail(callOf("run", path, arguments), "run")) {
            return kFailure;
        }
        const auto status = statuses.find(arguments.empty() ? "" : arguments.back());
        return canStart ? std::optional(status != statuses.end() ? status->second : usualStatus) : std::nullopt;
    }

    bool start(const std::string &path, const std::vector<std::string> &arguments,
               const std::optional<std::string> &programFolder) override {
        record(callOf("start", path, arguments));
        if (programFolder) {
            record("  with programs of " + *programFolder);
        }
        return canStart;
    }

    bool runUnwaited(const std::string &path, const std::vector<std::string> &arguments) override {
        record(callOf("start", path, arguments));
        return canStart;
    }

    /// A task that has ended at once, with the output that was set for its path.
    std::optional<PipedTask> launch(const std::string &path, const std::vector<std::string> &arguments,
                                    StandardError /*standardError*/) override {
        record(callOf("launch", path, arguments));
        if (onLaunch) {
            onLaunch();
        }
        if (!canStart || std::find(unstartable.begin(), unstartable.end(), path) != unstartable.end()) {
            return std::nullopt;
        }
        Descriptor output(::memfd_create("output", MFD_CLOEXEC));
        const std::string bytes = outputs.contains(path) ? outputs.at(path) : "";
        if (::write(output.get(), bytes.data(), bytes.size()) != std::ssize(bytes)) {
            std::abort();
        }
        ::lseek(output.get(), 0, SEEK_SET);
        return PipedTask{processIdentifier, std::move(output), {}, {}};
    }
    int terminationStatus(const PipedTask & /*task*/) override { return 0; }
    void abandon(const PipedTask & /*task*/) override { record("abandon"); }

    std::int32_t processIdentifier = 7;

private:
    static std::string callOf(const char *operation, const std::string &path,
                              const std::vector<std::string> &arguments) {
        return std::string(operation) + ' ' + path + ' ' + joined(arguments, " ");
    }
};

} // namespace quillmark::test

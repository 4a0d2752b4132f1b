#pragma once

#include "fakes/Transcript.h"
#include "platform/Application.h"

namespace quillmark::test {

/// Thrown where the process would end.
struct Terminated {};

class FakeApplication final : public Application, public Recorder {
public:
    using Recorder::Recorder;
    bool isActiveNow = true;

    bool isActive() const override { return isActiveNow; }
    void activateIgnoringOtherApps() override { record("activateIgnoringOtherApps"); }

    [[noreturn]] void terminate() override {
        record("terminate");
        throw Terminated();
    }

    [[noreturn]] void exitAtOnce() override {
        record("exitAtOnce");
        throw Terminated();
    }
    void run() override { record("run"); }
};

} // namespace quillmark::test

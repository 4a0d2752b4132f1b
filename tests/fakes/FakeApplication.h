#pragma once

#include "fakes/Transcript.h"
#include "platform/Application.h"

namespace quillmark::test {

/// Thrown where the process would end.
struct Terminated {};

class FakeApplication final : public Application {
public:
    explicit FakeApplication(Transcript &transcript) : m_transcript(transcript) {}
    bool isActiveNow = true;

    bool isActive() const override { return isActiveNow; }
    void activateIgnoringOtherApps() override { m_transcript.record("activateIgnoringOtherApps"); }

    [[noreturn]] void terminate() override {
        m_transcript.record("terminate");
        throw Terminated();
    }

    [[noreturn]] void exitAtOnce() override {
        m_transcript.record("exitAtOnce");
        throw Terminated();
    }
    void run() override { m_transcript.record("run"); }

private:
    Transcript &m_transcript;
};

} // namespace quillmark::test

#pragma once

#include "fakes/Transcript.h"
#include "platform/Scripts.h"

#include <functional>

namespace quillmark::test {

/// Scripts that do nothing but give the answer that was recorded for all of them.
class FakeScripts final : public Scripts, public Recorder {
public:
    using Recorder::Recorder;

    bool doesCompile = true;
    std::optional<ScriptDescriptor> answer;
    std::function<void()> onExecute = [] {};

    std::unique_ptr<Script> scriptWithSource(const std::string &source) override {
        return std::make_unique<RecordedScript>(*this, source);
    }

    static ScriptDescriptor text(const std::string &value) { return {ScriptDescriptor::Type::Text, value, false, {}}; }
    static ScriptDescriptor boolean(bool value) { return {ScriptDescriptor::Type::Boolean, std::nullopt, value, {}}; }
    static ScriptDescriptor list(std::vector<ScriptDescriptor> items) {
        return {ScriptDescriptor::Type::Items, std::nullopt, false, std::move(items)};
    }

private:
    class RecordedScript final : public Script {
    public:
        RecordedScript(FakeScripts &scripts, std::string source) : m_scripts(scripts), m_source(std::move(source)) {}

        bool compile() override {
            m_scripts.record("compile " + m_source);
            return m_scripts.doesCompile;
        }
        std::optional<ScriptDescriptor> execute() override {
            m_scripts.record("execute " + m_source);
            m_scripts.onExecute();
            return m_scripts.answer;
        }

    private:
        FakeScripts &m_scripts;
        std::string m_source;
    };
};

} // namespace quillmark::test

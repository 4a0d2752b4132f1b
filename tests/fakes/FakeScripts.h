#pragma once

#include "fakes/Transcript.h"
#include "platform/Scripts.h"

#include <functional>

namespace quillmark::test {

/// Scripts that do nothing but give the answer that was recorded for all of them.
class FakeScripts final : public Scripts {
public:
    explicit FakeScripts(Transcript &transcript) : m_transcript(transcript) {}

    bool doesCompile = true;
    std::optional<ScriptDescriptor> answer;
    std::function<void()> onExecute = [] {};

    std::unique_ptr<Script> scriptWithSource(const QString &source) override {
        return std::make_unique<RecordedScript>(*this, source);
    }

    static ScriptDescriptor text(const QString &value) { return {ScriptDescriptor::Type::Text, value, false, {}}; }
    static ScriptDescriptor boolean(bool value) { return {ScriptDescriptor::Type::Boolean, QString(), value, {}}; }
    static ScriptDescriptor list(std::vector<ScriptDescriptor> items) {
        return {ScriptDescriptor::Type::List, QString(), false, std::move(items)};
    }

private:
    class RecordedScript final : public Script {
    public:
        RecordedScript(FakeScripts &scripts, QString source) : m_scripts(scripts), m_source(std::move(source)) {}

        bool compile() override {
            m_scripts.m_transcript.record(QStringLiteral("compile ") + m_source);
            return m_scripts.doesCompile;
        }
        std::optional<ScriptDescriptor> execute() override {
            m_scripts.m_transcript.record(QStringLiteral("execute ") + m_source);
            m_scripts.onExecute();
            return m_scripts.answer;
        }

    private:
        FakeScripts &m_scripts;
        QString m_source;
    };

    Transcript &m_transcript;
};

} // namespace quillmark::test

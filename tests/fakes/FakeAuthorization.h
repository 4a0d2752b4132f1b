#pragma once

#include "fakes/Transcript.h"
#include "platform/Authorization.h"
#include "utils/FormattedText.h"

#include <deque>

namespace quillmark::test {

/// Grants or refuses what it was told to, runs nothing, and lets a program print what was set.
class FakeAuthorization final : public Authorization, public Recorder {
public:
    using Recorder::Recorder;

    std::int32_t createStatus = 0;
    std::int32_t rightsStatus = 0;
    std::int32_t executeStatus = 0;
    std::deque<std::optional<int>> childStatuses; ///< of the waits to come; 0 when there is none left
    std::string output;                           ///< what is left to be read from the program's pipe
    std::vector<std::int64_t> reads;              ///< how much each read asked for

    std::int32_t create(std::unique_ptr<Reference> &reference) override {
        record("AuthorizationCreate");
        if (createStatus == 0) {
            reference = std::make_unique<FakeReference>(*this);
        }
        return createStatus;
    }

private:
    class Pipe final : public CommunicationsPipe {
    public:
        explicit Pipe(FakeAuthorization &owner) : m_owner(owner) {}
        std::int64_t read(char *buffer, std::int64_t size) override {
            const size_t count = m_owner.output.copy(buffer, static_cast<size_t>(size));
            m_owner.output.erase(0, count);
            m_owner.reads.push_back(size);
            return static_cast<std::int64_t>(count);
        }

    private:
        FakeAuthorization &m_owner;
    };

    class FakeReference final : public Reference {
    public:
        explicit FakeReference(FakeAuthorization &owner) : m_owner(owner) {}
        FakeReference(const FakeReference &) = delete;
        FakeReference &operator=(const FakeReference &) = delete;
        ~FakeReference() override { m_owner.record("AuthorizationFree"); }

        std::int32_t copyRights(std::string_view right, std::uint32_t flags) override {
            m_owner.record(formatted("AuthorizationCopyRights %@ %x", right, flags));
            return m_owner.rightsStatus;
        }
        std::int32_t executeWithPrivileges(const std::string &path, const std::vector<std::string> &arguments,
                                           std::unique_ptr<CommunicationsPipe> *pipe) override {
            const std::string operation = "AuthorizationExecuteWithPrivileges";
            if (m_owner.recordOrFail(operation + ' ' + path + (arguments.empty() ? "" : " ") + joined(arguments, " "),
                                     operation)) {
                return kAuthorizationToolExecuteFailure;
            }
            if (pipe != nullptr) {
                *pipe = std::make_unique<Pipe>(m_owner);
            }
            return m_owner.executeStatus;
        }
        std::optional<int> waitForChild() override {
            m_owner.record("wait");
            return m_owner.nextChildStatus();
        }

    private:
        FakeAuthorization &m_owner;
    };

    std::optional<int> nextChildStatus() {
        if (childStatuses.empty()) {
            return 0;
        }
        const auto status = childStatuses.front();
        childStatuses.pop_front();
        return status;
    }
};

} // namespace quillmark::test

#pragma once

#include "fakes/Transcript.h"
#include "platform/UserDefaults.h"

#include <algorithm>

namespace quillmark::test {

class FakeUserDefaults final : public UserDefaults, public Recorder {
public:
    using Recorder::Recorder;

    Dictionary registered;
    Dictionary stored;
    std::optional<std::string> damaged;

    void registerDefaults(const Dictionary &values) override {
        std::vector<std::string> keys;
        for (const auto &[key, value] : values) {
            keys.push_back(key);
            registered.insert_or_assign(key, value);
        }
        record("registerDefaults " + joined(keys, ","));
    }
    Value objectForKey(std::string_view key) override {
        record("objectForKey " + std::string(key));
        const Value &value = valueOf(stored, key);
        return value.isNothing() ? valueOf(registered, key) : value;
    }
    void setObject(std::string_view key, const Value &value) override {
        record(kSetObject + std::string(key));
        if (value.isNothing()) {
            stored.erase(std::string(key));
        } else {
            stored.insert_or_assign(std::string(key), value);
        }
    }
    bool synchronize() override {
        const bool isWritten = !recordOrFail("synchronize", "synchronize");
        m_problem = isWritten ? std::nullopt : std::optional("can't be written");
        return isWritten;
    }
    bool change(const std::function<void()> &change) override {
        if (recordOrFail("change", "change")) {
            m_problem = "can't be read";
            return false;
        }
        const auto before = storedSoFar();
        change();
        return storedSoFar() == before || synchronize();
    }
    std::optional<std::string> problem() const override { return m_problem; }
    std::string file() const override { return "/preferences.plist"; }
    std::optional<std::string> damagedFile() const override { return damaged; }

private:
    std::ptrdiff_t storedSoFar() const {
        const auto isStored = [](const std::string &call) { return call.starts_with(kSetObject); };
        return std::count_if(transcript().calls().begin(), transcript().calls().end(), isStored);
    }

    static constexpr const char *kSetObject = "setObject ";

    std::optional<std::string> m_problem;
};

} // namespace quillmark::test

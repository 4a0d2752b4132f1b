#pragma once

#include "fakes/Transcript.h"
#include "platform/UserDefaults.h"

namespace quillmark::test {

class FakeUserDefaults final : public UserDefaults {
public:
    explicit FakeUserDefaults(Transcript &transcript) : m_transcript(transcript) {}

    QVariantMap registered;
    QVariantMap stored;
    QString damaged;

    void registerDefaults(const QVariantMap &values) override {
        m_transcript.record(QStringLiteral("registerDefaults ") + QStringList(values.keys()).join(u','));
        registered.insert(values);
    }
    QVariant objectForKey(const QString &key) override {
        m_transcript.record(QStringLiteral("objectForKey ") + key);
        return stored.value(key, registered.value(key));
    }
    void setObject(const QString &key, const QVariant &value) override {
        m_transcript.record(kSetObject + key);
        value.isValid() ? static_cast<void>(stored.insert(key, value)) : static_cast<void>(stored.remove(key));
    }
    bool synchronize() override {
        const bool isWritten = !m_transcript.recordOrFail(QStringLiteral("synchronize"), QStringLiteral("synchronize"));
        m_problem = isWritten ? QString() : QStringLiteral("can't be written");
        return isWritten;
    }
    bool change(const std::function<void()> &change) override {
        if (m_transcript.recordOrFail(QStringLiteral("change"), QStringLiteral("change"))) {
            m_problem = QStringLiteral("can't be read");
            return false;
        }
        const qsizetype before = m_transcript.calls().filter(kSetObject).size();
        change();
        return m_transcript.calls().filter(kSetObject).size() == before || synchronize();
    }
    QString problem() const override { return m_problem; }
    QString file() const override { return QStringLiteral("/preferences.plist"); }
    QString damagedFile() const override { return damaged; }

private:
    static inline const QString kSetObject = QStringLiteral("setObject ");

    Transcript &m_transcript;
    QString m_problem;
};

} // namespace quillmark::test

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
        m_transcript.record(QStringLiteral("setObject ") + key);
        value.isValid() ? static_cast<void>(stored.insert(key, value)) : static_cast<void>(stored.remove(key));
    }
    bool synchronize() override {
        return !m_transcript.recordOrFail(QStringLiteral("synchronize"), QStringLiteral("synchronize"));
    }
    QString file() const override { return QStringLiteral("/preferences.plist"); }
    QString damagedFile() const override { return damaged; }

private:
    Transcript &m_transcript;
};

} // namespace quillmark::test

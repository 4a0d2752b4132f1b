#pragma once

#include <QString>
#include <QVariantMap>
#include <optional>

namespace quillmark::test {

/// JSONEncoder's rules once more, one after the other, slow and without a thought for speed: what JSONEncoder is
/// compared with. The operations have the names and the meaning that they have there.
class JSONReference {
public:
    JSONReference() = delete;

    static QString createJSONStrFromDict(const QVariantMap &dictionary);
    static std::optional<QVariantMap> createObjFromJSONStr(const QString &text);
    static std::optional<QString> jsonStringForStr(const QString &text, quint64 &at, bool &error);
    static QVariant jsonNumberForStr(const QString &text, quint64 &at, bool &error);
    static QString stringByAddingJSONEscape(const QString &text);
    static QString stringByReplacingJSONEscape(const QString &text);
};

} // namespace quillmark::test

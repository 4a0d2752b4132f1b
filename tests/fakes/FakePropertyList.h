#pragma once

#include "platform/PropertyList.h"

#include <QMap>

namespace quillmark::test {

/// Documents by their bytes; all others are malformed.
class FakePropertyList final : public PropertyList {
public:
    QMap<QByteArray, QVariant> documents;

    QVariant parse(QByteArray document) const override { return documents.value(document); }
    std::optional<QByteArray> toXml(const QVariant &value) const override {
        const auto key = documents.key(value);
        return key.isEmpty() ? std::nullopt : std::optional(key);
    }
};

} // namespace quillmark::test

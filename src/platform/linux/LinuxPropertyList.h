#pragma once

#include "platform/PropertyList.h"

namespace quillmark {

class LinuxPropertyList final : public PropertyList {
public:
    QVariant parse(QByteArray document) const override;
    std::optional<QByteArray> toXml(const QVariant &value) const override;
};

/// The two readers behind parse(), and the writer.
QVariant parseXmlPropertyList(QByteArray document);
QVariant parseBinaryPropertyList(const QByteArray &document);
std::optional<QByteArray> writeXmlPropertyList(const QVariant &value);

} // namespace quillmark

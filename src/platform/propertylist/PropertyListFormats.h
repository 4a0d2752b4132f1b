#pragma once

#include "platform/PropertyList.h"

namespace quillmark {

class PropertyListFormats final : public PropertyList {
public:
    Value parse(std::string document) const override;
    std::optional<std::string> toXml(const Value &value) const override;
};

/// The two readers behind parse(), and the writer.
Value parseXmlPropertyList(std::string document);
Value parseBinaryPropertyList(const std::string &document);
std::optional<std::string> writeXmlPropertyList(const Value &value);

} // namespace quillmark

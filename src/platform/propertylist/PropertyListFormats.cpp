#include "platform/propertylist/PropertyListFormats.h"

namespace quillmark {

Value PropertyListFormats::parse(std::string document) const {
    if (document.starts_with("bplist")) {
        return parseBinaryPropertyList(document);
    }
    return parseXmlPropertyList(std::move(document));
}

std::optional<std::string> PropertyListFormats::toXml(const Value &value) const { return writeXmlPropertyList(value); }

} // namespace quillmark

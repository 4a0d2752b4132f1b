#include "platform/propertylist/PortablePropertyList.h"

namespace quillmark {

Value PortablePropertyList::parse(std::string document) const {
    if (document.starts_with("bplist")) {
        return parseBinaryPropertyList(document);
    }
    return parseXmlPropertyList(std::move(document));
}

std::optional<std::string> PortablePropertyList::toXml(const Value &value) const { return writeXmlPropertyList(value); }

} // namespace quillmark

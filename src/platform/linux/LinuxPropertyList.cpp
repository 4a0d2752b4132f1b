#include "platform/linux/LinuxPropertyList.h"

namespace quillmark {

Value LinuxPropertyList::parse(std::string document) const {
    if (document.starts_with("bplist")) {
        return parseBinaryPropertyList(document);
    }
    return parseXmlPropertyList(std::move(document));
}

std::optional<std::string> LinuxPropertyList::toXml(const Value &value) const { return writeXmlPropertyList(value); }

} // namespace quillmark

#include "platform/linux/LinuxPropertyList.h"

namespace quillmark {

QVariant LinuxPropertyList::parse(QByteArray document) const {
    if (document.startsWith("bplist")) {
        return parseBinaryPropertyList(document);
    }
    return parseXmlPropertyList(std::move(document));
}

std::optional<QByteArray> LinuxPropertyList::toXml(const QVariant &value) const { return writeXmlPropertyList(value); }

} // namespace quillmark

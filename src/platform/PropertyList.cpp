#include "platform/PropertyList.h"

#include "platform/ReadFile.h"

namespace quillmark {

QVariant PropertyList::read(const QString &path) const {
    auto contents = readRegularFile(path, kMaximumMemory);
    auto *document = std::get_if<QByteArray>(&contents);
    return document != nullptr ? parse(std::move(*document)) : QVariant();
}

} // namespace quillmark

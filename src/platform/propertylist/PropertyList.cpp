#include "platform/PropertyList.h"

#include "platform/files/ReadFile.h"
#include "platform/propertylist/PropertyListLimits.h"

namespace quillmark {

Value PropertyList::read(const std::string &path) const {
    auto contents = readRegularFile(path, kMaximumPropertyListMemory);
    auto *document = std::get_if<std::string>(&contents);
    return document != nullptr ? parse(std::move(*document)) : Value();
}

} // namespace quillmark

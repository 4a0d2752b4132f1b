#include "platform/UserDefaults.h"

#include "platform/ScalarText.h"

namespace quillmark {

std::optional<std::string> UserDefaults::stringForKey(std::string_view key) {
    const Value value = objectForKey(key);
    return value.is<bool>() ? std::nullopt : scalarText(value);
}

} // namespace quillmark

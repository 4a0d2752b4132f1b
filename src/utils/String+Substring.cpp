#include "utils/String+Substring.h"

#include "utils/FoldedCase.h"

namespace quillmark {

bool hasCaseInsensitiveSubstring(std::string_view text, std::string_view other) {
    return !other.empty() && foldedCase(text).find(foldedCase(other)) != std::u32string::npos;
}

} // namespace quillmark

#include "utils/String+Substring.h"

namespace quillmark {

bool hasCaseInsensitiveSubstring(QStringView text, QStringView other) {
    return !other.isEmpty() && text.contains(other, Qt::CaseInsensitive);
}

} // namespace quillmark

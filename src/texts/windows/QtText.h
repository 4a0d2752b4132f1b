#pragma once

#include <QString>
#include <string_view>

namespace quillmark {

/// A text of this program as the window library wants it.
inline QString qtText(std::string_view text) { return QString::fromUtf8(text.data(), std::ssize(text)); }

} // namespace quillmark

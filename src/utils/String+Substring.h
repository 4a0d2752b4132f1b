#pragma once

#include <QStringView>

namespace quillmark {

/// True when `other` occurs in `text`, whatever the letter case. An empty text occurs nowhere.
bool hasCaseInsensitiveSubstring(QStringView text, QStringView other);

} // namespace quillmark

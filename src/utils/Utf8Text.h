#pragma once

#include <QByteArrayView>
#include <QString>

namespace quillmark {

/// The text of UTF-8 bytes, a byte order mark included; null when they are no UTF-8, where Qt would put replacement
/// characters.
QString utf8Text(QByteArrayView bytes);

} // namespace quillmark

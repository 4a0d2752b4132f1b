#pragma once

#include <QStringView>
#include <QVariant>

namespace quillmark {

/// The number that a text begins with: white space, a sign, digits; what follows is passed over. 0 without a digit; the
/// nearest number when it is beyond 64 bits.
qint64 integerValue(QStringView text);

/// A number cut to an integer, or the number that a text begins with; 0 for anything else.
qint64 integerValueOf(const QVariant &value);

} // namespace quillmark

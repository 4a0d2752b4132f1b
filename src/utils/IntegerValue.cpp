#include "utils/IntegerValue.h"

#include <limits>

namespace quillmark {

qint64 integerValue(QStringView text) {
    constexpr quint64 kLargest = std::numeric_limits<qint64>::max();
    const QStringView trimmed = text.trimmed();
    const bool isNegative = trimmed.startsWith(u'-');
    qsizetype at = isNegative || trimmed.startsWith(u'+') ? 1 : 0;
    const quint64 limit = isNegative ? kLargest + 1 : kLargest;
    quint64 magnitude = 0;
    for (; at < trimmed.size() && trimmed[at] >= u'0' && trimmed[at] <= u'9'; ++at) {
        const auto digit = static_cast<quint64>(trimmed[at].unicode() - u'0');
        magnitude = magnitude > (limit - digit) / 10 ? limit : magnitude * 10 + digit;
    }
    return static_cast<qint64>(isNegative ? 0 - magnitude : magnitude);
}

qint64 integerValueOf(const QVariant &value) {
    switch (value.typeId()) {
    case QMetaType::QString:
        return integerValue(value.toString());
    case QMetaType::Float:
    case QMetaType::Double: {
        constexpr double kBound = 9223372036854775808.0; // 2^63
        const double number = value.toDouble();
        if (!(number > -kBound)) { // not a number included
            return number <= -kBound ? std::numeric_limits<qint64>::min() : 0;
        }
        return number < kBound ? static_cast<qint64>(number) : std::numeric_limits<qint64>::max();
    }
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return static_cast<qint64>(
            qMin(value.toULongLong(), static_cast<qulonglong>(std::numeric_limits<qint64>::max())));
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return value.toLongLong();
    default:
        return 0;
    }
}

} // namespace quillmark

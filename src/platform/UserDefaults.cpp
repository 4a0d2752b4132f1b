#include "platform/UserDefaults.h"

namespace quillmark {

QString UserDefaults::stringForKey(const QString &key) {
    const QVariant value = objectForKey(key);
    switch (value.typeId()) {
    case QMetaType::QString:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Int:
    case QMetaType::Double:
        return value.toString();
    default:
        return {};
    }
}

} // namespace quillmark

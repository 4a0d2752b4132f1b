#include "utils/BooleanValue.h"

#include <algorithm>

namespace quillmark {

bool booleanValueOf(const QVariant &value) {
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString().trimmed();
        const auto *const first = std::find_if(text.begin(), text.end(), [](QChar c) { return c != u'0'; });
        return first != text.end() && QStringView(u"YyTt123456789").contains(*first);
    }
    // A list or bytes that somebody put there are no answer.
    return value.typeId() != QMetaType::QByteArray && value.toBool();
}

} // namespace quillmark

#include "utils/Utf8Text.h"

#include <QStringDecoder>

namespace quillmark {

QString utf8Text(QByteArrayView bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder(bytes);
    if (decoder.hasError()) {
        return {};
    }
    return text.isNull() ? QStringLiteral("") : text;
}

} // namespace quillmark

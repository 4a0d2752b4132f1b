#include "utils/UUIDString.h"

#include <QUuid>

namespace quillmark {

QString UUIDString() { return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper(); }

} // namespace quillmark

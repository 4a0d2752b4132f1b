#pragma once

#include <QByteArray>

namespace quillmark {

/// Where the session's bus listens; empty when the session has none. The bus libraries would start one of their own
/// then.
QByteArray sessionBusAddress();

} // namespace quillmark

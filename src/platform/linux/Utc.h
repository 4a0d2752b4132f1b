#pragma once

#include <QtGlobal>
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
#include <QTimeZone>
#else
#include <QDateTime>
#endif

namespace quillmark {

/// What the newer Qt wants to be told for a date in UTC; the older knows only the former word for it.
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
inline constexpr auto kUtc = QTimeZone::UTC;
#else
inline constexpr auto kUtc = Qt::UTC;
#endif

} // namespace quillmark

#pragma once

#include <QAccessible>
#include <QString>
#include <ostream>

/// What GoogleTest prints of a window library's text in a failed expectation.
inline void PrintTo(const QString &text, std::ostream *stream) { *stream << '"' << text.toStdString() << '"'; }

namespace quillmark::test {

/// What assistive programs are told of it.
inline QAccessibleInterface &accessible(QObject &object) { return *QAccessible::queryAccessibleInterface(&object); }

} // namespace quillmark::test

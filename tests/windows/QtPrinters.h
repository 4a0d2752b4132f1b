#pragma once

#include <QString>
#include <ostream>

/// What GoogleTest prints of a window library's text in a failed expectation.
inline void PrintTo(const QString &text, std::ostream *stream) { *stream << '"' << text.toStdString() << '"'; }

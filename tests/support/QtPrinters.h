#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <ostream>

// What GoogleTest prints of the values in a failed expectation.

inline void PrintTo(const QString &text, std::ostream *stream) {
    *stream << (text.isNull() ? std::string("(null)") : '"' + text.toStdString() + '"');
}
inline void PrintTo(const QByteArray &bytes, std::ostream *stream) { *stream << '"' << bytes.toStdString() << '"'; }
inline void PrintTo(const QVariant &value, std::ostream *stream) {
    *stream << value.metaType().name() << ' ' << value.toString().toStdString();
}

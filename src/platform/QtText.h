#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmark {

// Qt's texts for those who still have them, and back.

inline QString qtText(std::string_view text) { return QString::fromUtf8(text.data(), std::ssize(text)); }
/// An absent text is a null one.
inline QString qtText(const std::optional<std::string> &text) {
    return text ? (text->empty() ? QStringLiteral("") : qtText(std::string_view(*text))) : QString();
}
inline QString qtText(const std::string &text) { return qtText(std::string_view(text)); }
inline QString qtText(const char *text) { return qtText(std::string_view(text)); }

inline std::optional<std::string> optionalText(const QString &text) {
    return text.isNull() ? std::nullopt : std::optional(text.toStdString());
}

inline QStringList qtTexts(const std::vector<std::string> &texts) {
    QStringList list;
    for (const std::string &text : texts) {
        list << qtText(text);
    }
    return list;
}

} // namespace quillmark

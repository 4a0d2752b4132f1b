#include "utils/VersionText.h"

#include "utils/Assert.h"
#include "utils/IntegerValue.h"
#include "utils/Log.h"
#include "utils/OneLine.h"

#include <QStringList>
#include <algorithm>
#include <limits>

namespace quillmark {

namespace {

/// The number that a text begins with, or the nearest one of the type.
template <class Number>
Number numberIn(const QString &text) {
    const qint64 least = std::numeric_limits<Number>::min();
    const qint64 most = std::numeric_limits<Number>::max();
    return static_cast<Number>(std::clamp(integerValue(text), least, most));
}

QString withoutParentheses(QString text) {
    const auto isParenthesis = [](QChar character) { return character == u'(' || character == u')'; };
    while (!text.isEmpty() && isParenthesis(text.back())) {
        text.chop(1);
    }
    while (!text.isEmpty() && isParenthesis(text.front())) {
        text.remove(0, 1);
    }
    return text;
}

} // namespace

MicrosoftStyleVersion microsoftStyleVersionFromString(const QString &text) {
    QString line = text.section(u'\n', 0, 0);
    line.remove(QStringLiteral("version "));
    for (const QChar dropped : {u'a', u'b', u'(', u')'}) {
        line.remove(dropped);
    }
    line.replace(u' ', u'.');
    const QStringList parts = line.split(u'.');
    if (parts.size() == 1) {
        return {numberIn<quint32>(parts[0]), 0, 0, 0};
    }
    if (parts.size() == 4) {
        return {numberIn<quint32>(parts[0]), numberIn<quint32>(parts[1]), numberIn<quint32>(parts[2]),
                numberIn<quint32>(parts[3])};
    }
    logError("Failed to extract version from string \"%@\"", onOneLine(text));
    return {};
}

qint32 buildNumberFromVersionStr(const QString &text) {
    const QStringList vAndB = text.split(u' ');
    QUILLMARK_ASSERT(vAndB.size() == 2, "[vAndB count] == 2", "utils");
    return numberIn<qint32>(withoutParentheses(vAndB[1]));
}

std::optional<ComponentVersion> parseVersionString(const QString &text) {
    const QStringList parts = text.split(u'.');
    if (parts.size() != 3) {
        return std::nullopt;
    }
    return ComponentVersion{numberIn<qint32>(parts[0]), numberIn<qint32>(parts[1]), numberIn<qint32>(parts[2])};
}

} // namespace quillmark

#include "utils/Log.h"
#include "utils/VersionText.h"

#include <QStringList>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

using namespace quillmark;

namespace {

// The rules once more, character by character and without any of the helpers.

QString dropped(const QString &text, const QString &piece) {
    QString result;
    for (qsizetype at = 0; at < text.size();) {
        if (text.mid(at, piece.size()) == piece) {
            at += piece.size();
        } else {
            result += text[at++];
        }
    }
    return result;
}

bool isBlank(QChar character) { return character.isSpace(); }

double number(const QString &text, double least, double most) {
    qsizetype at = 0;
    while (at < text.size() && isBlank(text[at])) {
        ++at;
    }
    const bool isNegative = at < text.size() && text[at] == u'-';
    if (at < text.size() && (text[at] == u'-' || text[at] == u'+')) {
        ++at;
    }
    double value = 0;
    for (; at < text.size() && text[at] >= u'0' && text[at] <= u'9'; ++at) {
        value = value * 10 + (text[at].unicode() - u'0');
    }
    return qBound(least, isNegative ? -value : value, most);
}

MicrosoftStyleVersion slowVersion(const QString &text) {
    QString line;
    for (const QChar character : text) {
        if (character == u'\n') {
            break;
        }
        line += character;
    }
    line = dropped(line, QStringLiteral("version "));
    for (const char letter : {'a', 'b', '(', ')'}) {
        line = dropped(line, QString(QLatin1Char(letter)));
    }
    QStringList pieces(QString{});
    for (const QChar character : line) {
        if (character == u'.' || character == u' ') {
            pieces.append(QString());
        } else {
            pieces.last() += character;
        }
    }
    constexpr double kMost = 4294967295.0;
    const auto at = [&pieces](qsizetype index) { return static_cast<quint32>(number(pieces[index], 0, kMost)); };
    if (pieces.size() == 1) {
        return {at(0), 0, 0, 0};
    }
    return pieces.size() == 4 ? MicrosoftStyleVersion{at(0), at(1), at(2), at(3)} : MicrosoftStyleVersion{};
}

std::optional<ComponentVersion> slowComponent(const QString &text) {
    QStringList pieces(QString{});
    for (const QChar character : text) {
        if (character == u'.') {
            pieces.append(QString());
        } else {
            pieces.last() += character;
        }
    }
    if (pieces.size() != 3) {
        return std::nullopt;
    }
    const auto at = [&pieces](qsizetype index) {
        return static_cast<qint32>(number(pieces[index], -2147483648.0, 2147483647.0));
    };
    return ComponentVersion{at(0), at(1), at(2)};
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int * /*count*/, char *** /*arguments*/) {
    _setStandardStreams(nullptr, nullptr); // most inputs are errors
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)); // NOLINT
    if (microsoftStyleVersionFromString(text) != slowVersion(text) || parseVersionString(text) != slowComponent(text)) {
        std::abort();
    }
    return 0;
}

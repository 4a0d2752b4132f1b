#include "utils/ErrorText.h"

#include "platform/Platform.h"
#include "platform/QtText.h"
#include "platform/SystemInfo.h"
#include "utils/Error.h"
#include "utils/Exception.h"

namespace quillmark {

namespace {

QString orNull(const QString &text) { return text.isNull() ? QStringLiteral("(null)") : text; }

} // namespace

QString errorExceptionToString(const Exception &exception) {
    QString text = exception.name() + QStringLiteral(" (") + _removeNewLinesInString(exception.reason()) + u')';
    const ExceptionStack stack = exception.stack();
    if (!stack) {
        return text;
    }
    QString indent;
    const QStringList newestFirst(stack->crbegin(), stack->crend());
    for (const QString &cause : newestFirst) {
        indent += QStringLiteral("  ");
        text += u'\n' + indent + QStringLiteral("Because:\n") + indent + cause;
    }
    return text;
}

Error errorFromException(const Exception &exception) {
    return {kErrorDomain,
            0,
            {{kLocalizedDescriptionKey, exception.reason()}, {kLocalizedFailureReasonKey, exception.name()}}};
}

QString nserrorToString(const Error &error) {
    return u'"' + orNull(error.failureReason()) + QStringLiteral("\" because \"") + orNull(error.description()) + u'"';
}

QString posixErrorToString(int errnum) {
    const auto text = platform().systemInfo.posixErrorText(errnum);
    if (!text) {
        return QStringLiteral("Unknown Posix error");
    }
    return QStringLiteral("Posix error ") + QString::number(errnum) + QStringLiteral(" (") + qtText(*text) + u')';
}

QString _removeNewLinesInString(const QString &string) {
    QString text = string;
    return text.remove(u'\r');
}

} // namespace quillmark

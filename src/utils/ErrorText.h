#pragma once

#include <QString>

namespace quillmark {

struct Error;
class Exception;

/// The exception as "name (reason)", then its causes, the newest first, each behind a line "Because:" and two blanks
/// further to the right. Carriage returns are dropped from the reason.
QString errorExceptionToString(const Exception &exception);

/// An error of kErrorDomain and code 0 whose description is the reason and whose failure reason is the name.
Error errorFromException(const Exception &exception);

/// "failure reason" because "description", both in quotation marks.
QString nserrorToString(const Error &error);

/// "Posix error N (text)", or "Unknown Posix error" for a number that the system has no text for.
QString posixErrorToString(int errnum);

/// The text without its carriage returns. Line feeds stay, whatever the name says.
QString _removeNewLinesInString(const QString &string);

} // namespace quillmark

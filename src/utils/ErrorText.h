#pragma once

#include <string>
#include <string_view>

namespace quillmark {

struct Error;
class Exception;

/// The exception as "name (reason)", then its causes, the newest first, each behind a line "Because:" and two blanks
/// further to the right. Carriage returns are dropped from the reason.
std::string errorExceptionToString(const Exception &exception);

/// An error of kErrorDomain and code 0 whose description is the reason and whose failure reason is the name.
Error errorFromException(const Exception &exception);

/// "failure reason" because "description", both in quotation marks.
std::string nserrorToString(const Error &error);

/// "Posix error N (text)", or "Unknown Posix error" for a number that the system has no text for.
std::string posixErrorToString(int errnum);

/// The text without its carriage returns. Line feeds stay, whatever the name says.
std::string _removeNewLinesInString(std::string_view string);

} // namespace quillmark

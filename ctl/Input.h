#pragma once

#include "platform/process/Descriptor.h"

#include <string>

namespace quillmark::ctl {

/// Stands for standard input among the files that are read, for standard output among the others.
inline constexpr const char *kStandardStream = "-";

/// Opens a file that a command names. What can't be opened, a folder included, is a Failure.
Descriptor openForReading(const std::string &name);

/// What is left of an open file. What can't be read is a Failure that names it.
std::string readAll(const Descriptor &file, const std::string &name);

/// Standard input to its end. What can't be read is a Failure.
std::string standardInput();

/// The same as text. What is no UTF-8 is a Failure, which does not repeat it.
std::string standardInputText();

/// The same less one final newline: a secret, which a command line would show to everybody.
std::string secretInput();
std::string secretInputText();

/// Registers the bundle's default preferences, and makes sure that the user's own could be read: what is out of reach
/// is not absent, but a Failure.
void requirePreferences();

} // namespace quillmark::ctl

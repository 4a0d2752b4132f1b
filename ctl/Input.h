#pragma once

#include <QByteArray>
#include <QString>

namespace quillmark::ctl {

/// Standard input to its end. What can't be read is a Failure.
QByteArray standardInput();

/// The same as text. What is no UTF-8 is a Failure, which does not repeat it.
QString standardInputText();

/// The same less one final newline: a secret, which a command line would show to everybody.
QByteArray secretInput();
QString secretInputText();

/// Registers the bundle's default preferences, and makes sure that the user's own could be read: what is out of reach
/// is not absent, but a Failure.
void requirePreferences();

} // namespace quillmark::ctl

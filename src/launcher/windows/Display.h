#pragma once

#include <string>

class QString;

namespace quillmark {

/// Makes an application with windows, and aborts the process where that is impossible.
bool tryDisplay();

/// Makes the process's QApplication, unless there is one. It lives until the process ends. Where tryDisplay() fails,
/// the process would be aborted. \param program the name by which desktops and assistive programs know it. \param
/// obstacle receives why there can be none, as a part of a sentence. \returns false when there can be none.
bool openDisplay(const QString &program, std::string &obstacle);

} // namespace quillmark

#pragma once

#include <QString>

namespace quillmark {

/// The absolute path of the running program's file, links resolved. Where /proc is hidden it is what the program was
/// started by; null when that leads nowhere.
QString executablePath();

} // namespace quillmark

#pragma once

class QString;

namespace quillmark {

/// Makes the process's QApplication, unless there is one. It lives until the process ends.
/// \param obstacle receives why there can be none, as a part of a sentence. \returns false when there can be none.
bool openDisplay(QString &obstacle);

} // namespace quillmark

#pragma once

#include "platform/values/Value.h"

namespace quillmark {
class UserManager;
}

namespace quillmark::ctl {

/// What the selected user may do and does: the value of each accessor, by its name.
Dictionary selectedUserFeatures(const UserManager &users);

} // namespace quillmark::ctl

#pragma once

#include "utils/Exception.h"

namespace quillmark {

/// What the platform raises for a program that can't be started.
inline Exception launchException() { return {"NSInvalidArgumentException", "launch path not accessible"}; }

} // namespace quillmark

#pragma once

#include "platform/process/Descriptor.h"

#include <string>

namespace quillmark {

class Clock;

/// Takes a lock that processes of one user take, until the descriptor is closed: on a file of that user, which is made
/// when it is missing, and which nobody else can open, and so can't lock. A holder keeps the lock for milliseconds;
/// when it is not to be had within ten seconds, many others waiting included, the descriptor is not open, and `errno`
/// says why.
Descriptor lockedFile(const std::string &path, Clock &clock);

} // namespace quillmark

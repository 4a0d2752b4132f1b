#pragma once

#include "platform/values/Value.h"

namespace quillmark::fuzz {

/// True when the values have the same types and contents all the way down. Unlike operator==: a number that is not a
/// number is the same as another one, and a date is the same to the second, which is what the XML form keeps.
bool sameValue(const Value &a, const Value &b);

/// Writes a value that was parsed as XML and reads it back; the process ends when another value comes out. Values with
/// a text that XML can't carry are passed over.
void requireRoundTrip(const Value &value);

} // namespace quillmark::fuzz

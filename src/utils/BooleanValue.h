#pragma once

namespace quillmark {

class Value;

/// A stored value as a boolean. Other programs write texts and numbers: a number other than zero is true, and so is a
/// text that begins with one of Y, y, T, t, 1 to 9, behind white space and zeros; all else is false.
bool booleanValueOf(const Value &value);

} // namespace quillmark

#pragma once

#include "platform/values/Value.h"

#include <string>
#include <string_view>

namespace quillmark::ctl {

/// A value as JSON in UTF-8, on one line or with four blanks of indentation. Dates are texts, and so are bytes; a real
/// that JSON has no form for is null.
std::string printedJson(const Value &value, bool isPretty);

/// The members of the JSON object that a text is; of a list or an object among them that it is one. What is no object
/// is a Failure, which says where a fault is.
Dictionary membersOfJson(std::string_view text);

} // namespace quillmark::ctl

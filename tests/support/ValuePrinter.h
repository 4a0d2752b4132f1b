#pragma once

#include "platform/values/ScalarText.h"
#include "platform/values/Value.h"

#include <ostream>

namespace quillmark {

/// What GoogleTest prints of a value in a failed expectation: its kind, and what it is made of.
inline void PrintTo(const Value &value, std::ostream *stream) {
    if (const auto *list = value.as<List>()) {
        *stream << "list (";
        for (const Value &element : *list) {
            PrintTo(element, stream);
            *stream << ", ";
        }
        *stream << ')';
    } else if (const auto *dictionary = value.as<Dictionary>()) {
        *stream << "dictionary (";
        for (const auto &[key, entry] : *dictionary) {
            *stream << key << ": ";
            PrintTo(entry, stream);
            *stream << ", ";
        }
        *stream << ')';
    } else if (const auto *bytes = value.as<Bytes>()) {
        *stream << "bytes " << bytes->data;
    } else if (const auto *date = value.as<Date>()) {
        *stream << "date " << date->time_since_epoch().count() << " ms";
    } else {
        *stream << (value.is<std::string>() ? "text "
                    : value.is<bool>()      ? "boolean "
                    : value.is<double>()    ? "double "
                    : value.is<float>()     ? "float "
                    : value.isNothing()     ? "nothing"
                                            : "integer ")
                << scalarText(value).value_or("");
    }
}

} // namespace quillmark

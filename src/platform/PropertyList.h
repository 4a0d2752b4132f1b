#pragma once

#include "platform/values/Value.h"

#include <optional>
#include <string>

namespace quillmark {

/// Property lists, in their XML and their binary form.
class PropertyList {
public:
    virtual ~PropertyList() = default;

    /// The document's root value. Nothing when the bytes are not a well-formed property list of either form, or when
    /// they exceed the limits of propertylist/PropertyListLimits.h. The document is taken over and may be parsed in
    /// place.
    virtual Value parse(std::string document) const = 0;

    /// The XML form; absent when a value has no place in a property list or a text holds a character that XML cannot
    /// carry.
    virtual std::optional<std::string> toXml(const Value &value) const = 0;

    /// The root value of the file; nothing when it can't be read or is not a property list.
    Value read(const std::string &path) const;
    /// The root dictionary of the file; empty when it can't be read or its root is not a dictionary.
    Dictionary readDictionary(const std::string &path) const { return read(path).dictionary(); }
};

} // namespace quillmark

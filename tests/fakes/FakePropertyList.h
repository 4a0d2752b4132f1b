#pragma once

#include "platform/PropertyList.h"

#include <map>

namespace quillmark::test {

/// Documents by their bytes; all others are malformed.
class FakePropertyList final : public PropertyList {
public:
    std::map<std::string, Value> documents;

    Value parse(std::string document) const override {
        const auto found = documents.find(document);
        return found != documents.end() ? found->second : Value();
    }
    std::optional<std::string> toXml(const Value &value) const override {
        for (const auto &[document, root] : documents) {
            if (root == value) {
                return document;
            }
        }
        return std::nullopt;
    }
};

} // namespace quillmark::test

#pragma once

#include "platform/Images.h"

#include <map>

namespace quillmark::test {

/// Pictures by path; every other file can't be read.
class FakeImages final : public Images {
public:
    std::map<std::string, Image> pictures;

    std::optional<Image> load(const std::string &path) const override {
        const auto found = pictures.find(path);
        return found != pictures.end() ? std::optional(found->second) : std::nullopt;
    }
    std::optional<Image> decode(const std::string &bytes, const std::string & /*name*/) const override {
        return load(bytes);
    }
};

} // namespace quillmark::test

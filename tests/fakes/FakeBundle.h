#pragma once

#include "platform/Bundle.h"

#include <algorithm>
#include <map>
#include <vector>

namespace quillmark::test {

/// A bundle in memory. A resource exists when it is in `resources`; its path is below the resource path.
class FakeBundle final : public Bundle {
public:
    std::string bundlePath = "/Applications/Quillmark.app";
    std::vector<std::string> resources;
    Dictionary information;
    std::map<std::string, std::string, std::less<>> strings = {{"ProductName", "Quillmark"}};
    mutable std::map<std::string, int> lookups; ///< how often each key was asked for

    std::string path() const override { return bundlePath; }
    std::string resourcePath() const override { return bundlePath + "/Contents/Resources"; }
    std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const override {
        const std::string file = std::string(name) + (type.empty() ? "" : ".") + std::string(type);
        const bool isThere = std::find(resources.begin(), resources.end(), file) != resources.end();
        return isThere ? std::optional(resourcePath() + '/' + file) : std::nullopt;
    }
    Dictionary infoDictionary() const override { return information; }
    std::string localizedString(std::string_view key) const override {
        ++lookups[std::string(key)];
        const auto text = strings.find(key);
        return text != strings.end() ? text->second : std::string(key);
    }
};

} // namespace quillmark::test

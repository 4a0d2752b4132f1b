#pragma once

#include "platform/Images.h"

namespace quillmark {

/// Reads BMP and PNG.
class PortableImages final : public Images {
public:
    std::optional<Image> load(const std::string &path) const override;
    std::optional<Image> decode(const std::string &bytes, const std::string &name) const override;
};

} // namespace quillmark

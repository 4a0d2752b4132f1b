#pragma once

#include "platform/Images.h"

#include <optional>
#include <string>

namespace quillmark {

/// Reads BMP and PNG.
class LinuxImages final : public Images {
public:
    std::optional<Image> load(const std::string &path) const override;
};

/// The picture in a file's bytes. \param name becomes Image::name.
std::optional<Image> decodeImage(const std::string &bytes, const std::string &name);

} // namespace quillmark

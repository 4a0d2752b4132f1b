#pragma once

#include "platform/Images.h"

namespace quillmark {

/// Reads BMP and PNG.
class LinuxImages final : public Images {
public:
    std::optional<Image> load(const QString &path) const override;
};

/// The picture in a file's bytes. \param name becomes Image::name.
std::optional<Image> decodeImage(const QByteArray &bytes, const QString &name);

} // namespace quillmark

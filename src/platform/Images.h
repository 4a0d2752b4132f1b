#pragma once

#include <optional>
#include <string>

namespace quillmark {

/// A decoded picture: rows from the top, four bytes a pixel (red, green, blue, alpha; not premultiplied).
struct Image {
    std::string name; ///< the file it came from, or the name of the resource
    int width = 0;
    int height = 0;
    std::string rgba;
};

/// Decodes pictures.
class Images {
public:
    virtual ~Images() = default;

    /// The picture in the file, or nothing when it is missing, is not a picture, or is more than 4096 pixels wide or
    /// high.
    virtual std::optional<Image> load(const std::string &path) const = 0;
    /// The picture that a file of these bytes holds. \param name becomes Image::name.
    virtual std::optional<Image> decode(const std::string &bytes, const std::string &name) const = 0;
};

} // namespace quillmark

#pragma once

#include "platform/windows/HeaderBranding.h"

namespace quillmark {

/// A header view that is to be drawn off screen.
struct HeaderPicture {
    HeaderBranding branding;
    std::optional<Image> logo; ///< in the place of the product's own
    bool useGenericBranding = false;
    bool useWelcomeBranding = false;
    bool isVisible = true;
    int width = 600;  ///< in points
    double scale = 1; ///< pixels in a point, from 1
};

} // namespace quillmark

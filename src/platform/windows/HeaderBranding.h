#pragma once

#include "platform/Images.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace quillmark {

/// Where a header view gets what it draws. It asks again at each drawing, so that a change of account shows.
struct HeaderBranding {
    std::string resourceFolder;                       ///< of the background images and the product's logo
    std::string title;                                ///< what it starts with: the product's name
    std::function<std::int32_t()> accountBrand;       ///< of the account in use, -1 without one
    std::function<std::int32_t()> configurationBrand; ///< of the launcher's configuration
    std::function<std::optional<Image>(std::int32_t brand)> brandedLogo; ///< nothing when none can be read
};

} // namespace quillmark

#pragma once

#include "platform/Images.h"

#include <QString>
#include <functional>

namespace quillmark {

/// Where a header view gets what it draws. It asks anew at each drawing, so that a change of account shows.
struct HeaderBranding {
    QString resourceFolder;                                        ///< of the background images and the product's logo
    QString title;                                                 ///< what it starts with: the product's name
    std::function<qint32()> accountBrand;                          ///< of the account in use, -1 without one
    std::function<qint32()> configurationBrand;                    ///< of the launcher's configuration
    std::function<std::optional<Image>(qint32 brand)> brandedLogo; ///< nothing when none can be read
};

} // namespace quillmark

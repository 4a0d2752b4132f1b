#pragma once

#include "platform/Images.h"
#include "texts/LocalizedStrings.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

/// A view that shows a logo beside other things, as the windows' header does.
class LogoView {
public:
    virtual ~LogoView() = default;
    virtual void setLogoImage(const Image &image) = 0;
};

/// A view that shows one picture.
class ImageView {
public:
    virtual ~ImageView() = default;
    virtual void setImage(const Image &image) = 0;
};

/// The brand of the account that is in use: its id, its product names, its logo.
///
/// Concurrency: logos on one thread at a time.
class BrandingManager {
public:
    /// Answers the brand id of the user who signed in last, -1 without one.
    using BrandProvider = std::function<std::int32_t()>;

    static BrandingManager &sharedManager();
    BrandingManager(const Bundle &bundle, const Images &images, LocalizedStrings &strings, BrandProvider brandProvider);

    std::string localisedString(std::string_view key) { return m_strings.localisedString(key); }
    std::string localisedStringStrippingBrandingSection(std::string_view section, std::string_view key) {
        return m_strings.localisedStringStrippingBrandingSection(section, key);
    }

    std::int32_t getBrandingID() const { return m_brandProvider(); }
    /// True for brand ids above 10000.
    bool isReseller() const;

    /// The logo of a brand: the downloaded one, the one shipped for brand 15, else the product's own. Nothing when that
    /// can't be read either. The image is named by its path when it was downloaded, else by its resource.
    std::optional<Image> getBrandedLogoImageForBrandID(std::int32_t brandID) const;
    std::optional<Image> getBrandedLogoImage() const { return getBrandedLogoImageForBrandID(getBrandingID()); }

    /// Hand the logo to a view; without a logo the view stays as it is.
    void setHeaderViewBrandedLogoImage(LogoView &headerView) const;
    void setBrandedLogoImage(ImageView &imageView) const;

private:
    std::optional<Image> resourceImage(const std::string &name) const;

    const Bundle &m_bundle;
    const Images &m_images;
    LocalizedStrings &m_strings;
    BrandProvider m_brandProvider;
    mutable std::string m_unreadableLogo; ///< the last one that the log was told of
};

} // namespace quillmark

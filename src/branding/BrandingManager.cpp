#include "branding/BrandingManager.h"

#include "accounts/KeyList.h"
#include "accounts/UserManager.h"
#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/files/HomeFolder.h"
#include "utils/FileManager.h"
#include "utils/Log.h"

#include <utility>

namespace quillmark {

namespace {

constexpr std::int32_t kNoBrand = -1;

std::int32_t brandOfSelectedUser() {
    const UserManager users;
    return users.objectForKeyAsInt(kUserBrandID, users.lastUsedUserName(), kNoBrand);
}

constexpr std::int32_t kLargestOwnBrand = 10000;
/// The only brand whose logo ships with the application.
constexpr std::int32_t kBrandWithShippedLogo = 15;

std::string logoName(std::int32_t brandID) { return formatted("logo-%d.bmp", brandID); }

} // namespace

BrandingManager &BrandingManager::sharedManager() {
    // Never destroyed: other threads may ask until the very end.
    static auto &instance = *new BrandingManager(platform().mainBundle, platform().images,
                                                 LocalizedStrings::sharedManager(), brandOfSelectedUser);
    return instance;
}

BrandingManager::BrandingManager(const Bundle &bundle, const Images &images, LocalizedStrings &strings,
                                 BrandProvider brandProvider)
    : m_bundle(bundle), m_images(images), m_strings(strings), m_brandProvider(std::move(brandProvider)) {}

bool BrandingManager::isReseller() const { return getBrandingID() > kLargestOwnBrand; }

std::optional<Image> BrandingManager::resourceImage(const std::string &name) const {
    auto image = m_images.load(m_bundle.pathForResource(name, "").value_or(""));
    if (image) {
        image->name = name;
    }
    return image;
}

std::optional<Image> BrandingManager::getBrandedLogoImageForBrandID(std::int32_t brandID) const {
    const std::string defaultName = logoName(1);
    const std::string name = logoName(brandID);
    const std::string path = expandingTilde(formatted("~/Library/Application Support/Quillmark/%@", name));
    std::optional<Image> image;
    if (__QMCurrentThreadFileManager().fileExists(path)) {
        image = m_images.load(path);
        if (!image && std::exchange(m_unreadableLogo, path) != path) { // a header asks each time it is drawn
            logError("The logo \"%@\" can't be read: it is damaged, or of a kind that isn't supported", path);
        }
    } else if (brandID == kBrandWithShippedLogo) {
        image = resourceImage(name);
    }
    return image ? image : resourceImage(defaultName);
}

void BrandingManager::setHeaderViewBrandedLogoImage(LogoView &headerView) const {
    if (const auto image = getBrandedLogoImage()) {
        headerView.setLogoImage(*image);
    }
}

void BrandingManager::setBrandedLogoImage(ImageView &imageView) const {
    if (const auto image = getBrandedLogoImage()) {
        imageView.setImage(*image);
    }
}

} // namespace quillmark

#include "branding/BrandingManager.h"

#include "accounts/KeyList.h"
#include "accounts/UserManager.h"
#include "platform/Bundle.h"
#include "platform/HomeFolder.h"
#include "platform/Platform.h"
#include "utils/Log.h"

#include <QFile>

namespace quillmark {

namespace {

constexpr qint32 kNoBrand = -1;

qint32 brandOfSelectedUser() {
    const UserManager users;
    return users.objectForKeyAsInt(kUserBrandID, users.lastUsedUserName(), kNoBrand);
}

constexpr qint32 kLargestOwnBrand = 10000;
/// The only brand whose logo ships with the application.
constexpr qint32 kBrandWithShippedLogo = 15;

QString logoName(qint32 brandID) { return formatted("logo-%d.bmp", brandID); }

} // namespace

BrandingManager &BrandingManager::sharedManager() {
    static BrandingManager instance(platform().mainBundle, platform().images, LocalizedStrings::sharedManager(),
                                    brandOfSelectedUser);
    return instance;
}

BrandingManager::BrandingManager(const Bundle &bundle, const Images &images, LocalizedStrings &strings,
                                 BrandProvider brandProvider)
    : m_bundle(bundle), m_images(images), m_strings(strings), m_brandProvider(std::move(brandProvider)) {}

bool BrandingManager::isReseller() const { return getBrandingID() > kLargestOwnBrand; }

std::optional<Image> BrandingManager::resourceImage(const QString &name) const {
    auto image = m_images.load(m_bundle.pathForResource(name, QString()));
    if (image) {
        image->name = name;
    }
    return image;
}

std::optional<Image> BrandingManager::getBrandedLogoImageForBrandID(qint32 brandID) const {
    const QString defaultName = logoName(1);
    const QString name = logoName(brandID);
    const QString path = expandingTilde(formatted("~/Library/Application Support/Quillmark/%@", name));
    std::optional<Image> image;
    if (QFile::exists(path)) {
        image = m_images.load(path);
    } else if (brandID == kBrandWithShippedLogo) {
        image = resourceImage(name);
    }
    return image ? image : resourceImage(defaultName);
}

void BrandingManager::setHeaderViewBrandedLogoImage(LogoView &headerView) const {
    if (const auto image = getBrandedLogoImage()) {
        headerView.setLogoImage(*image);
    } else {
        logError("There is no logo for brand %d: \"%@\" can't be read either", getBrandingID(), logoName(1));
    }
}

void BrandingManager::setBrandedLogoImage(ImageView &imageView) const {
    if (const auto image = getBrandedLogoImage()) {
        imageView.setImage(*image);
    }
}

} // namespace quillmark

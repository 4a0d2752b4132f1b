#include "branding/BrandingManager.h"
#include "support/LogFixture.h"

namespace quillmark {
namespace {

class RecordingView final : public LogoView, public ImageView {
public:
    void setLogoImage(const Image &image) override { logo = image.name; }
    void setImage(const Image &image) override { picture = image.name; }
    std::optional<std::string> logo;
    std::optional<std::string> picture;
};

class Branding : public test::LogFixture {
protected:
    Branding() {
        ship("logo-1.bmp");
        ship("logo-15.bmp");
    }
    void ship(const std::string &name) {
        bundle.resources.push_back(name);
        const std::string path = bundle.resourcePath() + '/' + name;
        images.pictures[path] = Image{path, 2, 1, {}};
    }
    std::string download(std::int32_t brandID, bool decodable) {
        const std::string path =
            home.write("Library/Application Support/Quillmark/logo-" + std::to_string(brandID) + ".bmp", "x");
        if (decodable) {
            images.pictures[path] = Image{path, 4, 3, {}};
        }
        return path;
    }
    std::optional<std::string> logoOf(std::int32_t brandID) const {
        const auto image = manager.getBrandedLogoImageForBrandID(brandID);
        return image ? std::optional(image->name) : std::nullopt;
    }
    /// Both kinds of view are given that logo.
    void expectHandedOver(const std::optional<std::string> &logo) {
        RecordingView view;
        manager.setHeaderViewBrandedLogoImage(view);
        manager.setBrandedLogoImage(view);
        EXPECT_EQ(view.logo, logo);
        EXPECT_EQ(view.picture, logo);
    }

    test::FakeBundle bundle;
    test::FakeImages images;
    LocalizedStrings strings{bundle};
    std::int32_t brand = -1;
    BrandingManager manager{bundle, images, strings, [this] { return brand; }};
};

TEST_F(Branding, ABrandAbove10000IsAResellers) {
    for (const auto &[id, reseller] : {std::pair(10000, false), {10001, true}, {-1, false}, {0, false}, {15, false}}) {
        brand = id;
        EXPECT_EQ(manager.isReseller(), reseller) << id;
        EXPECT_EQ(manager.getBrandingID(), id);
    }
}

TEST_F(Branding, ADownloadedLogoIsUsed) {
    const std::string path = download(77, true);
    EXPECT_EQ(logoOf(77), path);
    EXPECT_EQ(manager.getBrandedLogoImageForBrandID(77)->width, 4);
}

TEST_F(Branding, ADownloadedLogoThatCannotBeDecodedGivesWayToTheDefaultOne) {
    download(77, false);
    EXPECT_EQ(logoOf(77), "logo-1.bmp");
}

TEST_F(Branding, TheLogNamesALogoThatCannotBeDecodedOnceHoweverOftenItIsDrawn) {
    const std::string path = download(77, false);
    const std::string log = logToFile(kLogLevelError);
    for (int drawing = 0; drawing < 3; ++drawing) {
        logoOf(77);
    }
    EXPECT_EQ(linesOf(log), test::Lines{"ERR The logo \"" + path +
                                        "\" can't be read: it is damaged, or of a kind that isn't supported"});
}

TEST_F(Branding, AMissingLogoGivesWayToTheDefaultOne) {
    EXPECT_EQ(logoOf(77), "logo-1.bmp");
    EXPECT_EQ(logoOf(-1), "logo-1.bmp");
    EXPECT_EQ(logoOf(10001), "logo-1.bmp");
}

TEST_F(Branding, Brand15AloneHasItsLogoInTheApplication) {
    ship("logo-16.bmp");
    EXPECT_EQ(logoOf(15), "logo-15.bmp");
    EXPECT_EQ(logoOf(16), "logo-1.bmp"); // deliberate
}

TEST_F(Branding, Brand15sDownloadedLogoWinsOverTheShippedOne) {
    const std::string path = download(15, true);
    EXPECT_EQ(logoOf(15), path);
}

TEST_F(Branding, Brand15sUndecodableDownloadGivesTheDefaultLogoAndNotItsShippedOne) {
    download(15, false);
    EXPECT_EQ(logoOf(15), "logo-1.bmp");
}

TEST_F(Branding, Brand15WithoutItsResourceHasTheDefaultLogo) {
    std::erase(bundle.resources, "logo-15.bmp");
    EXPECT_EQ(logoOf(15), "logo-1.bmp");
}

TEST_F(Branding, WithoutAnyLogoThereIsNone) {
    bundle.resources.clear();
    EXPECT_EQ(logoOf(1), std::nullopt);
}

TEST_F(Branding, TheLogoIsThatOfTheCurrentBrand) {
    brand = 15;
    EXPECT_EQ(manager.getBrandedLogoImage()->name, "logo-15.bmp");
}

TEST_F(Branding, ViewsAreHandedTheLogo) { expectHandedOver("logo-1.bmp"); }

TEST_F(Branding, ViewsStayAsTheyAreWithoutALogo) {
    bundle.resources.clear();
    expectHandedOver(std::nullopt);
}

TEST_F(Branding, TextsAreHandedOn) {
    EXPECT_EQ(manager.localisedString("ProductName"), "Quillmark");
    bundle.strings["A_b"] = "section";
    EXPECT_EQ(manager.localisedStringStrippingBrandingSection("A", "b"), "section");
}

TEST(SharedBranding, AnswersNoBrandWhileNobodySignedIn) {
    test::immortalPlatform();
    EXPECT_EQ(BrandingManager::sharedManager().getBrandingID(), -1);
    EXPECT_FALSE(BrandingManager::sharedManager().isReseller());
    EXPECT_EQ(&BrandingManager::sharedManager(), &BrandingManager::sharedManager());
    installPlatform(nullptr);
}

} // namespace
} // namespace quillmark

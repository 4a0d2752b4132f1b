#include "branding/BrandingManager.h"
#include "fakes/FakePlatform.h"
#include "support/LogFixture.h"
#include "support/QtPrinters.h"

namespace quillmark {
namespace {

class Branding : public test::LogFixture {
protected:
    Branding() {
        ship(QStringLiteral("logo-1.bmp"));
        ship(QStringLiteral("logo-15.bmp"));
    }
    void ship(const QString &name) {
        bundle.resources << name;
        const QString path = bundle.resourcePath() + u'/' + name;
        images.pictures.insert(path, Image{path, 2, 1, {}});
    }
    QString download(qint32 brandID, bool decodable) {
        const QString path =
            home.write(QStringLiteral("Library/Application Support/Quillmark/logo-%1.bmp").arg(brandID), "x");
        if (decodable) {
            images.pictures.insert(path, Image{path, 4, 3, {}});
        }
        return path;
    }
    QString logoOf(qint32 brandID) const {
        const auto image = manager.getBrandedLogoImageForBrandID(brandID);
        return image ? image->name : QString();
    }

    test::FakeBundle bundle;
    test::FakeImages images;
    LocalizedStrings strings{bundle};
    qint32 brand = -1;
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
    const QString path = download(77, true);
    EXPECT_EQ(logoOf(77), path);
    EXPECT_EQ(manager.getBrandedLogoImageForBrandID(77)->width, 4);
}

TEST_F(Branding, ADownloadedLogoThatCannotBeDecodedGivesWayToTheDefaultOne) {
    download(77, false);
    EXPECT_EQ(logoOf(77), QStringLiteral("logo-1.bmp"));
}

TEST_F(Branding, TheLogNamesALogoThatCannotBeDecodedOnceHoweverOftenItIsDrawn) {
    const QString path = download(77, false);
    const QString log = logToFile(kLogLevelError);
    for (int drawing = 0; drawing < 3; ++drawing) {
        logoOf(77);
    }
    EXPECT_EQ(linesOf(log), QStringList{QStringLiteral("ERR The logo \"") + path +
                                        QStringLiteral("\" can't be read: it is damaged, or of a kind that isn't "
                                                       "supported")});
}

TEST_F(Branding, AMissingLogoGivesWayToTheDefaultOne) {
    EXPECT_EQ(logoOf(77), QStringLiteral("logo-1.bmp"));
    EXPECT_EQ(logoOf(-1), QStringLiteral("logo-1.bmp"));
    EXPECT_EQ(logoOf(10001), QStringLiteral("logo-1.bmp"));
}

TEST_F(Branding, Brand15AloneHasItsLogoInTheApplication) {
    ship(QStringLiteral("logo-16.bmp"));
    EXPECT_EQ(logoOf(15), QStringLiteral("logo-15.bmp"));
    EXPECT_EQ(logoOf(16), QStringLiteral("logo-1.bmp")); // deliberate
}

TEST_F(Branding, Brand15sDownloadedLogoWinsOverTheShippedOne) {
    const QString path = download(15, true);
    EXPECT_EQ(logoOf(15), path);
}

TEST_F(Branding, Brand15sUndecodableDownloadGivesTheDefaultLogoAndNotItsShippedOne) {
    download(15, false);
    EXPECT_EQ(logoOf(15), QStringLiteral("logo-1.bmp"));
}

TEST_F(Branding, Brand15WithoutItsResourceHasTheDefaultLogo) {
    bundle.resources.removeAll(QStringLiteral("logo-15.bmp"));
    EXPECT_EQ(logoOf(15), QStringLiteral("logo-1.bmp"));
}

TEST_F(Branding, WithoutAnyLogoThereIsNone) {
    bundle.resources.clear();
    EXPECT_TRUE(logoOf(1).isNull());
}

TEST_F(Branding, TheLogoIsThatOfTheCurrentBrand) {
    brand = 15;
    EXPECT_EQ(manager.getBrandedLogoImage()->name, QStringLiteral("logo-15.bmp"));
}

class RecordingView final : public LogoView, public ImageView {
public:
    void setLogoImage(const Image &image) override { logo = image.name; }
    void setImage(const Image &image) override { picture = image.name; }
    QString logo;
    QString picture;
};

TEST_F(Branding, ViewsAreHandedTheLogo) {
    RecordingView view;
    manager.setHeaderViewBrandedLogoImage(view);
    manager.setBrandedLogoImage(view);
    EXPECT_EQ(view.logo, QStringLiteral("logo-1.bmp"));
    EXPECT_EQ(view.picture, QStringLiteral("logo-1.bmp"));
}

TEST_F(Branding, ViewsStayAsTheyAreWithoutALogo) {
    bundle.resources.clear();
    RecordingView view;
    manager.setHeaderViewBrandedLogoImage(view);
    manager.setBrandedLogoImage(view);
    EXPECT_TRUE(view.logo.isNull());
    EXPECT_TRUE(view.picture.isNull());
}

TEST_F(Branding, TextsAreHandedOn) {
    EXPECT_EQ(manager.localisedString(QStringLiteral("ProductName")), QStringLiteral("Quillmark"));
    bundle.strings.insert(QStringLiteral("A_b"), QStringLiteral("section"));
    EXPECT_EQ(manager.localisedStringStrippingBrandingSection(QStringLiteral("A"), QStringLiteral("b")),
              QStringLiteral("section"));
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

// The header by numbers: in points, from the left and from below.

#include "WindowsRunLoop.h"
#include "platform/Bundle.h"
#include "platform/Images.h"
#include "platform/linux/windows/WindowModule.h"
#include "platform/windows/HeaderPicture.h"
#include "texts/windows/QtText.h"
#include "windows/HeaderFixture.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <climits>
#include <gmock/gmock.h>

namespace quillmark::test {

namespace {

using HeaderView = HeaderFixture;
using testing::AllOf;
using testing::Ge;
using testing::Le;

const QColor kSeparator(85, 85, 85);
constexpr const char *kLongTitle = "MMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMM";

/// Where a picture has a colour, in points. Empty when nowhere.
QRectF placeOf(const QColor &color, const QImage &image) {
    QRect place;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) == color) {
                place |= QRect(x, y, 1, 1);
            }
        }
    }
    const double scale = image.devicePixelRatio();
    return {place.x() / scale, (image.height() - place.y() - place.height()) / scale, place.width() / scale,
            place.height() / scale};
}

std::string storedAt(qreal scale, const char *name, const char *type) {
    return std::string(name) + (scale > 1 ? "@2x." : ".") + type;
}

/// A folder with some of the resources.
class Resources {
public:
    explicit Resources(HeaderBranding &branding) { branding.resourceFolder = m_folder.path().toStdString(); }
    void copy(const char *from, const char *to) const {
        ASSERT_TRUE(QFile::copy(QUILLMARK_APP "/Contents/Resources/" + QLatin1StringView(from),
                                m_folder.filePath(QLatin1StringView(to))));
    }
    void write(const char *name, const QByteArray &contents) const {
        QFile file(m_folder.filePath(QLatin1StringView(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size());
    }

private:
    QTemporaryDir m_folder;
};

/// Counts how often a widget is drawn.
class Drawings : public QObject {
public:
    explicit Drawings(QWidget &widget) { widget.installEventFilter(this); }
    /// Since the last call.
    int count() {
        QApplication::processEvents();
        return std::exchange(m_count, 0);
    }

protected:
    bool eventFilter(QObject * /*watched*/, QEvent *event) override {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

private:
    int m_count = 0;
};

/// Shows the window, until what it draws for that is counted.
void expose(QWidget &window, Drawings &drawings) {
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    drawings.count();
}

} // namespace

// Logos

TEST_F(HeaderView, ALogoStandsFifteenPointsFromTheRightInTheMiddle) {
    for (const qint32 brand : {1, 7}) {
        accountBrand = brand;
        view().setLogoImage(plainLogo(50, 30));
        EXPECT_EQ(placeOf(kLogoColor, draw()), QRectF(335, 15, 50, 30)) << brand;
    }
}

TEST_F(HeaderView, ALogoOfOddLeftoverHeightStandsHalfAPointLowerDeliberately) {
    brandedLogo = plainLogo(50, 45);
    view().setLogoImage(*brandedLogo);
    for (const qint32 brand : {1, 7}) {
        accountBrand = brand;
        EXPECT_EQ(placeOf(kLogoColor, draw()), QRectF(335, 7, 50, 45)) << brand;
        EXPECT_NE(at(350, 6.5), kLogoColor);
        EXPECT_EQ(at(350, 7.5), kLogoColor);
        EXPECT_EQ(at(350, 51.5), kLogoColor);
        EXPECT_NE(at(350, 52.5), kLogoColor);
    }
}

TEST_F(HeaderView, ALogoTwiceTooHighIsShrunkToHalf) {
    view().setLogoImage(plainLogo(200, 120));
    EXPECT_EQ(placeOf(kLogoColor, draw()), QRectF(285, 0, 100, 60));
}

TEST_F(HeaderView, ALogoAsHighAsTheViewIsNotShrunk) {
    view().setLogoImage(plainLogo(70, 60));
    EXPECT_EQ(placeOf(kLogoColor, draw()), QRectF(315, 0, 70, 60));
}

TEST_F(HeaderView, ALogoAPointTooHighIsShrunk) {
    view().setLogoImage(plainLogo(122, 61));
    EXPECT_EQ(placeOf(kLogoColor, draw()), QRectF(265, 0, 120, 60));
}

TEST_F(HeaderView, ALogoWiderThanTheViewReachesBeyondItsLeftEdge) {
    view().setLogoImage(plainLogo(900, 30));
    EXPECT_EQ(placeOf(kLogoColor, draw()), QRectF(0, 15, 385, 30));
}

TEST_F(HeaderView, ALogoLetsTheGroundThrough) {
    accountBrand = 15;
    brandedLogo = plainLogo(50, 30, QColor(255, 255, 255, 0));
    EXPECT_EQ(at(350, 30), QColor(Qt::black));
}

TEST_F(HeaderView, TheOwnLogoIsReplacedForTheOwnBrandOnly) {
    view().setLogoImage(plainLogo(50, 30, Qt::green));
    EXPECT_EQ(at(350, 30), QColor(Qt::green));
    EXPECT_TRUE(logosAskedFor.empty());
    accountBrand = 7;
    EXPECT_EQ(at(350, 30), kLogoColor);
    EXPECT_EQ(logosAskedFor, std::vector<qint32>{7});
}

// The separator

TEST_F(HeaderView, OtherBrandsHaveADarkGreyLineAPointHighAtTheLowerEdge) {
    for (const qint32 brand : {-1, 15, 7, 10001}) {
        accountBrand = brand;
        EXPECT_EQ(placeOf(kSeparator, draw().copy(0, static_cast<int>(50 * scale()), 1000, 1000)).height(), 1) << brand;
        for (const double x : {0.0, 200.0, 399.5}) {
            EXPECT_EQ(at(x, 0), kSeparator) << brand;
            EXPECT_EQ(at(x, 0.5), kSeparator) << brand;
            EXPECT_NE(at(x, 1), kSeparator) << brand;
        }
    }
}

TEST_F(HeaderView, TheLineLiesAboveALogoOfFullHeight) {
    accountBrand = 7;
    brandedLogo = plainLogo(70, 60);
    EXPECT_EQ(placeOf(kLogoColor, draw()), QRectF(315, 1, 70, 59));
}

TEST_F(HeaderView, TheOwnBrandHasNoLine) {
    EXPECT_NE(at(200, 0.5), kSeparator);
    view().setUseGenericBranding(true);
    EXPECT_NE(at(200, 0.5), kSeparator);
}

// The title

TEST_F(HeaderView, TheTitleStandsInItsRectangle) {
    branding.title = "MMÅg";
    for (const qint32 brand : {7, 15}) {
        accountBrand = brand;
        const QRectF text = placeOf(brand == 15 ? Qt::white : Qt::black, draw());
        const QRectF inner = brand == 15 ? text : text.intersected(QRectF(0, 0, 200, 60));
        EXPECT_THAT(inner.left(), AllOf(Ge(20), Le(23)));
        EXPECT_GE(inner.top(), 20);
        EXPECT_LE(inner.bottom(), 40);
        EXPECT_GE(inner.height(), 14);
    }
}

TEST_F(HeaderView, LettersOfAnotherFontStandOnTheSameLine) {
    accountBrand = 15;
    const QRect letter((QPointF(20, 0) * scale()).toPoint(), (QSizeF(15, 60) * scale()).toSize());
    view().setTitle("M");
    const QImage alone = draw().copy(letter);
    view().setTitle("M確認");
    EXPECT_EQ(draw().copy(letter), alone);
}

TEST_F(HeaderView, TheTitleIsCutOffByTheWidthThatTheOwnLogoIsDrawnWith) {
    branding.title = kLongTitle;
    view().setLogoImage(plainLogo(200, 120));
    EXPECT_THAT(placeOf(Qt::white, draw()).right(), AllOf(Ge(260), Le(280))); // up to 400 - 100 - 40 points wide
}

TEST_F(HeaderView, TheTitleIsCutOffByTheWidthThatAnotherLogoWouldHaveUnscaledDeliberately) {
    branding.title = kLongTitle;
    accountBrand = 15;
    brandedLogo = plainLogo(200, 120);
    EXPECT_THAT(placeOf(Qt::white, draw()).right(), AllOf(Ge(160), Le(180))); // up to 400 - 200 - 40 points wide
}

TEST_F(HeaderView, TheTitleOfAResellersWelcomeHasTheWholeWidth) {
    branding.title = kLongTitle;
    configurationBrand = 10001;
    view().setUseWelcomeBranding(true);
    EXPECT_THAT(placeOf(Qt::black, draw()).right(), AllOf(Ge(360), Le(380))); // up to 400 - 40 points wide
}

TEST_F(HeaderView, TheGenericTitleHasNoLimit) {
    branding.title = kLongTitle;
    view().setUseGenericBranding(true);
    EXPECT_GT(placeOf(Qt::white, draw()).right(), 390);
}

TEST_F(HeaderView, TheTitleIsLeftOutWhereTheLogoLeavesNoRoom) {
    accountBrand = 15;
    for (const int logoWidth : {360, 361, 4000}) {
        brandedLogo = plainLogo(logoWidth, 4);
        EXPECT_TRUE(placeOf(Qt::white, draw()).isEmpty()) << logoWidth;
    }
}

TEST_F(HeaderView, ATitleThatFitsIsNotCutOff) {
    accountBrand = 15;
    const QImage narrow = draw();
    view().resize(1000, 60);
    const QImage wide = draw();
    const QRect left(0, 0, static_cast<int>(150 * scale()), static_cast<int>(60 * scale()));
    EXPECT_EQ(narrow.copy(left), wide.copy(left));
}

TEST_F(HeaderView, AnEmptyTitleLeavesNothing) {
    branding.title.clear();
    accountBrand = 15;
    EXPECT_TRUE(placeOf(Qt::white, draw()).isEmpty());
    view().setUseGenericBranding(true);
    EXPECT_TRUE(placeOf(Qt::white, draw()).isEmpty());
}

TEST_F(HeaderView, TheLettersAreSixteenPixelsHighInEveryResolution) {
    branding.title = "M";
    accountBrand = 15;
    const QRectF text = placeOf(Qt::white, draw());
    EXPECT_NEAR(text.height(), 0.73 * 16, 1); // a capital's height in this font
}

// Brands

struct BrandColors {
    qint32 brand;
    char ground;        ///< own, black, white, reseller
    char welcomeGround; ///< with the configuration's brand; 'n' is white without a logo
};

void PrintTo(const BrandColors &colors, std::ostream *stream) { *stream << "brand " << colors.brand; }

class HeaderBrands : public HeaderFixture, public testing::WithParamInterface<BrandColors> {
protected:
    HeaderBrands() { width = 600; } // in which the stored grounds are not stretched

    QColor colorOf(char ground) {
        if (ground == 'o' || ground == 'r') {
            const char *name = ground == 'o' ? "appheade_bg" : "resellerheader_bg";
            const QImage stored(qtText(resource(storedAt(scale(), name, "png"))));
            return stored.pixelColor(static_cast<int>(5 * scale()),
                                     stored.height() - 1 - static_cast<int>(5 * scale()));
        }
        return ground == 'b' ? Qt::black : Qt::white;
    }
    bool hasTextOf(const QColor &color) { return placeOf(color, draw()).intersects(QRectF(20, 20, 100, 20)); }
    void expect(char ground) {
        EXPECT_EQ(at(5, 5), colorOf(ground));
        const bool isDark = ground == 'o' || ground == 'b';
        EXPECT_EQ(at(350, 30) == kLogoColor, ground != 'n' && ground != 'o');
        EXPECT_EQ(at(350, 0.5) == kSeparator, ground != 'o');
        EXPECT_TRUE(hasTextOf(isDark ? Qt::white : Qt::black));
    }
};

TEST_P(HeaderBrands, OfAccountsDecideTheGround) {
    brandedLogo = plainLogo(400, 30);
    accountBrand = GetParam().brand;
    expect(GetParam().ground);
    EXPECT_EQ(logosAskedFor.empty(), accountBrand == 1);
    EXPECT_THAT(logosAskedFor, testing::Each(accountBrand));
}

TEST_P(HeaderBrands, OfTheConfigurationDecideTheGroundOfAWelcome) {
    brandedLogo = plainLogo(400, 30);
    accountBrand = 7;
    configurationBrand = GetParam().brand;
    view().setUseWelcomeBranding(true);
    expect(GetParam().welcomeGround);
    EXPECT_EQ(logosAskedFor.empty(), GetParam().brand != 15);
}

TEST_P(HeaderBrands, DoNotMatterInTheGenericForm) {
    accountBrand = GetParam().brand;
    view().setUseGenericBranding(true);
    expect('o');
    EXPECT_NE(at(530, 30), kLogoColor);
    EXPECT_TRUE(logosAskedFor.empty());
}

constexpr BrandColors kBrands[] = {{INT32_MIN, 'w', 'o'}, {-1, 'w', 'o'},    {0, 'w', 'o'},        {1, 'o', 'o'},
                                   {2, 'w', 'o'},         {14, 'w', 'o'},    {15, 'b', 'b'},       {16, 'w', 'o'},
                                   {10000, 'w', 'o'},     {10001, 'r', 'n'}, {INT32_MAX, 'r', 'n'}};
INSTANTIATE_TEST_SUITE_P(Header, HeaderBrands, testing::ValuesIn(kBrands), [](const auto &colors) {
    const qint64 brand = colors.param.brand;
    return (brand < 0 ? "minus" : "brand") + std::to_string(std::abs(brand));
});

TEST_F(HeaderView, AResellersWelcomeComesBeforeTheGenericForm) {
    configurationBrand = 10001;
    view().setUseWelcomeBranding(true);
    view().setUseGenericBranding(true);
    EXPECT_EQ(at(5, 5), QColor(Qt::white));
    EXPECT_EQ(at(5, 0.5), kSeparator);
}

TEST_F(HeaderView, TheGenericFormComesBeforeBrand15OfAWelcome) {
    configurationBrand = 15;
    view().setUseWelcomeBranding(true);
    view().setUseGenericBranding(true);
    EXPECT_NE(at(5, 5), QColor(Qt::black));
}

TEST_F(HeaderView, AChangeOfTheAccountShowsAtTheNextDrawing) {
    accountBrand = 15;
    EXPECT_EQ(at(5, 5), QColor(Qt::black));
    accountBrand = 7;
    EXPECT_EQ(at(5, 5), QColor(Qt::white));
}

TEST_F(HeaderView, ANotVisibleHeaderDrawsNothingAndAsksForNothing) {
    accountBrand = 7;
    view().setHeaderVisible(false);
    EXPECT_EQ(placeOf(kNothing, draw()), QRectF(0, 0, 400, 60));
    EXPECT_TRUE(logosAskedFor.empty());
    view().setHeaderVisible(true);
    EXPECT_TRUE(placeOf(kNothing, draw()).isEmpty());
}

TEST_F(HeaderView, AGroundOfTheWindowsShowsWhereThePictureIsMissingAndOnlyWhileTheHeaderIsVisible) {
    const Resources none(branding);
    view().setGround(Qt::darkBlue);
    EXPECT_EQ(at(5, 5), QColor(Qt::darkBlue));
    view().setHeaderVisible(false);
    EXPECT_EQ(placeOf(kNothing, draw()), QRectF(0, 0, 400, 60));
}

// Sizes and resolutions

TEST_F(HeaderView, IsSixtyPointsHigh) {
    EXPECT_EQ(view().sizeHint().height(), 60);
    EXPECT_EQ(view().minimumSizeHint().height(), 60);
    EXPECT_EQ(view().sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
}

TEST_F(HeaderView, InAHigherFrameEverythingStaysAtItsHeightFromBelow) {
    view().resize(400, 80);
    view().setLogoImage(plainLogo(50, 30));
    EXPECT_EQ(placeOf(kNothing, draw()), QRectF(0, 60, 400, 20)) << "the product's ground is 60 points high";
    EXPECT_EQ(placeOf(kLogoColor, draw()), QRectF(335, 15, 50, 30));
    accountBrand = 15;
    EXPECT_EQ(at(5, 79), QColor(Qt::black)) << "a plain ground fills the frame";
    const QRectF text = placeOf(Qt::white, draw());
    EXPECT_GE(text.top(), 20);
    EXPECT_LE(text.bottom(), 40);
}

TEST_F(HeaderView, InAFrameWithoutAnyWidthNothingHappens) {
    view().resize(0, 60);
    EXPECT_TRUE(draw().isNull());
    view().resize(1, 60);
    EXPECT_FALSE(draw().isNull());
}

TEST_F(HeaderView, GroundsAreStretchedOverTheWholeWidth) {
    const QImage stored(qtText(resource("appheade_bg.png")));
    for (const int points : {300, 600, 1500}) {
        view().resize(points, 60);
        for (const auto &[x, there] : {std::pair{0.5, 0}, {points - 1.0, 599}}) {
            const QColor expected = stored.pixelColor(there, 5);
            const QColor drawn = at(x, 54.5);
            EXPECT_NEAR(drawn.red(), expected.red(), 4) << points;
            EXPECT_NEAR(drawn.blue(), expected.blue(), 4) << points;
        }
    }
}

TEST_F(HeaderView, PicturesAreDrawnPixelByPixelAtTheScreensResolution) {
    width = 600;
    branding.title.clear();
    view().setUseGenericBranding(true);
    const auto format = QImage::Format_RGB32;
    const QString ground = qtText(resource(storedAt(scale(), "appheade_bg", "png")));
    EXPECT_EQ(draw().convertToFormat(format), QImage(ground).convertToFormat(format));

    view().setUseGenericBranding(false);
    accountBrand = 15;
    brandedLogo = nativePlatform().images.load(resource("logo-15.bmp"));
    brandedLogo->name = "logo-15.bmp";
    QImage logo = QImage(qtText(resource(storedAt(scale(), "logo-15", "bmp")))).convertToFormat(format);
    const QPointF corner(600 - 120 - 15, 8);
    QImage drawn = draw().copy(QRect((corner * scale()).toPoint(), logo.size())).convertToFormat(format);
    drawn.setDevicePixelRatio(1);
    logo.setDevicePixelRatio(1);
    EXPECT_EQ(drawn, logo);
}

TEST_F(HeaderView, ADownloadedLogoHasNoTwinOfDoubleResolution) {
    accountBrand = 15;
    brandedLogo = nativePlatform().images.load(resource("logo-15.bmp"));
    const QImage withoutTwin = draw();
    brandedLogo->name = "logo-15.bmp";
    EXPECT_EQ(draw() == withoutTwin, scale() == 1);
}

TEST_F(HeaderView, ATwinOfAnotherSizeIsNotTaken) {
    width = 600;
    const Resources resources(branding);
    resources.copy("appheade_bg.png", "appheade_bg.png");
    resources.copy("appheader_logo@2x.png", "appheade_bg@2x.png");
    view().setUseGenericBranding(true);
    const QColor stored = QImage(qtText(resource("appheade_bg.png"))).pixelColor(300, 10);
    EXPECT_NEAR(at(300.5, 49.5).blue(), stored.blue(), 3);
}

// Pictures at fault

TEST_F(HeaderView, WithoutResourcesTheTitleStandsAlone) {
    const Resources none(branding);
    EXPECT_EQ(at(5, 5), kNothing);
    EXPECT_FALSE(placeOf(Qt::white, draw()).isEmpty());
    accountBrand = 10001;
    EXPECT_EQ(at(5, 5), kNothing);
    EXPECT_EQ(at(350, 30), kLogoColor);
    EXPECT_EQ(at(5, 0.5), kSeparator);
}

TEST_F(HeaderView, DamagedResourcesAreLeftOut) {
    QFile whole(qtText(resource("appheade_bg.png")));
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    for (const QByteArray &contents : {QByteArray(), QByteArray("no picture"), whole.readAll().first(60)}) {
        HeaderBranding damaged = branding;
        const Resources resources(damaged);
        for (const char *name : {"appheade_bg", "resellerheader_bg", "appheader_logo"}) {
            for (const char *ending : {".png", "@2x.png"}) {
                resources.write((std::string(name) + ending).c_str(), contents);
            }
        }
        QuillmarkHeaderView header(damaged);
        header.setPalette(view().palette());
        header.resize(400, 60);
        const QImage drawn = header.grab().toImage();
        EXPECT_EQ(drawn.pixelColor(5, 5), kNothing);
        EXPECT_EQ(drawn.pixelColor(drawn.width() - 50, 30), kNothing);
        EXPECT_FALSE(placeOf(Qt::white, drawn).isEmpty());
    }
}

TEST_F(HeaderView, ABrandWithoutALogoHasARectangleForTheTitleUpToTheMargin) {
    branding.title = kLongTitle;
    accountBrand = 15;
    brandedLogo.reset();
    EXPECT_THAT(placeOf(Qt::white, draw()).right(), AllOf(Ge(360), Le(380)));
}

TEST_F(HeaderView, ALogoThatIsNoneIsLeftOut) {
    accountBrand = 15;
    brandedLogo.reset();
    const QImage without = draw();
    const std::string tooShort(50 * 30 * 4 - 1, '\x7f');
    for (const Image &image :
         {Image{}, Image{{}, 50, 30, tooShort}, Image{{}, 0, 30, tooShort}, Image{{}, 50, 0, tooShort},
          Image{{}, -50, -30, tooShort}, Image{{}, INT_MAX, INT_MAX, tooShort}}) {
        brandedLogo = image;
        EXPECT_EQ(draw(), without);
        view().setLogoImage(image);
    }
    accountBrand = 1;
    EXPECT_FALSE(placeOf(Qt::white, draw()).isEmpty());
}

// Redrawing

TEST_F(HeaderView, ATitleIsDrawnAnewEvenWhenItIsTheSame) {
    Drawings drawings(view());
    expose(view(), drawings);
    EXPECT_EQ(drawings.count(), 0);
    view().setTitle("Quillmark");
    EXPECT_EQ(drawings.count(), 1);
    view().setTitle("Welcome");
    EXPECT_EQ(drawings.count(), 1);
}

TEST_F(HeaderView, ALogoIsDrawnAnewInAVisibleWindow) {
    QWidget window;
    view().setParent(&window);
    view().show();
    Drawings drawings(view());
    view().setLogoImage(plainLogo(10, 10));
    EXPECT_EQ(drawings.count(), 0);
    expose(window, drawings);
    view().setLogoImage(plainLogo(20, 20));
    EXPECT_EQ(drawings.count(), 1);
    window.hide();
    drawings.count();
    view().setLogoImage(plainLogo(30, 30));
    EXPECT_EQ(drawings.count(), 0);
    EXPECT_EQ(placeOf(kLogoColor, draw()).width(), 30) << "the logo is kept for the next drawing";
    view().setParent(nullptr);
}

TEST_F(HeaderView, TheFlagsShowAtTheNextDrawingOnly) {
    Drawings drawings(view());
    expose(view(), drawings);
    view().setUseGenericBranding(true);
    view().setUseWelcomeBranding(true);
    view().setHeaderVisible(false);
    EXPECT_EQ(drawings.count(), 0);
    EXPECT_TRUE(view().isVisible()) << "the view keeps its place";
}

// Assistive programs

TEST_F(HeaderView, TellsScreenReadersItsTitleAsAHeading) {
    QAccessibleInterface &heading = accessible(view());
    EXPECT_EQ(heading.role(), QAccessible::Heading);
    EXPECT_EQ(heading.text(QAccessible::Name), "Quillmark");
    view().setTitle("Welcome & hello");
    EXPECT_EQ(heading.text(QAccessible::Name), "Welcome & hello");
}

// Off screen

TEST_F(HeaderView, TheModuleDrawsWhatTheViewDraws) {
    const auto bundle = nativeBundle(QUILLMARK_APP);
    HeaderPicture picture{.branding = branding, .logo = plainLogo(200, 120), .width = width, .scale = scale()};
    std::string obstacle;
    const auto png = WindowModule(*bundle, windowsRunLoop()).drawHeader(picture, obstacle);
    ASSERT_TRUE(png) << obstacle;
    view().setLogoImage(*picture.logo);
    const auto format = QImage::Format_RGB32;
    EXPECT_EQ(QImage::fromData(QByteArray::fromStdString(*png)).convertToFormat(format),
              draw().convertToFormat(format));
}

TEST_F(HeaderView, WithoutTheModuleNothingIsDrawnOffScreen) {
    const QTemporaryDir empty;
    const auto bundle = nativeBundle(empty.path().toStdString());
    std::string obstacle;
    EXPECT_FALSE(WindowModule(*bundle, windowsRunLoop()).drawHeader(HeaderPicture(), obstacle));
    EXPECT_TRUE(obstacle.find("libquillmark-windows.so") != std::string::npos) << obstacle;
}

} // namespace quillmark::test

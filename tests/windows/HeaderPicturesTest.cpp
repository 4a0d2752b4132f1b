// The header in every form, beside the pictures in tests/windows/pictures. To take these again, LOOK at them and commit
// them:
//   QUILLMARK_STORE_PICTURES=1 ctest --test-dir build/release -R HeaderPictures

#include "platform/Images.h"
#include "windows/HeaderFixture.h"

#include <QDir>
#include <QPainter>

namespace quillmark::test {

namespace {

/// How far a colour may be off: processors round differently when pictures are scaled.
constexpr int kTolerance = 2;

struct Form {
    const char *name = "";
    qint32 brand = 1; ///< of the account, or with isWelcome of the configuration
    bool isWelcome = false;
    bool isGeneric = false;
    bool isHidden = false;
    const char *title = "Quillmark";
    QSize logo = {}; ///< of the brand's or the view's own; empty for the one that ships
    int width = 400;
};

void PrintTo(const Form &form, std::ostream *stream) { *stream << form.name; }

constexpr const char *kLongTitle = "Everything that you keep together, in one place";

const Form kForms[] = {
    {.name = "own", .width = 600},
    {.name = "brand15", .brand = 15, .width = 600},
    {.name = "other", .brand = 7, .width = 600},
    {.name = "reseller", .brand = 10001, .width = 600},
    {.name = "none", .brand = -1},
    {.name = "generic", .brand = 7, .isGeneric = true},
    {.name = "hidden", .isHidden = true},

    {.name = "welcomeOwn", .brand = 1, .isWelcome = true},
    {.name = "welcome15", .brand = 15, .isWelcome = true},
    {.name = "welcomeOther", .brand = 7, .isWelcome = true},
    {.name = "welcomeNone", .brand = -1, .isWelcome = true},
    {.name = "welcomeReseller", .brand = 10001, .isWelcome = true},
    {.name = "welcome15Generic", .brand = 15, .isWelcome = true, .isGeneric = true},
    {.name = "welcomeResellerGeneric", .brand = 10001, .isWelcome = true, .isGeneric = true},

    {.name = "ownLongTitle", .title = kLongTitle, .logo = {200, 120}},
    {.name = "otherLongTitle", .brand = 7, .title = kLongTitle, .logo = {200, 120}},
    {.name = "brand15LongTitle", .brand = 15, .title = kLongTitle},
    {.name = "welcomeResellerLongTitle", .brand = 10001, .isWelcome = true, .title = kLongTitle},
    {.name = "genericLongTitle", .isGeneric = true, .title = kLongTitle},
    {.name = "titleOfTwoLines", .brand = 7, .title = "Two\nlines"},

    {.name = "ownLogo30", .logo = {80, 30}},
    {.name = "ownLogo45", .logo = {80, 45}},
    {.name = "ownLogo60", .logo = {80, 60}},
    {.name = "ownLogo120", .logo = {200, 120}},
    {.name = "ownWideLogo", .logo = {900, 120}},
    {.name = "otherLogo30", .brand = 7, .logo = {80, 30}},
    {.name = "otherLogo45", .brand = 7, .logo = {80, 45}},
    {.name = "otherLogo60", .brand = 7, .logo = {80, 60}},
    {.name = "otherLogo120", .brand = 7, .logo = {200, 120}},
    {.name = "otherWideLogo", .brand = 7, .logo = {900, 120}},
    {.name = "resellerLogo120", .brand = 10001, .logo = {200, 120}},
};

/// A logo that shows whether it is cut off, turned or stretched: a frame, two halves, a disc that reaches three sides.
Image drawnLogo(const QSize &size) {
    QImage image(size, QImage::Format_RGBA8888);
    image.fill(QColor(0xff, 0xd0, 0x80));
    QPainter painter(&image);
    painter.fillRect(0, 0, size.width(), size.height() / 2, QColor(0x80, 0xc0, 0xff));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(0x30, 0x90, 0x30));
    painter.drawEllipse(QRectF(0.5, 0.5, size.height() - 1, size.height() - 1));
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(Qt::red);
    painter.drawRect(0, 0, size.width() - 1, size.height() - 1);
    painter.end();
    return logoOf(image);
}

/// The largest difference between two pictures in any channel of any pixel; 256 when they differ in size.
int difference(const QImage &a, const QImage &b) {
    if (a.size() != b.size()) {
        return 256;
    }
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            for (const int distance : {qRed(p) - qRed(q), qGreen(p) - qGreen(q), qBlue(p) - qBlue(q)}) {
                largest = std::max(largest, std::abs(distance));
            }
        }
    }
    return largest;
}

class HeaderPictures : public HeaderFixture, public testing::WithParamInterface<Form> {
protected:
    HeaderPictures() {
        const Form &form = GetParam();
        width = form.width;
        (form.isWelcome ? configurationBrand : accountBrand) = form.brand;
        branding.title = form.title;
        const std::string shipped = form.brand == 15 ? "logo-15.bmp" : "logo-1.bmp";
        brandedLogo = nativePlatform().images.load(resource(shipped));
        brandedLogo->name = shipped;
        view().setUseWelcomeBranding(form.isWelcome);
        view().setUseGenericBranding(form.isGeneric);
        view().setHeaderVisible(!form.isHidden);
        if (!form.logo.isEmpty()) {
            brandedLogo = drawnLogo(form.logo);
            view().setLogoImage(*brandedLogo);
        }
    }
};

} // namespace

TEST_P(HeaderPictures, AreAsTheyWere) {
    const QString name = QString("/%1@%2x.png").arg(QLatin1StringView(GetParam().name)).arg(scale());
    const QString storedPath = QUILLMARK_TEST_PICTURES + name;
    const QImage drawn = draw().convertToFormat(QImage::Format_RGB888);
    if (qEnvironmentVariableIsSet("QUILLMARK_STORE_PICTURES")) {
        ASSERT_TRUE(drawn.save(storedPath)) << qPrintable(storedPath);
    }
    if (difference(drawn, QImage(storedPath)) > kTolerance) {
        const QString folder = QUILLMARK_DRAWN_PICTURES;
        QDir().mkpath(folder);
        EXPECT_TRUE(drawn.save(folder + name));
        ADD_FAILURE() << "is not " << qPrintable(storedPath) << "; see " << qPrintable(folder + name);
    }
}

INSTANTIATE_TEST_SUITE_P(Header, HeaderPictures, testing::ValuesIn(kForms),
                         [](const auto &form) { return std::string(form.param.name); });

} // namespace quillmark::test

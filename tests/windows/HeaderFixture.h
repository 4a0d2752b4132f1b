#pragma once

#include "QtPrinters.h"
#include "branding/windows/QuillmarkHeaderView.h"
#include "platform/Platform.h"

#include <QFontDatabase>
#include <QImage>
#include <gtest/gtest.h>

namespace quillmark::test {

inline const QColor kNothing(0xff, 0x00, 0xff); ///< what shows where the view draws nothing
inline const QColor kLogoColor(0xd0, 0x20, 0x20);

inline Image logoOf(const QImage &image) {
    return {"/logo.bmp", image.width(), image.height(),
            std::string(reinterpret_cast<const char *>(image.constBits()), static_cast<size_t>(image.sizeInBytes()))};
}

/// A logo of one colour.
inline Image plainLogo(int width, int height, const QColor &color = kLogoColor) {
    QImage image(width, height, QImage::Format_RGBA8888);
    image.fill(color);
    return logoOf(image);
}

/// A header view with the built bundle's resources, in the font that the stored pictures were made with.
class HeaderFixture : public testing::Test {
protected:
    static void SetUpTestSuite() {
        static const int font = QFontDatabase::addApplicationFont(QUILLMARK_TEST_FONT);
        ASSERT_GE(font, 0) << "can't read " QUILLMARK_TEST_FONT;
        QFont::insertSubstitution("Lucida Grande", "DejaVu Sans");
    }

    QuillmarkHeaderView &view() {
        if (!m_view) {
            m_view = std::make_unique<QuillmarkHeaderView>(branding);
            QPalette palette;
            palette.setColor(QPalette::Window, kNothing);
            m_view->setPalette(palette);
            m_view->resize(width, 60);
        }
        return *m_view;
    }

    /// What the view looks like now.
    QImage draw() { return view().grab().toImage(); }

    /// The colour at a point that is counted from the left and from below.
    QColor at(double x, double y) {
        const QImage image = draw();
        const double scale = image.devicePixelRatio();
        return image.pixelColor(static_cast<int>(x * scale), image.height() - 1 - static_cast<int>(y * scale));
    }

    qreal scale() { return view().devicePixelRatioF(); }

    static std::string resource(const std::string &name) { return QUILLMARK_APP "/Contents/Resources/" + name; }

    int width = 400;
    std::int32_t accountBrand = 1;
    std::int32_t configurationBrand = 0;
    std::optional<Image> brandedLogo = plainLogo(50, 30);
    std::vector<std::int32_t> logosAskedFor;
    HeaderBranding branding{resource(""), "Quillmark", [this] { return accountBrand; },
                            [this] { return configurationBrand; },
                            [this](std::int32_t brand) {
                                logosAskedFor.push_back(brand);
                                return brandedLogo;
                            }};

private:
    std::unique_ptr<QuillmarkHeaderView> m_view; // made when the test has set its branding
};

} // namespace quillmark::test

// One drawing of the header, for the product's own brand and for one whose logo is read from its file each time, beside
// the bare painter's drawing of the same pictures and text.

#include "branding/windows/QuillmarkHeaderView.h"
#include "platform/Images.h"
#include "platform/Platform.h"
#include "texts/windows/QtText.h"

#include <QApplication>
#include <QPainter>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <string>

namespace {

using namespace quillmark;

constexpr std::int32_t kOwnBrand = 1;
constexpr std::int32_t kOtherBrand = 7;
constexpr QSize kSize(600, 60);

std::string resource(const char *name) { return std::string(QUILLMARK_APP "/Contents/Resources/") + name; }

void floorOf(benchmark::State &state) {
    const bool isOwn = state.range() == kOwnBrand;
    const auto format = QImage::Format_ARGB32_Premultiplied;
    const QImage ground = QImage(qtText(resource("appheade_bg.png"))).convertToFormat(format);
    const QImage logo = QImage(qtText(resource(isOwn ? "appheader_logo.png" : "logo-1.bmp"))).convertToFormat(format);
    QFont font(QStringLiteral("Lucida Grande"));
    font.setBold(true);
    font.setPixelSize(16);
    QImage image(kSize, format);
    for ([[maybe_unused]] auto run : state) {
        QPainter painter(&image);
        if (isOwn) {
            painter.drawImage(0, 0, ground);
        } else {
            painter.fillRect(image.rect(), Qt::white);
        }
        painter.drawImage(kSize.width() - 15 - logo.width(), 8, logo);
        painter.setFont(font);
        painter.setPen(isOwn ? Qt::white : Qt::black);
        painter.drawText(QPointF(20, 35), QStringLiteral("Quillmark"));
    }
}

void ours(benchmark::State &state) {
    const auto brand = static_cast<std::int32_t>(state.range());
    QuillmarkHeaderView view({resource(""), "Quillmark", [brand] { return brand; }, [] { return 0; },
                              [](std::int32_t) { return nativePlatform().images.load(resource("logo-1.bmp")); }});
    view.resize(kSize);
    QImage image(kSize, QImage::Format_ARGB32_Premultiplied);
    for ([[maybe_unused]] auto run : state) {
        view.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    }
}

} // namespace

BENCHMARK(floorOf)->Name("header/floor")->Arg(kOwnBrand)->Arg(kOtherBrand);
BENCHMARK(ours)->Name("header/ours")->Arg(kOwnBrand)->Arg(kOtherBrand);

int main(int count, char **arguments) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(count, arguments);
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

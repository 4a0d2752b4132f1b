#include "branding/windows/HeaderImage.h"

#include "platform/Images.h"
#include "texts/windows/QtText.h"

#include <QFileInfo>
#include <QPainter>

namespace quillmark {

namespace {

constexpr auto kFormat = QImage::Format_ARGB32_Premultiplied; // the one that is drawn fastest

QImage readImage(const QString &path) {
    QImage image = QImage(path).convertToFormat(kFormat);
    image.setDevicePixelRatio(1); // Qt takes it from the file's name
    return image;
}

QImage imageOf(const Image &image) {
    constexpr qsizetype kBytesPerPixel = 4;
    const qsizetype bytesPerLine = image.width * kBytesPerPixel;
    if (image.width < 1 || image.height < 1 || std::ssize(image.rgba) / bytesPerLine < image.height) {
        return {};
    }
    const auto *pixels = reinterpret_cast<const uchar *>(image.rgba.data());
    return QImage(pixels, image.width, image.height, bytesPerLine, QImage::Format_RGBA8888).convertToFormat(kFormat);
}

} // namespace

HeaderImage::HeaderImage(const QString &path) : m_ordinary(readImage(path)) { readTwin(path); }

HeaderImage::HeaderImage(const Image &image, const QString &resourceFolder) : m_ordinary(imageOf(image)) {
    if (!image.name.empty() && image.name.find('/') == std::string::npos) {
        readTwin(resourceFolder + u'/' + qtText(image.name));
    }
}

void HeaderImage::readTwin(const QString &path) {
    const QFileInfo file(path);
    QImage twin = readImage(file.path() + u'/' + file.completeBaseName() + QStringLiteral("@2x.") + file.suffix());
    // Both have to be equally large, since the ordinary one decides where either is drawn.
    if (twin.size() == m_ordinary.size() * 2) {
        m_dense = std::move(twin);
    }
}

void HeaderImage::draw(QPainter &painter, const QRectF &place) const {
    const qreal density = painter.deviceTransform().m11();
    const QImage &best = density > 1 && !m_dense.isNull() ? m_dense : m_ordinary;
    if (best.isNull()) {
        return;
    }
    // The painter would leave out pixels of a picture that it shrinks to less than half.
    const QSize pixels = (place.size() * density).toSize().expandedTo({1, 1});
    const bool isShrunk = pixels.width() < best.width() || pixels.height() < best.height();
    const QImage fitting = isShrunk ? best.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation) : best;
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, fitting, QRectF(fitting.rect()));
}

} // namespace quillmark

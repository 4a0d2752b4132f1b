#include "branding/windows/HeaderPng.h"

#include "branding/windows/QuillmarkHeaderView.h"
#include "platform/windows/HeaderPicture.h"

#include <QBuffer>

namespace quillmark {

QByteArray headerPng(const HeaderPicture &picture) {
    QuillmarkHeaderView view(picture.branding);
    view.setUseGenericBranding(picture.useGenericBranding);
    view.setUseWelcomeBranding(picture.useWelcomeBranding);
    view.setHeaderVisible(picture.isVisible);
    if (picture.logo) {
        view.setLogoImage(*picture.logo);
    }
    view.resize(picture.width, view.sizeHint().height());

    QImage image((view.size().toSizeF() * picture.scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    QByteArray png;
    if (!image.isNull()) {
        image.fill(Qt::transparent);
        image.setDevicePixelRatio(picture.scale);
        view.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        // At every scale the picture is equally large: a point is the 72nd part of an inch.
        const int dotsPerMeter = qRound(picture.scale * 72 / 0.0254);
        image.setDotsPerMeterX(dotsPerMeter);
        image.setDotsPerMeterY(dotsPerMeter);
        QBuffer buffer(&png);
        image.save(&buffer, "PNG");
    }
    return png;
}

} // namespace quillmark

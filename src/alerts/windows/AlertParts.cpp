#include "alerts/windows/AlertParts.h"

#include <QFontInfo>
#include <QPainter>
#include <algorithm>

namespace quillmark {

namespace {

constexpr int kIconSize = 64;

/// How long a line may get, in units of the font's size: some 55 letters, or 30 characters of Japanese, read well.
constexpr int kMeasure = 30;

} // namespace

AlertIcon::AlertIcon(QIcon icon) : m_icon(std::move(icon)) {
    setObjectName(QStringLiteral("icon"));
    setFixedSize(kIconSize, kIconSize);
}

QSize AlertIcon::sizeHint() const { return {kIconSize, kIconSize}; }

void AlertIcon::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    m_icon.paint(&painter, rect());
}

AlertText::AlertText(const QString &text) : QLabel(text) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setAlignment(Qt::AlignLeading | Qt::AlignTop);
    setSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::Minimum);
}

QSize AlertText::sizeHint() const {
    const QFontMetrics metrics = fontMetrics();
    const auto wrappedAt = [&metrics, this](int width) {
        return metrics.boundingRect(QRect(0, 0, width, QWIDGETSIZE_MAX), Qt::TextWordWrap, text());
    };
    // A word that is longer than the measure makes the text wider.
    int width = wrappedAt(QFontInfo(font()).pixelSize() * kMeasure).width();
    // Lines of like length look better than a last one with a single word.
    const int step = std::max(1, metrics.height() / 4);
    const int height = wrappedAt(width).height();
    while (width > step && wrappedAt(width - step).height() == height && wrappedAt(width - step).width() < width) {
        width = wrappedAt(width - step).width();
    }
    return {width + 1, heightForWidth(width + 1)};
}

} // namespace quillmark

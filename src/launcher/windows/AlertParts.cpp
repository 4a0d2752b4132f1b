#include "launcher/windows/AlertParts.h"

#include <QPainter>

namespace quillmark {

namespace {

constexpr int kIconSize = 64;

/// Lines of some 60 letters are read most easily. An average letter is narrower than averageCharWidth().
constexpr int kMeasure = 54;

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
    // A word that is longer than the measure makes the text wider.
    const QRect measure(0, 0, metrics.averageCharWidth() * kMeasure, QWIDGETSIZE_MAX);
    const int width = metrics.boundingRect(measure, Qt::TextWordWrap, text()).width() + 1;
    return {width, heightForWidth(width)};
}

} // namespace quillmark

#include "branding/windows/QuillmarkHeaderView.h"

#include "texts/windows/QtText.h"

#include <QAccessibleWidget>
#include <QFontMetricsF>
#include <QPainter>
#include <cmath>

namespace quillmark {

namespace {

constexpr qint32 kOwnBrand = 1;
constexpr qint32 kBlackBrand = 15;
constexpr qint32 kLargestOwnBrand = 10000; // above it are the resellers

// In points. All heights are counted from the view's lower edge.
constexpr int kHeight = 60;
constexpr qreal kTitleX = 20;
constexpr qreal kTitleY = 20;
constexpr qreal kTitleHeight = 20;
constexpr qreal kTitleMargin = 40; // on its right
constexpr qreal kLogoMargin = 15;  // on its right
constexpr qreal kSeparatorHeight = 1;

constexpr const char *kBkgImage = "appheade_bg.png"; // deliberate: the first r is missing here, and nowhere else
constexpr const char *kResellerBkgImage = "resellerheader_bg.png";
constexpr const char *kLogoImage = "appheader_logo.png";

constexpr int kFontSize = 16;
constexpr QColor kDarkGrey{0x55, 0x55, 0x55};

/// A logo's size on the view.
QSizeF fittedSize(QSizeF logo) {
    return logo.height() > kHeight ? QSizeF(logo.width() * kHeight / logo.height(), kHeight) : logo;
}

/// Pixels of the view, not points of a print, so that the text keeps its relation to the pictures on every screen.
QFont titleFont() {
    QFont font(QStringLiteral("Lucida Grande"));
    font.setStyleHint(QFont::SansSerif); // for where there is no such family
    font.setBold(true);
    font.setPixelSize(kFontSize);
    return font;
}

QAccessibleInterface *accessibleHeader(const QString & /*className*/, QObject *object) {
    auto *const header = dynamic_cast<QuillmarkHeaderView *>(object);
    return header != nullptr ? new QAccessibleWidget(header, QAccessible::Heading) : nullptr;
}

} // namespace

QuillmarkHeaderView::QuillmarkHeaderView(HeaderBranding branding, QWidget *parent)
    : QWidget(parent), m_branding(std::move(branding)), m_font(titleFont()),
      m_bkgImage(qtText(m_branding.resourceFolder) + u'/' + QLatin1StringView(kBkgImage)),
      m_resellerBkgImage(qtText(m_branding.resourceFolder) + u'/' + QLatin1StringView(kResellerBkgImage)),
      m_logoImage(qtText(m_branding.resourceFolder) + u'/' + QLatin1StringView(kLogoImage)) {
    QAccessible::installFactory(accessibleHeader);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setTitle(qtText(m_branding.title));
}

QSize QuillmarkHeaderView::sizeHint() const { return {600, kHeight}; }
QSize QuillmarkHeaderView::minimumSizeHint() const { return {0, kHeight}; }

void QuillmarkHeaderView::setTitle(const QString &title) {
    if (title != m_title) {
        m_title = title;
        setAccessibleName(title);
    }
    update();
}

void QuillmarkHeaderView::setLogoImage(const Image &image) {
    m_logoImage = HeaderImage(image, qtText(m_branding.resourceFolder));
    if (window()->isVisible()) {
        update();
    }
}

QStringList QuillmarkHeaderView::unreadablePictures() const {
    QStringList names;
    for (const auto &[name, picture] :
         {std::pair(kBkgImage, &m_bkgImage), {kResellerBkgImage, &m_resellerBkgImage}, {kLogoImage, &m_logoImage}}) {
        if (picture->size().isEmpty()) {
            names << QLatin1StringView(name);
        }
    }
    return names;
}

void QuillmarkHeaderView::paintEvent(QPaintEvent *event) {
    if (!m_isVisible) {
        return;
    }
    QPainter painter(this);
    painter.fillRect(rect(), m_ground);
    drawRect(painter);
    QWidget::paintEvent(event);
}

void QuillmarkHeaderView::drawRect(QPainter &painter) const {
    qint32 brand = m_branding.accountBrand();
    if (m_useWelcomeBranding) {
        brand = m_branding.configurationBrand();
        if (brand > kLargestOwnBrand) {
            drawWelcomeOfReseller(painter);
            return;
        }
        brand = brand == kBlackBrand ? kBlackBrand : kOwnBrand;
    }
    if (m_useGenericBranding) {
        drawGeneric(painter);
    } else if (brand == kOwnBrand) {
        drawOwnBrand(painter);
    } else {
        drawOtherBrand(painter, brand);
    }
}

void QuillmarkHeaderView::drawWelcomeOfReseller(QPainter &painter) const {
    painter.fillRect(rect(), Qt::white);
    drawSeparator(painter);
    drawTitle(painter, Qt::black, width() - kTitleMargin);
}

/// Its title has no rectangle: it stands with its lower left corner on the point, however long it is.
void QuillmarkHeaderView::drawGeneric(QPainter &painter) const {
    drawBkgImage(painter);
    painter.setFont(m_font);
    painter.setPen(Qt::white);
    painter.drawText(fromBelow(kTitleX, kTitleY, width(), kHeight), Qt::AlignLeft | Qt::AlignBottom | Qt::TextDontClip,
                     m_title);
}

void QuillmarkHeaderView::drawOwnBrand(QPainter &painter) const {
    drawBkgImage(painter);
    drawLogo(painter, m_logoImage);
    drawTitle(painter, Qt::white, width() - fittedSize(m_logoImage.size()).width() - kTitleMargin);
}

void QuillmarkHeaderView::drawOtherBrand(QPainter &painter, qint32 brand) const {
    const std::optional<Image> image = m_branding.brandedLogo(brand);
    const HeaderImage logo = image ? HeaderImage(*image, qtText(m_branding.resourceFolder)) : HeaderImage();
    if (brand > kLargestOwnBrand) {
        drawResellerBkgImage(painter);
    } else {
        painter.fillRect(rect(), brand == kBlackBrand ? Qt::black : Qt::white);
    }
    drawLogo(painter, logo);
    drawSeparator(painter);
    // Deliberately not the width that the logo is drawn with: beside a high logo, the title is narrower.
    drawTitle(painter, brand == kBlackBrand ? Qt::white : Qt::black, width() - logo.size().width() - kTitleMargin);
}

/// A rectangle given by its lower left corner, where y grows upwards.
QRectF QuillmarkHeaderView::fromBelow(qreal x, qreal y, qreal width, qreal height) const {
    return {x, this->height() - y - height, width, height};
}

void QuillmarkHeaderView::drawBkgImage(QPainter &painter) const {
    m_bkgImage.draw(painter, fromBelow(0, 0, width(), kHeight));
}

void QuillmarkHeaderView::drawResellerBkgImage(QPainter &painter) const {
    m_resellerBkgImage.draw(painter, fromBelow(0, 0, width(), kHeight));
}

void QuillmarkHeaderView::drawLogo(QPainter &painter, const HeaderImage &logo) const {
    const QSizeF size = fittedSize(logo.size());
    // Deliberately whole points, towards zero.
    const qreal y = std::trunc((kHeight - size.height()) * 0.5);
    logo.draw(painter, fromBelow(width() - size.width() - kLogoMargin, y, size.width(), size.height()));
}

void QuillmarkHeaderView::drawSeparator(QPainter &painter) const {
    painter.fillRect(fromBelow(0, 0, width(), kSeparatorHeight), kDarkGrey);
}

/// One line in a rectangle, from the rectangle's top. What does not fit is cut off at the end.
void QuillmarkHeaderView::drawTitle(QPainter &painter, const QColor &color, qreal width) const {
    if (width <= 0) {
        return;
    }
    const qsizetype lineLength = m_title.indexOf(u'\n');
    const QString line = lineLength < 0 ? m_title : m_title.left(lineLength) + QChar(0x2026);
    painter.setFont(m_font);
    painter.setPen(color);
    // The title font's own ascent: letters that it lacks come from fonts with other ones, and would stand lower.
    const QFontMetricsF metrics(m_font, this);
    const QRectF rectangle = fromBelow(kTitleX, kTitleY, width, kTitleHeight);
    painter.drawText(rectangle.topLeft() + QPointF(0, metrics.ascent()),
                     metrics.elidedText(line, Qt::ElideRight, width));
}

} // namespace quillmark

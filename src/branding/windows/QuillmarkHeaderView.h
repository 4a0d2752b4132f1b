#pragma once

#include "branding/BrandingManager.h"
#include "branding/windows/HeaderImage.h"
#include "platform/windows/HeaderBranding.h"

#include <QFont>
#include <QWidget>

namespace quillmark {

/// The banner across the top of a window, 60 points high: a title on the left, a logo on the right. The brand decides
/// what both stand on and which logo it is; it is asked for at each drawing.
///
/// A picture that is missing or damaged is left out. Assistive programs take the view for a heading with its title.
class QuillmarkHeaderView final : public QWidget, public LogoView {
public:
    explicit QuillmarkHeaderView(HeaderBranding branding, QWidget *parent = nullptr);

    /// The product's ground and the title, no logo, whatever the brand. Shows at the next drawing.
    void setUseGenericBranding(bool flag) { m_useGenericBranding = flag; }
    /// The configuration's brand instead of the account's. Shows at the next drawing.
    void setUseWelcomeBranding(bool flag) { m_useWelcomeBranding = flag; }
    /// A header that is not visible keeps its place and draws nothing; QWidget::setVisible() gives up the place, too.
    /// Shows at the next drawing.
    void setHeaderVisible(bool flag) { m_isVisible = flag; }
    /// What shows where the ground's picture can't be read; nothing, unless it is set. Shows at the next drawing.
    void setGround(const QColor &color) { m_ground = color; }

    /// Redraws the view, even for the title that it has.
    void setTitle(const QString &title);
    /// Replaces the product's logo, not those of other brands. Redraws the view while its window is visible.
    void setLogoImage(const Image &image) override;

    /// The names of the grounds, and of the logo while it is the product's, that can't be read.
    QStringList unreadablePictures() const;

    /// The grounds, over the whole width.
    void drawBkgImage(QPainter &painter) const;
    void drawResellerBkgImage(QPainter &painter) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void drawRect(QPainter &painter) const;
    void drawWelcomeOfReseller(QPainter &painter) const;
    void drawGeneric(QPainter &painter) const;
    void drawOwnBrand(QPainter &painter) const;
    void drawOtherBrand(QPainter &painter, qint32 brand) const;

    QRectF fromBelow(qreal x, qreal y, qreal width, qreal height) const;
    void drawLogo(QPainter &painter, const HeaderImage &logo) const;
    void drawSeparator(QPainter &painter) const;
    void drawTitle(QPainter &painter, const QColor &color, qreal width) const;

    const HeaderBranding m_branding;
    bool m_useGenericBranding = false;
    bool m_useWelcomeBranding = false;
    bool m_isVisible = true;
    QColor m_ground = Qt::transparent;
    QFont m_font;
    const HeaderImage m_bkgImage;
    const HeaderImage m_resellerBkgImage;
    HeaderImage m_logoImage;
    QString m_title;
};

} // namespace quillmark

#pragma once

#include <QImage>
#include <QString>

class QPainter;
class QRectF;

namespace quillmark {

struct Image;

/// A picture, as large in points as it has pixels, and its twin of double resolution for dense screens ("NAME@2x.png"
/// beside "NAME.png"). One that can't be read has no size, and nothing of it is drawn.
class HeaderImage {
public:
    HeaderImage() = default;
    /// The picture in a file.
    explicit HeaderImage(const QString &path);
    /// A decoded picture. One with the name of a resource may have a twin there, one with a path has none.
    HeaderImage(const Image &image, const QString &resourceFolder);

    /// In points.
    QSizeF size() const { return m_ordinary.size(); }

    /// Draws all of it, stretched over the rectangle.
    void draw(QPainter &painter, const QRectF &place) const;

private:
    void readTwin(const QString &path);

    QImage m_ordinary;
    QImage m_dense;
};

} // namespace quillmark

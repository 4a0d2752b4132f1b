#pragma once

#include <QIcon>
#include <QLabel>

namespace quillmark {

/// The application's icon, drawn for the resolution of whatever screen it is on.
class AlertIcon final : public QWidget {
public:
    explicit AlertIcon(QIcon icon);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const QIcon m_icon;
};

/// A plain text that wraps at a comfortable measure, and is as large as it needs to be to show all of itself.
class AlertText final : public QLabel {
public:
    explicit AlertText(const QString &text);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
};

} // namespace quillmark

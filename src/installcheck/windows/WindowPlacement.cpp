#include "installcheck/windows/WindowPlacement.h"

#include <QLayout>
#include <QScreen>
#include <QStyle>
#include <QWidget>
#include <QWindow>

namespace quillmark {

constexpr int kTitleBarHeight = 40; // what a window's frame takes of the screen

QSize largestSize(const QWidget &window) { return window.screen()->availableSize() - QSize(0, kTitleBarHeight); }

QSize neededSize(const QWidget &window) {
    if (window.layout() != nullptr) { // one that lies in another one forgets its former size only then
        window.layout()->activate();
    }
    return window.sizeHint();
}

QMargins frameOf(const QWidget &window) {
    const QWindow *const handle = window.windowHandle();
    return handle != nullptr ? handle->frameMargins() : QMargins();
}

void centre(QWidget &window) {
    const QSize size = window.size().grownBy(frameOf(window));
    window.move(
        QStyle::alignedRect(window.layoutDirection(), Qt::AlignCenter, size, window.screen()->availableGeometry())
            .topLeft());
}

void setFloating(QWidget &window, bool isFloating) {
    window.overrideWindowFlags(window.windowFlags().setFlag(Qt::WindowStaysOnTopHint, isFloating));
    if (QWindow *const handle = window.windowHandle(); handle != nullptr) {
        handle->setFlag(Qt::WindowStaysOnTopHint, isFloating);
    }
}

} // namespace quillmark

#pragma once

#include <QMargins>
#include <QSize>

class QWidget;

namespace quillmark {

/// The most of the screen that a window may take, less its title bar.
QSize largestSize(const QWidget &window);

/// What all that it holds needs by now.
QSize neededSize(const QWidget &window);

/// What the frame adds at each side, as far as it is known.
QMargins frameOf(const QWidget &window);

void centre(QWidget &window);

/// Above ordinary windows, also while it is shown.
void setFloating(QWidget &window, bool isFloating);

} // namespace quillmark

#pragma once

class QByteArray;

namespace quillmark {

struct HeaderPicture;

/// The view as a PNG, which is clear wherever the view draws nothing. Needs a QApplication. Empty when the memory for
/// it is lacking.
QByteArray headerPng(const HeaderPicture &picture);

} // namespace quillmark

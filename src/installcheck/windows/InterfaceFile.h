#pragma once

#include <QStringList>

class QDialog;

namespace quillmark {

struct HeaderBranding;

/// Builds the window that an interface file describes, and hands it over. Whatever the file holds, the process goes on.
/// \param problems receives what is wrong with the file, each as a part of a sentence.
/// \returns null when the file gives no window.
QDialog *loadInterface(const QString &path, const HeaderBranding &branding, QStringList &problems);

} // namespace quillmark

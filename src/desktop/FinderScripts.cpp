#include "desktop/FinderScripts.h"

#include "utils/FormattedText.h"

#include <QStringList>

namespace quillmark {

namespace {

/// Lines, each behind tabs and blanks, without a line end behind the last.
QString sourceOf(const QString &indentation, const QStringList &lines) {
    return indentation + lines.join(u'\n' + indentation);
}

/// What both scripts end with.
QStringList linesThatReadTheSelection() {
    return {
        QStringLiteral("set alist to selection as alias list"),
        QStringLiteral("set plist to {}"),
        QStringLiteral("repeat with afile in alist"),
        QStringLiteral("set end of plist to (POSIX path of (afile as text))"),
        QStringLiteral("end repeat"),
        QStringLiteral("end tell"),
        QStringLiteral("return plist"),
    };
}

QString selectionSource() {
    const QStringList head = {QStringLiteral("tell application \"Finder\"")};
    return sourceOf(QStringLiteral("\t\t\t "), head + linesThatReadTheSelection());
}

QString retrySource(const QString &productName) {
    const QStringList head = {
        formatted("tell application \"%@Core\"", productName), QStringLiteral("activate"), QStringLiteral("end tell"),
        QStringLiteral("tell application \"Finder\""),         QStringLiteral("activate"),
    };
    return sourceOf(QStringLiteral("\t\t\t\t\t\t\t\t\t  "), head + linesThatReadTheSelection());
}

} // namespace

FinderScripts::FinderScripts(Scripts &scripts, const QString &productName)
    : m_selection(scripts.scriptWithSource(selectionSource())),
      m_retry(scripts.scriptWithSource(retrySource(productName))) {
    m_selection->compile();
    // Deliberate: the selection script once more. The retry script is compiled when it first runs.
    m_selection->compile();
}

} // namespace quillmark

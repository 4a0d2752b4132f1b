#pragma once

#include "platform/CheckWindowView.h"

#include <QIcon>

class QTreeWidget;

namespace quillmark {

/// The list of the components that are at fault: a column for the name, and one for the status. It is as high as its
/// lines, up to a limit, and never becomes lower, so that nothing jumps. Where the window has no list, all this does
/// nothing.
class FaultsList {
public:
    enum Column : int { kName, kStatus, kColumnCount };

    explicit FaultsList(QTreeWidget *widget);

    void setIcon(const QIcon &icon) { m_icon = icon; }
    void setAccessibleName(const QString &name);
    void setTitle(Column column, const QString &title);
    void setFaults(const std::vector<CheckWindowView::Fault> &faults);

    /// Makes it as high as its lines.
    void showAllLines();
    /// Makes it lower by a line. \returns false when it has only one.
    bool showOneLineLess();

private:
    void fit();

    QTreeWidget *m_widget;
    QIcon m_icon;
    int m_lines = 1; ///< that it has room for
};

} // namespace quillmark

#include "installcheck/windows/FaultsList.h"

#include "texts/windows/QtText.h"

#include <QHeaderView>
#include <QStyledItemDelegate>
#include <QTreeWidget>

namespace quillmark {

namespace {

constexpr int kMostLines = 6; // that the list shows; it scrolls to the others

/// The list's lines, with room around their texts.
class RoomyLines final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override {
        return QStyledItemDelegate::sizeHint(option, index) + kRoom;
    }
    static constexpr QSize kRoom{16, 8};
};

} // namespace

FaultsList::FaultsList(QTreeWidget *widget) : m_widget(widget) {
    if (m_widget == nullptr) {
        return;
    }
    m_widget->setColumnCount(kColumnCount);
    m_widget->setItemDelegate(new RoomyLines(m_widget));
    QHeaderView &header = *m_widget->header();
    header.setMinimumHeight(header.sizeHint().height() + RoomyLines::kRoom.height() / 2);
    header.setStretchLastSection(false);
    header.setSectionResizeMode(kName, QHeaderView::Stretch);
    header.setSectionResizeMode(kStatus, QHeaderView::ResizeToContents);
}

void FaultsList::setAccessibleName(const QString &name) {
    if (m_widget != nullptr) {
        m_widget->setAccessibleName(name);
    }
}

void FaultsList::setTitle(Column column, const QString &title) {
    if (m_widget != nullptr) {
        m_widget->headerItem()->setText(column, title);
    }
}

void FaultsList::setFaults(const std::vector<CheckWindowView::Fault> &faults) {
    if (m_widget == nullptr) {
        return;
    }
    m_widget->clear();
    for (const CheckWindowView::Fault &fault : faults) {
        auto *const line = new QTreeWidgetItem(m_widget, {qtText(fault.name), qtText(fault.status)});
        line->setIcon(kName, m_icon);
        line->setToolTip(kName, qtText(fault.name)); // a long one is cut off
    }
    m_widget->setVisible(!faults.empty());
}

void FaultsList::showAllLines() {
    if (m_widget != nullptr) {
        m_lines = std::max(m_lines, std::min(m_widget->topLevelItemCount(), kMostLines));
        fit();
    }
}

bool FaultsList::showOneLineLess() {
    if (m_widget == nullptr || m_lines == 1) {
        return false;
    }
    --m_lines;
    fit();
    return true;
}

void FaultsList::fit() {
    m_widget->setFixedHeight(m_widget->header()->minimumHeight() + m_lines * m_widget->sizeHintForRow(0) +
                             2 * m_widget->frameWidth());
}

} // namespace quillmark

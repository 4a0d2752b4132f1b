#pragma once

#include <QAbstractButton>
#include <QDialog>
#include <QGlyphRun>
#include <QHeaderView>
#include <QLabel>
#include <QTextLayout>
#include <QTreeWidget>
#include <gtest/gtest.h>

namespace quillmark::test {

/// Without them, a text is drawn as boxes, and measured as such.
inline void expectLetters(const QString &text, const QFont &font) {
    QString letters = text;
    letters.removeIf([](QChar letter) { return !letter.isPrint() || letter.isSpace(); });
    QTextLayout layout(letters, font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    for (const QGlyphRun &run : layout.glyphRuns()) {
        EXPECT_FALSE(run.glyphIndexes().contains(0))
            << "no font has all letters of: " << qPrintable(text) << "\nInstall the packages fonts-dejavu-core and "
            << "fonts-vlgothic.";
    }
}

/// Measures every text in the window against the room that it has, and every widget against the window.
inline void expectNothingClipped(const QDialog &dialog) {
    for (const auto *widget : dialog.findChildren<QWidget *>()) {
        if (!widget->isVisibleTo(&dialog) || widget->window() != &dialog) {
            continue; // a sheet, which is a window of its own
        }
        EXPECT_TRUE(dialog.rect().contains(QRect(widget->mapTo(&dialog, QPoint(0, 0)), widget->size())))
            << qPrintable(widget->objectName());
        if (const auto *const text = qobject_cast<const QLabel *>(widget)) {
            expectLetters(text->text(), text->font());
            const QRect needed =
                text->fontMetrics().boundingRect(QRect(0, 0, text->width(), 10'000), Qt::TextWordWrap, text->text());
            EXPECT_LE(needed.width(), text->contentsRect().width()) << qPrintable(text->text());
            EXPECT_LE(needed.height(), text->contentsRect().height()) << qPrintable(text->text());
        }
        if (const auto *const button = qobject_cast<const QAbstractButton *>(widget)) {
            expectLetters(button->text(), button->font());
            EXPECT_GE(button->width(), button->sizeHint().width()) << qPrintable(button->text());
            EXPECT_GE(button->height(), button->sizeHint().height()) << qPrintable(button->text());
        }
        if (const auto *const list = qobject_cast<const QTreeWidget *>(widget)) {
            for (int column = 0; column < list->columnCount(); ++column) {
                const int needed = std::max(list->header()->sectionSizeHint(column),
                                            static_cast<const QAbstractItemView *>(list)
                                                ->sizeHintForIndex(list->model()->index(0, column))
                                                .width());
                EXPECT_GE(list->columnWidth(column), needed) << qPrintable(list->headerItem()->text(column));
            }
        }
    }
}

} // namespace quillmark::test

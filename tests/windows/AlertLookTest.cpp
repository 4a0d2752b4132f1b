#include "texts/windows/QtText.h"
#include "windows/AlertFixture.h"

#include <QFontInfo>
#include <QImage>
#include <QScreen>
#include <QStyleOptionButton>

namespace quillmark::test {

namespace {

using AlertLook = AlertFixture;

QRect placeIn(const QDialog &dialog, const QWidget &widget) {
    return {widget.mapTo(&dialog, QPoint(0, 0)), widget.size()};
}

/// How far a colour is from another, from 0 to 255.
int contrast(const QColor &a, const QColor &b) { return std::abs(qGray(a.rgb()) - qGray(b.rgb())); }

} // namespace

TEST_F(AlertLook, ShowsItsTexts) {
    lookAt([this](QDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), qtText(alert.windowTitle));
        EXPECT_EQ(label(dialog, "messageText").text(), qtText(alert.messageText));
        EXPECT_TRUE(label(dialog, "messageText").font().bold());
        EXPECT_EQ(label(dialog, "informativeText").text(), qtText(alert.informativeText));
        EXPECT_FALSE(label(dialog, "informativeText").font().bold());
        EXPECT_EQ(button(dialog, 0).text(), qtText(alert.buttons[0]));
        EXPECT_EQ(button(dialog, 2).text(), qtText(alert.buttons[2]));
    });
}

TEST_F(AlertLook, HasNoRoomForAnInformativeTextThatIsEmpty) {
    alert.informativeText.clear();
    lookAt([](QDialog &dialog) { EXPECT_EQ(dialog.findChild<QLabel *>("informativeText"), nullptr); });
}

TEST_F(AlertLook, TakesNoTextForMarkup) {
    alert.messageText = "<b>1 < 2</b>";
    lookAt([](QDialog &dialog) { EXPECT_EQ(label(dialog, "messageText").textFormat(), Qt::PlainText); });
}

TEST_F(AlertLook, HasNoCheckBoxWithoutATextForIt) {
    lookAt([](QDialog &dialog) { EXPECT_EQ(dialog.findChild<QCheckBox *>(), nullptr); });
}

TEST_F(AlertLook, ShowsASmallCheckBoxBetweenTheTextsAndTheButtons) {
    alert.suppressionText = "Do not show this message again";
    lookAt([this](QDialog &dialog) {
        const QCheckBox &box = suppression(dialog);
        const QLabel &above = label(dialog, "informativeText");
        EXPECT_EQ(box.text(), qtText(alert.suppressionText));
        EXPECT_LT(QFontInfo(box.font()).pixelSize(), QFontInfo(above.font()).pixelSize());
        EXPECT_GE(placeIn(dialog, box).top(), placeIn(dialog, above).bottom());
        EXPECT_LE(placeIn(dialog, box).bottom(), placeIn(dialog, button(dialog, 0)).top());
        EXPECT_LE(std::abs(placeIn(dialog, box).left() - placeIn(dialog, above).left()), 4);
    });
}

TEST_F(AlertLook, TellsScreenReadersTheCheckBox) {
    alert.suppressionText = "Ask & answer";
    lookAt([this](QDialog &dialog) {
        QAccessibleInterface &box = accessible(suppression(dialog));
        EXPECT_EQ(box.role(), QAccessible::CheckBox);
        EXPECT_EQ(box.text(QAccessible::Name), qtText(alert.suppressionText));
        EXPECT_FALSE(box.state().checked);
    });
}

TEST_F(AlertLook, NamesTheOnlyButtonOkWhenNoneIsGiven) {
    alert.buttons.clear();
    lookAt([](QDialog &dialog) { EXPECT_EQ(button(dialog, 0).text(), "OK"); });
}

TEST_F(AlertLook, HasItsButtonsAtTheLowerRightWithTheDefaultOneOutermost) {
    lookAt([](QDialog &dialog) {
        const QRect first = placeIn(dialog, button(dialog, 0));
        const QRect second = placeIn(dialog, button(dialog, 1));
        const QRect third = placeIn(dialog, button(dialog, 2));
        EXPECT_LT(dialog.width() - first.right(), 30);
        EXPECT_LT(dialog.height() - first.bottom(), 30);
        EXPECT_EQ(second.right() + 10, first.left() - 1) << "as in the check window";
        EXPECT_LT(third.right(), second.left());
    });
}

TEST_F(AlertLook, StandsInTheMiddleOfTheScreen) {
    lookAt([](QDialog &dialog) {
        const QPoint offset = dialog.geometry().center() - dialog.screen()->availableGeometry().center();
        EXPECT_LE(offset.manhattanLength(), 60) << "more than a title bar away";
    });
}

TEST_F(AlertLook, DrawsTheIconPixelByPixelAtTheScreensResolution) {
    lookAt([](QDialog &dialog) {
        auto *const icon = dialog.findChild<QWidget *>("icon");
        ASSERT_NE(icon, nullptr);
        const int pixels = 64 * static_cast<int>(dialog.devicePixelRatio());
        const QImage stored(QString(QUILLMARK_APP "/Contents/Resources/Quillmark-%1.png").arg(pixels));
        ASSERT_EQ(stored.width(), pixels);

        QPixmap drawn(pixels, pixels);
        drawn.setDevicePixelRatio(dialog.devicePixelRatio());
        drawn.fill(Qt::transparent);
        icon->render(&drawn, QPoint(), QRegion(), QWidget::DrawChildren);
        const auto format = QImage::Format_ARGB32_Premultiplied;
        EXPECT_EQ(drawn.toImage().convertToFormat(format), stored.convertToFormat(format));
    });
}

TEST_F(AlertLook, GivesTheWindowTheApplicationsIcon) {
    lookAt([](QDialog &dialog) { EXPECT_FALSE(dialog.windowIcon().pixmap(16).isNull()); });
}

TEST_F(AlertLook, TellsScreenReadersThatItIsAnAlertAndWhatItSays) {
    lookAt([this](QDialog &dialog) {
        QAccessibleInterface &window = accessible(dialog);
        EXPECT_EQ(window.role(), QAccessible::AlertMessage);
        EXPECT_EQ(window.text(QAccessible::Name), qtText(alert.windowTitle));
        EXPECT_EQ(window.text(QAccessible::Description), qtText(alert.messageText + ' ' + alert.informativeText));
    });
}

TEST_F(AlertLook, TellsScreenReadersTheButtonsWithTheirTitles) {
    alert.buttons[1] = "Save & Quit";
    lookAt([this](QDialog &dialog) {
        for (int index = 0; index < 3; ++index) {
            QAccessibleInterface &pushButton = accessible(button(dialog, index));
            EXPECT_EQ(pushButton.role(), QAccessible::Button);
            EXPECT_EQ(pushButton.text(QAccessible::Name), qtText(alert.buttons.at(static_cast<size_t>(index))));
        }
    });
}

TEST_F(AlertLook, FollowsADarkPalette) {
    const QPalette before = QApplication::palette();
    QPalette dark(QColor(0x2a, 0x2e, 0x32));
    QApplication::setPalette(dark);
    alert.suppressionText = "Never again";
    lookAt([](QDialog &dialog) {
        const QImage picture = dialog.grab().toImage();
        const QColor ground = picture.pixelColor(2, 2);
        EXPECT_LT(qGray(ground.rgb()), 0x40);
        for (const char *name : {"messageText", "informativeText"}) {
            QLabel &text = label(dialog, name);
            EXPECT_GT(contrast(text.palette().color(text.foregroundRole()), ground), 0x80) << name;
        }
        const QCheckBox &box = suppression(dialog);
        EXPECT_GT(contrast(box.palette().color(box.foregroundRole()), ground), 0x80);
        QStyleOptionButton option;
        option.initFrom(&box);
        const QRect indicator = box.style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, &box);
        const QPoint middle = box.mapTo(&dialog, indicator.center()) * dialog.devicePixelRatio();
        EXPECT_GT(contrast(picture.pixelColor(middle), ground), 0x20);
    });
    QApplication::setPalette(before);
}

} // namespace quillmark::test

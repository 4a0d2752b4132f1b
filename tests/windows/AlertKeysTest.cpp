#include "windows/AlertFixture.h"

namespace quillmark::test {

namespace {

using AlertKeys = AlertFixture;

std::function<void(QDialog &)> press(Qt::Key key) {
    return [key](QDialog &dialog) { QTest::keyClick(dialog.focusWidget(), key); };
}

} // namespace

TEST_F(AlertKeys, AClickAnswersTheButton) {
    for (int index = 0; index < 3; ++index) {
        EXPECT_EQ(answerAfter([index](QDialog &dialog) { QTest::mouseClick(&button(dialog, index), Qt::LeftButton); }),
                  index);
    }
}

TEST_F(AlertKeys, ReturnPressesTheFirstButton) {
    EXPECT_EQ(answerAfter(press(Qt::Key_Return)), 0);
    EXPECT_EQ(answerAfter(press(Qt::Key_Enter)), 0);
}

TEST_F(AlertKeys, ReturnPressesTheFirstButtonWhereverTheFocusIs) {
    EXPECT_EQ(answerAfter([](QDialog &dialog) {
                  button(dialog, 2).setFocus();
                  QTest::keyClick(&button(dialog, 2), Qt::Key_Return);
              }),
              0);
}

TEST_F(AlertKeys, SpacePressesTheButtonWithTheFocus) {
    EXPECT_EQ(answerAfter([](QDialog &dialog) {
                  QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
                  QTest::keyClick(dialog.focusWidget(), Qt::Key_Space);
              }),
              1);
}

TEST_F(AlertKeys, EscapePressesTheLastButton) { EXPECT_EQ(answerAfter(press(Qt::Key_Escape)), 2); }

TEST_F(AlertKeys, EscapePressesTheGivenButton) {
    alert.escapeButton = 1;
    EXPECT_EQ(answerAfter(press(Qt::Key_Escape)), 1);
}

TEST_F(AlertKeys, EscapePressesTheOnlyButton) {
    alert.buttons = {"Quit"};
    EXPECT_EQ(answerAfter(press(Qt::Key_Escape)), 0);
}

TEST_F(AlertKeys, TheCloseBoxDoesWhatEscapeDoes) {
    const auto close = [](QDialog &dialog) { dialog.close(); };
    EXPECT_EQ(answerAfter(close), 2);
    alert.escapeButton = 1;
    EXPECT_EQ(answerAfter(close), 1);
}

TEST_F(AlertKeys, TheFirstButtonHasTheFocusAndIsTheDefault) {
    lookAt([](QDialog &dialog) {
        EXPECT_EQ(dialog.focusWidget(), &button(dialog, 0));
        EXPECT_TRUE(button(dialog, 0).isDefault());
        EXPECT_FALSE(button(dialog, 1).isDefault());
        EXPECT_FALSE(button(dialog, 2).isDefault());
    });
}

TEST_F(AlertKeys, TabGoesThroughTheButtonsInTheirOrder) {
    lookAt([](QDialog &dialog) {
        for (const int expected : {1, 2, 0}) {
            QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
            EXPECT_EQ(dialog.focusWidget(), &button(dialog, expected));
        }
    });
}

TEST_F(AlertKeys, AnAmpersandInATitleIsNoShortcut) {
    alert.buttons = {"Quit", "Save & Quit"};
    alert.suppressionText = "Yes & Amen";
    lookAt([](QDialog &dialog) {
        EXPECT_TRUE(button(dialog, 1).shortcut().isEmpty());
        EXPECT_TRUE(suppression(dialog).shortcut().isEmpty());
    });
}

TEST_F(AlertKeys, TheCheckBoxIsOffUntilItIsPressed) {
    alert.suppressionText = "Never again";
    EXPECT_EQ(answerAfter(press(Qt::Key_Escape)), 2);
    EXPECT_FALSE(isSuppressionChecked);
    EXPECT_EQ(answerAfter([](QDialog &dialog) {
                  QTest::mouseClick(&suppression(dialog), Qt::LeftButton, {},
                                    QPoint(8, suppression(dialog).height() / 2));
                  QTest::keyClick(&dialog, Qt::Key_Escape);
              }),
              2);
    EXPECT_TRUE(isSuppressionChecked);
}

TEST_F(AlertKeys, TheCheckBoxIsReachedByTabBehindTheButtonsAndSwitchedBySpace) {
    alert.suppressionText = "Never again";
    EXPECT_EQ(answerAfter([](QDialog &dialog) {
                  for (int presses = 0; presses < 3; ++presses) {
                      QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
                  }
                  EXPECT_EQ(dialog.focusWidget(), &suppression(dialog));
                  QTest::keyClick(dialog.focusWidget(), Qt::Key_Space);
                  QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
              }),
              0);
    EXPECT_TRUE(isSuppressionChecked);
}

TEST_F(AlertKeys, AnAlertWithoutACheckBoxAnswersThatItIsOff) {
    EXPECT_EQ(answerAfter(press(Qt::Key_Escape)), 2);
    EXPECT_FALSE(isSuppressionChecked);
}

} // namespace quillmark::test

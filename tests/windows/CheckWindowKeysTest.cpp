#include "platform/Alerts.h"
#include "windows/CheckWindowFixture.h"

namespace quillmark::test {

namespace {

class CheckWindowKeys : public CheckWindowFixture {
protected:
    static void press(Qt::Key key) { QTest::keyClick(findWindow()->focusWidget(), key); }
    static QList<QWidget *> stops() { return {&install(), &dontInstall(), &details(), &list()}; }
};

} // namespace

TEST_F(CheckWindowKeys, AClickTellsTheOwner) {
    show();
    for (QPushButton *const button : {&install(), &dontInstall(), &details()}) {
        QTest::mouseClick(button, Qt::LeftButton);
    }
    EXPECT_EQ(calls, QStringList({"install", "don't install", "details"}));
}

TEST_F(CheckWindowKeys, ContinueHasTheFocusAndIsTheDefault) {
    show();
    EXPECT_EQ(findWindow()->focusWidget(), &install());
    EXPECT_TRUE(install().isDefault());
}

TEST_F(CheckWindowKeys, ReturnIsContinueWhereverTheFocusIs) {
    show();
    for (QWidget *const stop : stops()) {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
            calls.clear();
            stop->setFocus();
            press(key);
            EXPECT_EQ(calls, QStringList{"install"}) << qPrintable(stop->objectName());
        }
    }
}

TEST_F(CheckWindowKeys, TabGoesFromContinueThroughAllThatCanBeWorkedAndBack) {
    show();
    for (int index = 1; index <= stops().size(); ++index) {
        press(Qt::Key_Tab);
        EXPECT_EQ(findWindow()->focusWidget(), stops()[index % stops().size()]) << index;
    }
    press(Qt::Key_Backtab);
    EXPECT_EQ(findWindow()->focusWidget(), &list());
}

TEST_F(CheckWindowKeys, SpacePressesTheButtonWithTheFocus) {
    show();
    press(Qt::Key_Tab);
    press(Qt::Key_Space);
    press(Qt::Key_Tab);
    press(Qt::Key_Space);
    EXPECT_EQ(calls, QStringList({"don't install", "details"}));
}

TEST_F(CheckWindowKeys, EscapeIsDontInstallWhereverTheFocusIs) {
    for (int index = 0; index < 4; ++index) {
        show();
        calls.clear();
        stops()[index]->setFocus();
        press(Qt::Key_Escape);
        EXPECT_EQ(calls, QStringList{"don't install"}) << index;
    }
}

TEST_F(CheckWindowKeys, TheArrowsScrollALongList) {
    showLines(20);
    list().setFocus();
    press(Qt::Key_End);
    EXPECT_TRUE(list().viewport()->rect().contains(list().visualItemRect(list().topLevelItem(19))));
}

TEST_F(CheckWindowKeys, TheCloseBoxTellsTheOwnerWhoDecides) {
    EXPECT_FALSE(show().close());
    EXPECT_EQ(calls, QStringList{"close"});
    EXPECT_TRUE(findWindow()->isVisible());
}

TEST_F(CheckWindowKeys, NothingDismissesTheSheet) {
    QDialog &progress = showSheet();
    QTest::keyClick(&progress, Qt::Key_Escape);
    QTest::keyClick(&progress, Qt::Key_Return);
    EXPECT_FALSE(progress.close());
    EXPECT_TRUE(progress.isVisible());
    EXPECT_EQ(calls, QStringList());
}

TEST_F(CheckWindowKeys, UnderTheSheetNothingCanBePressed) {
    showSheet();
    QTest::mouseClick(findWindow()->windowHandle(), Qt::LeftButton, {}, placeOf(install()).center());
    EXPECT_EQ(calls, QStringList());
}

TEST_F(CheckWindowKeys, UnderTheSheetAssistiveProgramsCanPressNothing) {
    showSheet();
    for (QPushButton *const button : {&install(), &dontInstall(), &details()}) {
        QAccessibleInterface &pushButton = accessible(*button);
        EXPECT_TRUE(pushButton.state().disabled) << qPrintable(button->objectName());
        EXPECT_EQ(pushButton.actionInterface()->actionNames(), QStringList()) << qPrintable(button->objectName());
    }
    view->endProgressSheet();
    QAccessibleInterface &pushButton = accessible(install());
    EXPECT_FALSE(pushButton.state().disabled);
    pushButton.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(QTest::qWaitFor([this] { return calls.last() == u"install"; })) << "the click is an animation";
}

TEST_F(CheckWindowKeys, BehindTheSheetContinueHasTheFocusAgain) {
    show();
    details().setFocus();
    view->beginProgressSheet();
    view->endProgressSheet();
    EXPECT_EQ(findWindow()->focusWidget(), &install());
}

TEST_F(CheckWindowKeys, AnAlertOverItIsDismissedByReturnAndByEscapeAndTheWindowStays) {
    show();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
        AlertDescription alert;
        alert.messageText = "The installation could not be completed.";
        alert.buttons = {"OK"};
        view->beginAlertSheet(alert);
        auto *const dialog = findWindow()->findChild<QDialog *>("alert");
        ASSERT_NE(dialog, nullptr);
        EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
        EXPECT_EQ(findWindow()->mapFromGlobal(dialog->pos()).y(), outlet("checkHeaderView").height());
        keepPicture(*dialog, "check-alert");
        QTest::keyClick(dialog->focusWidget(), key);
        EXPECT_FALSE(dialog->isVisible());
        EXPECT_TRUE(findWindow()->isVisible());
        EXPECT_EQ(calls, QStringList());
    }
}

} // namespace quillmark::test

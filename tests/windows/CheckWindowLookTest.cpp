#include "windows/CheckWindowFixture.h"
#include "windows/NothingClipped.h"

#include <QScreen>
#include <QScrollBar>
#include <QWindow>

namespace quillmark::test {

namespace {

class CheckWindowLook : public CheckWindowFixture {
protected:
    static constexpr int kMargin = 20;

    /// Where all that could jump stands, the window itself first.
    static QList<QRect> places() {
        return {findWindow()->geometry(), placeOf(explanation()), placeOf(list()),
                placeOf(install()),       placeOf(dontInstall()), placeOf(details())};
    }
    static int linesInSight() {
        const int line = list().visualItemRect(list().topLevelItem(0)).height();
        return list().viewport()->height() / line;
    }
};

/// The largest difference of brightness, 0 to 255, in a part of the window's picture.
int contrastIn(const QImage &picture, const QRect &place) {
    const int scale = static_cast<int>(picture.devicePixelRatio());
    const QImage part = picture.copy(QRect(place.topLeft() * scale, place.size() * scale));
    int darkest = 255;
    int lightest = 0;
    for (int y = 0; y < part.height(); ++y) {
        for (int x = 0; x < part.width(); ++x) {
            darkest = std::min(darkest, qGray(part.pixel(x, y)));
            lightest = std::max(lightest, qGray(part.pixel(x, y)));
        }
    }
    return lightest - darkest;
}

} // namespace

TEST_F(CheckWindowLook, LoadsNoPlugInOfAFormDesigner) {
    const QStringList folders = QCoreApplication::libraryPaths();
    show();
    QFile maps("/proc/self/maps");
    ASSERT_TRUE(maps.open(QIODevice::ReadOnly));
    const QByteArray loaded = maps.readAll();
    EXPECT_TRUE(loaded.contains("libquillmark-windows.so"));
    EXPECT_FALSE(loaded.contains("/designer/"));
    EXPECT_EQ(QCoreApplication::libraryPaths(), folders);
}

// Where things stand

TEST_F(CheckWindowLook, IsSixHundredPointsWideWithTheHeaderAcrossItsTop) {
    EXPECT_EQ(show().width(), 600);
    EXPECT_EQ(placeOf(outlet("checkHeaderView")), QRect(0, 0, 600, 60));
}

TEST_F(CheckWindowLook, HasMarginsOfTwentyPoints) {
    const QRect inside = show().rect().adjusted(kMargin, 60 + kMargin, -kMargin, -kMargin);
    EXPECT_EQ(placeOf(explanation()).topLeft(), inside.topLeft());
    EXPECT_EQ(placeOf(explanation()).right(), inside.right());
    EXPECT_EQ(placeOf(list()).left(), inside.left());
    EXPECT_EQ(placeOf(list()).right(), inside.right());
    EXPECT_EQ(placeOf(details()).bottomLeft(), inside.bottomLeft());
    EXPECT_EQ(placeOf(install()).bottomRight(), inside.bottomRight());
}

TEST_F(CheckWindowLook, HasTheListUnderTheExplanationAndTheButtonsUnderTheList) {
    show();
    EXPECT_GT(placeOf(list()).top(), placeOf(explanation()).bottom());
    EXPECT_GT(placeOf(install()).top(), placeOf(list()).bottom());
    EXPECT_LT(placeOf(details()).right(), placeOf(dontInstall()).left());
    EXPECT_LT(placeOf(dontInstall()).right(), placeOf(install()).left());
}

TEST_F(CheckWindowLook, SpeaksInTheSystemsFont) {
    show();
    EXPECT_EQ(explanation().font(), QApplication::font());
    EXPECT_EQ(list().font().family(), QApplication::font().family());
}

TEST_F(CheckWindowLook, StandsInTheMiddleOfTheScreenAndCannotBeResized) {
    const QDialog &window = show();
    const QPoint offset = window.geometry().center() - window.screen()->availableGeometry().center();
    EXPECT_LE(offset.manhattanLength(), 60) << "more than a title bar away";
    EXPECT_EQ(window.minimumSize(), window.maximumSize());
}

TEST_F(CheckWindowLook, ComesBackToTheMiddleOfTheScreenFromWhereTheUserHasMovedIt) {
    QDialog &window = show();
    const QPoint middle = window.pos();
    window.move(3, 4);
    view->bringToFront();
    EXPECT_EQ(window.pos(), middle);
}

TEST_F(CheckWindowLook, FloatsAboveOrdinaryWindowsUnlessASheetCoversIt) {
    const QDialog &window = show();
    const auto isFloating = [&window] { return window.windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint); };
    EXPECT_TRUE(isFloating());
    view->beginProgressSheet(); // a password dialog comes now, and would stand behind it
    EXPECT_FALSE(isFloating());
    EXPECT_TRUE(window.isVisible());
    view->endProgressSheet();
    EXPECT_TRUE(isFloating());
    view->beginProgressSheet();
    view->bringToFront();
    EXPECT_TRUE(isFloating());
}

TEST_F(CheckWindowLook, ShowsTheWholeExplanationWithItsLastLineBreak) {
    show();
    const std::string text = "Before\n\n\u2022 after\n";
    view->setText(Outlet::Explanation, text);
    EXPECT_EQ(explanation().text(), qtText(text));
}

TEST_F(CheckWindowLook, TheHeaderAloneDecidesWhatIsPaintedOfIt) {
    show();
    EXPECT_FALSE(outlet("checkHeaderView").autoFillBackground()) << "a header that is not visible would show a ground";
}

TEST_F(CheckWindowLook, HasASmallSheetWithOneLineAndAnEndlessBar) {
    const QDialog &progress = showSheet();
    EXPECT_EQ(progress.width(), 400);
    EXPECT_LT(progress.height(), 100);
    // Attached to the header, over the explanation, where it leaves the list in sight.
    const QPoint corner = findWindow()->mapFromGlobal(progress.pos());
    EXPECT_EQ(corner, QPoint(100, outlet("checkHeaderView").height()));
    EXPECT_TRUE(progress.windowFlags().testFlag(Qt::FramelessWindowHint));
    const auto &bar = outlet<QProgressBar>("repairProgressIndicator");
    EXPECT_EQ(bar.minimum(), bar.maximum());
    EXPECT_FALSE(bar.isTextVisible());
    EXPECT_GT(placeOf(bar).top(), placeOf(outlet("repairProgressText")).bottom());
    view->endProgressSheet();
    EXPECT_FALSE(progress.isVisible());
    EXPECT_LT(bar.minimum(), bar.maximum());
}

// The list

TEST_F(CheckWindowLook, TheListIsAsHighAsItsLines) {
    for (const int count : {1, 3, 6}) {
        showLines(count);
        EXPECT_EQ(linesInSight(), count);
        EXPECT_FALSE(list().verticalScrollBar()->isVisible()) << count;
        keepPicture(*findWindow(), QString("check-%1-lines").arg(count));
    }
}

TEST_F(CheckWindowLook, TheListScrollsFromTheSeventhLineOn) {
    showLines(7);
    EXPECT_EQ(linesInSight(), 6);
    EXPECT_TRUE(list().verticalScrollBar()->isVisible());
    expectNothingClipped(*findWindow());
    keepPicture(*findWindow(), "check-7-lines");
}

TEST_F(CheckWindowLook, ALongNameIsCutOffAndToldInFullByItsToolTip) {
    const std::string name(300, 'x');
    faults = {{name, "Wrong Permissions"}};
    show();
    EXPECT_GE(list().columnWidth(1), list().fontMetrics().horizontalAdvance(qtText(faults[0].status)));
    EXPECT_EQ(list().columnWidth(0) + list().columnWidth(1), list().viewport()->width());
    EXPECT_EQ(list().topLevelItem(0)->toolTip(0), qtText(name));
}

TEST_F(CheckWindowLook, WithoutAnyFaultThereIsNoList) {
    show();
    view->setFaults({});
    EXPECT_FALSE(list().isVisible());
}

// Nothing jumps

TEST_F(CheckWindowLook, NothingJumpsWhenLessIsLeftToSay) {
    show();
    const QList<QRect> before = places();
    view->setText(Outlet::Explanation, explanation().text().section(u'\n', 0, 0).toStdString());
    view->setFaults({{"QuillmarkFS", "Missing"}});
    QApplication::processEvents();
    EXPECT_EQ(places(), before);
    bringToFront();
    EXPECT_EQ(places(), before);
}

TEST_F(CheckWindowLook, NothingJumpsUnderTheSheetAndBehindIt) {
    show();
    const QList<QRect> before = places();
    beginSheet();
    EXPECT_EQ(places(), before);
    view->endProgressSheet();
    bringToFront();
    EXPECT_EQ(places(), before);
}

TEST_F(CheckWindowLook, GrowsForALongerText) {
    const int before = show().height();
    view->setText(Outlet::Explanation, explanation().text().toStdString() + "\n\nAnd a line more.");
    bringToFront();
    EXPECT_GT(findWindow()->height(), before);
    expectNothingClipped(*findWindow());
}

// Colours

TEST_F(CheckWindowLook, EveryTextIsReadableInLightAndInDark) {
    for (const bool isDark : {false, true}) {
        if (isDark) {
            useDarkPalette();
        }
        QDialog &window = show();
        const QImage picture = window.grab().toImage();
        EXPECT_EQ(qGray(picture.pixel(2, picture.height() - 3)) < 0x40, isDark);
        for (const QWidget *text : {static_cast<QWidget *>(&explanation()), static_cast<QWidget *>(list().header()),
                                    static_cast<QWidget *>(list().viewport()), static_cast<QWidget *>(&install()),
                                    static_cast<QWidget *>(&dontInstall()), static_cast<QWidget *>(&details())}) {
            const QRect place = placeOf(*text).adjusted(30, 3, -4, -3); // without frames, nor the sign of a fault
            EXPECT_GT(contrastIn(picture, place), 0x80) << qPrintable(text->objectName()) << isDark;
        }
        keepPicture(window, isDark ? "check-dark" : "check-light");
        beginSheet();
        EXPECT_GT(contrastIn(sheet().grab().toImage(), placeOf(outlet("repairProgressText"))), 0x80);
        keepPicture(sheet(), isDark ? "check-dark-sheet" : "check-light-sheet");
    }
}

// Assistive programs

TEST_F(CheckWindowLook, EveryControlHasAnAccessibleName) {
    QDialog &window = show();
    beginSheet();
    for (const auto &[name, role, text] :
         {std::tuple("checkHeaderView", QAccessible::Heading, QString("Installing Quillmark")),
          {"checkText", QAccessible::StaticText, explanation().text()},
          {"checkFaults", QAccessible::Tree, "Components that need repair"},
          {"checkDetails", QAccessible::Button, "Details"},
          {"checkDontInstall", QAccessible::Button, "Don’t Install"},
          {"checkInstall", QAccessible::Button, "Continue"},
          {"repairProgressText", QAccessible::StaticText, "Installing the Quillmark components…"},
          {"repairProgressIndicator", QAccessible::ProgressBar, "Installing the Quillmark components…"},
          {"repairProgressWindow", QAccessible::Dialog, "Quillmark"}}) {
        EXPECT_EQ(accessible(outlet(name)).role(), role) << name;
        EXPECT_EQ(accessible(outlet(name)).text(QAccessible::Name), text) << name;
    }
    EXPECT_EQ(accessible(window).text(QAccessible::Name), "Quillmark");
    EXPECT_EQ(accessible(window).text(QAccessible::Description), explanation().text());
}

TEST_F(CheckWindowLook, TheListTellsItsColumnsByTheirTitles) {
    language = "de";
    show();
    QAccessibleTableInterface *const table = accessible(list()).tableInterface();
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->columnDescription(0), "Komponente");
    EXPECT_EQ(table->columnDescription(1), "Zustand");
    EXPECT_TRUE(list().header()->isVisible());
}

} // namespace quillmark::test

// The check window from files and with values that are at fault.

#include "platform/Alerts.h"
#include "windows/CheckWindowFixture.h"

#include <QTemporaryDir>
#include <climits>

namespace quillmark::test {

namespace {

class CheckWindowDamage : public CheckWindowFixture {
protected:
    CheckWindowDamage() {
        QFile file(qtText(interfaceFile));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        whole = file.readAll();
        interfaceFile = folder.filePath("InstallCheck.ui").toStdString();
        write(whole);
    }
    void write(const QByteArray &contents) const { writeFile("InstallCheck.ui", contents); }
    void writeFile(const char *name, const QByteArray &contents) const {
        QFile file(folder.filePath(QLatin1StringView(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size());
    }
    /// The file with a piece replaced that is in it once.
    void writeWith(const QByteArray &piece, const QByteArray &other) const {
        ASSERT_EQ(whole.count(piece), 1) << piece.constData();
        write(QByteArray(whole).replace(piece, other));
    }
    /// No window, and one line that says why.
    void expectNoWindow(const QString &reason) {
        problems().clear();
        EXPECT_FALSE(load());
        ASSERT_EQ(problems().size(), 1) << qPrintable(reason);
        EXPECT_TRUE(problems()[0].startsWith("The check window could not be shown: the interface file \"" +
                                             qtText(interfaceFile) + u'"'))
            << qPrintable(problems()[0]);
        EXPECT_TRUE(problems()[0].contains(reason)) << qPrintable(problems()[0]);
    }
    /// The window does all that it can be told to do, and the log names what it lacks.
    void expectWorkingWindowWithout(const QString &problem) {
        problems().clear();
        show();
        const QString line = "The check window is incomplete: " + problem;
        EXPECT_TRUE(problems().contains(line)) << qPrintable(line) << "\n" << qPrintable(problems().join(u'\n'));
        beginSheet();
        calls.clear();
        view->endProgressSheet();
        view->beginAlertSheet(AlertDescription());
        QApplication::processEvents();
        EXPECT_TRUE(findWindow()->isVisible());
        EXPECT_FALSE(findWindow()->close());
        EXPECT_EQ(calls, QStringList({"sheet ended", "close"}));
    }
    /// As the window shows it: alone, the header would be drawn on a ground that it need not have.
    static QColor headerAt(int x, int y) {
        const QImage picture = findWindow()->grab().toImage();
        return picture.pixelColor(QPoint(x, y) * static_cast<int>(picture.devicePixelRatio()));
    }

    QTemporaryDir folder;
    QByteArray whole;
};

constexpr std::array kOutlets{"checkHeaderView",   "checkText",    "checkFaults",          "checkInstall",
                              "checkDontInstall",  "checkDetails", "repairProgressWindow", "repairProgressIndicator",
                              "repairProgressText"};

/// The start of the outlet's element: its class and its name.
QByteArray elementOf(const QByteArray &file, const QByteArray &outlet) {
    const qsizetype name = file.indexOf("name=\"" + outlet + '"');
    const qsizetype start = file.lastIndexOf("<widget", name);
    return file.mid(start, name - start) + "name=\"" + outlet + '"';
}

} // namespace

// No window

TEST_F(CheckWindowDamage, AFileThatIsMissingGivesNoWindow) {
    ASSERT_TRUE(QFile::remove(qtText(interfaceFile)));
    expectNoWindow("can't be read: No such file");
    interfaceFile = "InstallCheck.ui";
    expectNoWindow("can't be read");
}

TEST_F(CheckWindowDamage, AResourceThatIsMissingIsNamedAllTheSame) {
    interfaceFile.clear();
    EXPECT_FALSE(load());
    EXPECT_EQ(problems(), QStringList{"The check window could not be shown: the interface file "
                                      "\"InstallCheck.ui\" is missing"});
}

TEST_F(CheckWindowDamage, AFolderInTheFilesPlaceGivesNoWindow) {
    ASSERT_TRUE(QFile::remove(qtText(interfaceFile)) && QDir().mkpath(qtText(interfaceFile)));
    expectNoWindow("can't be read");
}

TEST_F(CheckWindowDamage, AFileThatIsNoInterfaceGivesNoWindow) {
    for (const QByteArray &contents :
         {QByteArray(), QByteArray("no XML"), QByteArray(1000, '\0'), QByteArray("\xff\xfe\x00\xd8", 4),
          QByteArray("<plist/>"), QByteArray("<ui/>"), QByteArray(R"(<ui version="4.0"></ui>)"),
          QByteArray(R"(<ui version="3.0"><widget class="QDialog" name="checkWindow"/></ui>)"),
          QByteArray(R"(<ui version="4.0"><widget class="QWidget" name="checkWindow"/></ui>)"),
          QByteArray(R"(<ui version="4.0"><widget class="NoSuch" name="checkWindow"/></ui>)")}) {
        write(contents);
        problems().clear();
        EXPECT_FALSE(load()) << contents.constData();
        ASSERT_FALSE(problems().isEmpty()) << contents.constData();
        for (const QString &problem : problems()) {
            EXPECT_TRUE(problem.contains(qtText(interfaceFile))) << qPrintable(problem);
        }
    }
}

TEST_F(CheckWindowDamage, ATruncatedFileGivesNoWindowWhereverItEnds) {
    for (qsizetype size = 1; size < whole.lastIndexOf('>'); size += 53) {
        write(whole.first(size));
        expectNoWindow("is damaged: line ");
    }
}

TEST_F(CheckWindowDamage, AHugeFileGivesNoWindow) {
    write(whole + QByteArray(2 << 20, ' '));
    expectNoWindow("is damaged: it is larger than 1048576 bytes");
}

TEST_F(CheckWindowDamage, WidgetsInEachOtherByTheThousandGiveNoWindow) {
    const QByteArray open = R"(<widget class="QDialog">)";
    write(R"(<ui version="4.0">)" + open.repeated(20'000) + QByteArray("</widget>").repeated(20'000) + "</ui>");
    expectNoWindow("more than 100 elements lie in each other in line 1");
}

TEST_F(CheckWindowDamage, EntitiesThatUnfoldIntoGigabytesGiveNoWindow) {
    QByteArray entities = "<!DOCTYPE ui [<!ENTITY a0 \"aaaaaaaaaaaaaaaaaaaa\">";
    for (int level = 1; level < 12; ++level) {
        const QByteArray below = "&a" + QByteArray::number(level - 1) + ';';
        entities += "<!ENTITY a" + QByteArray::number(level) + " \"" + below.repeated(10) + "\">";
    }
    write(entities + "]><ui version=\"4.0\"><class>&a11;</class></ui>");
    expectNoWindow("is damaged: line 1");
}

TEST_F(CheckWindowDamage, ANewTryAfterwardsGivesTheWindow) {
    write("damaged");
    EXPECT_FALSE(load());
    write(whole);
    problems().clear();
    show();
    EXPECT_EQ(problems(), QStringList());
}

// Half a window

TEST_F(CheckWindowDamage, EachOutletMayBeMissing) {
    for (const char *name : kOutlets) {
        const QByteArray element = elementOf(whole, name);
        writeWith(element, QByteArray(element).replace(name, "another"));
        expectWorkingWindowWithout(QString("the interface file has no \"%1\"").arg(QLatin1StringView(name)));
    }
}

TEST_F(CheckWindowDamage, AllOutletsMayBeMissing) {
    write(R"(<ui version="4.0"><widget class="QDialog" name="checkWindow"/></ui>)");
    for (const char *name : kOutlets) {
        expectWorkingWindowWithout(QString("the interface file has no \"%1\"").arg(QLatin1StringView(name)));
    }
}

TEST_F(CheckWindowDamage, EachOutletMayBeOfAWrongClass) {
    for (const char *name : kOutlets) {
        const QByteArray element = elementOf(whole, name);
        writeWith(element, QByteArray(R"(<widget class="QFrame" name=")") + name + '"');
        expectWorkingWindowWithout(
            QString("\"%1\" in the interface file is of the wrong class (QFrame)").arg(QLatin1StringView(name)));
        EXPECT_FALSE(outlet(name).isVisible()) << "nothing would ever be written there";
    }
}

TEST_F(CheckWindowDamage, EachOutletMayBeOfAnUnknownClass) {
    for (const char *name : kOutlets) {
        const QByteArray element = elementOf(whole, name);
        writeWith(element, QByteArray(R"(<widget class="NoSuchClass" name=")") + name + '"');
        expectWorkingWindowWithout(QString("the interface file has no \"%1\"").arg(QLatin1StringView(name)));
        EXPECT_TRUE(problems().join(u'\n').contains(u"NoSuchClass")) << qPrintable(problems().join(u'\n'));
    }
}

TEST_F(CheckWindowDamage, AbsurdSizesStayOnTheScreen) {
    for (const char *size : {"2147483647", "-2147483648", "99999999999999", "many"}) {
        writeWith("<width>600</width><height>60</height>",
                  QByteArray("<width>") + size + "</width><height>" + size + "</height>");
        const QDialog &window = show();
        EXPECT_LE(window.width(), 1024) << size;
        EXPECT_LE(window.height(), 768) << size;
    }
}

TEST_F(CheckWindowDamage, WithoutASheetARepairCannotBeStartedTwice) {
    const QByteArray element = elementOf(whole, "repairProgressWindow");
    writeWith(element, QByteArray(element).replace("repairProgressWindow", "another"));
    show();
    view->beginProgressSheet();
    QTest::mouseClick(findWindow()->windowHandle(), Qt::LeftButton, {}, placeOf(install()).center());
    QTest::keyClick(findWindow()->windowHandle(), Qt::Key_Return);
    QTest::keyClick(findWindow()->windowHandle(), Qt::Key_Escape);
    EXPECT_FALSE(findWindow()->close());
    EXPECT_EQ(calls, QStringList());
    view->endProgressSheet();
    QTest::mouseClick(&install(), Qt::LeftButton);
    EXPECT_EQ(calls, QStringList({"sheet ended", "install"}));
}

// Pictures

TEST_F(CheckWindowDamage, PicturesThatAreMissingOrDamagedAreNamedAndTheTitleStaysReadable) {
    branding.resourceFolder = folder.path().toStdString();
    for (const QByteArray &contents : {QByteArray(), QByteArray("no picture"), QByteArray("\x89PNG\r\n\x1a\n", 8)}) {
        problems().clear();
        show();
        QStringList expected;
        for (const char *name : {"appheade_bg.png", "resellerheader_bg.png", "appheader_logo.png"}) {
            expected << QString("The check window is incomplete: the picture \"%1\" can't be read")
                            .arg(QLatin1StringView(name));
            writeFile(name, contents); // for the next round
        }
        EXPECT_EQ(problems(), expected);
        EXPECT_LT(qGray(headerAt(5, 5).rgb()), 0x40) << "the title is white";
    }
}

TEST_F(CheckWindowDamage, ALogoThatIsNoneIsLeftOut) {
    show();
    for (const Image &image : {Image{}, Image{{}, 120, 44, "short"}, Image{{}, INT_MAX, INT_MAX, "short"},
                               Image{"../../logo", -1, -1, {}}}) {
        view->setHeaderLogo(image);
        QApplication::processEvents();
        EXPECT_NE(headerAt(525, 30), Qt::white);
    }
}

// Values

TEST_F(CheckWindowDamage, EveryBrandHasAHeader) {
    for (const qint32 each : {-1, 0, 1, 15, 10'000, 10'001, INT_MAX, INT_MIN}) {
        brand = each;
        show();
        const QColor ground = headerAt(300, 20);
        EXPECT_EQ(ground == Qt::black, each == 15) << each;
        EXPECT_EQ(ground == Qt::white, each > 10'000) << each;
    }
}

TEST_F(CheckWindowDamage, TextsAreShownAsTheyAreWhateverStandsInThem) {
    show();
    for (const std::string &text : {std::string("%1 %s %n %@ {#Nothing#}"), std::string("<b>1 &lt; 2</b> & 3"),
                                    std::string("a\0b", 3), std::string(), std::string("\xED\xA0\x80")}) {
        for (int each = 0; each <= static_cast<int>(Outlet::Progress); ++each) {
            view->setText(static_cast<Outlet>(each), text);
        }
        QApplication::processEvents();
        EXPECT_EQ(explanation().text(), qtText(text));
        EXPECT_EQ(explanation().textFormat(), Qt::PlainText);
        EXPECT_EQ(install().accessibleName(), qtText(text));
        EXPECT_TRUE(install().shortcut().isEmpty());
    }
}

TEST_F(CheckWindowDamage, ATextWithoutAnEndLeavesTheButtonsInSight) {
    show();
    view->setText(Outlet::Explanation, QString("And so on. ").repeated(20'000).toStdString());
    bringToFront();
    EXPECT_LE(findWindow()->height(), 768);
    EXPECT_TRUE(findWindow()->rect().contains(placeOf(install())));
    EXPECT_GE(install().height(), install().sizeHint().height());
}

TEST_F(CheckWindowDamage, AListOfThousandsIsAsHighAsAShortOne) {
    showLines(10'000);
    EXPECT_LE(findWindow()->height(), 600);
}

} // namespace quillmark::test

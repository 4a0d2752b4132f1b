#pragma once

#include "branding/LocalizedStrings.h"
#include "platform/HeaderBranding.h"
#include "platform/Images.h"
#include "platform/Platform.h"
#include "platform/Problem.h"
#include "platform/linux/LinuxBundle.h"
#include "platform/linux/LinuxCheckWindows.h"
#include "platform/linux/WindowModule.h"
#include "support/QtPrinters.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <gtest/gtest.h>

namespace quillmark::test {

/// Shows the check window of the built bundle's own module, filled as the install check does it.
class CheckWindowFixture : public testing::Test, protected CheckWindowView::Owner {
protected:
    using Outlet = CheckWindowView::Outlet;
    using Fault = CheckWindowView::Fault;

    CheckWindowFixture() {
        problems().clear();
        setProblemReporter([](const QString &sentence) { problems() << sentence; });
    }
    ~CheckWindowFixture() override {
        setProblemReporter([](const QString & /*sentence*/) {});
        if (QDialog *const dialog = findWindow(); dialog != nullptr) {
            dialog->hide();
        }
        QApplication::setFont(m_font);
        QApplication::setPalette(m_palette);
    }

    /// Loads the window, if the file gives one.
    bool load() {
        view = m_checkWindows.load(interfaceFile, branding, *this);
        return view != nullptr;
    }
    /// Gives the window what the install check gives it.
    void fill() {
        const LinuxBundle bundle(QStringLiteral(QUILLMARK_APP), {language}, nativePlatform().propertyList);
        LocalizedStrings strings(bundle);
        const auto text = [&strings](const char *key) { return strings.localisedString(QLatin1StringView(key)); };
        view->setText(Outlet::Header, text("Installing Quillmark"));
        view->useWelcomeBranding();
        if (logo) {
            view->setHeaderLogo(*logo);
        }
        view->setText(Outlet::InstallButton, text("Continue"));
        view->setText(Outlet::DontInstallButton, text("QuillmarkLauncher_DontInstall"));
        view->setText(Outlet::Window, text("ProductName"));
        view->setText(Outlet::Progress, text("QuillmarkLauncher_Installing"));
        view->setText(Outlet::DetailsButton, text("QuillmarkLauncher_Details"));
        view->setText(Outlet::FaultsList, text("QuillmarkLauncher_FaultyComponents"));
        view->setText(Outlet::NameColumn, text("QuillmarkLauncher_Component"));
        view->setText(Outlet::StatusColumn, text("QuillmarkLauncher_Status"));
        view->makeInstallButtonDefault();
        shortExplanation = text("QuillmarkLauncher_RepairInfo");
        view->setText(Outlet::Explanation, shortExplanation + text("QuillmarkLauncher_Components") +
                                               text("QuillmarkLauncher_FileSystem") +
                                               text("QuillmarkLauncher_Helpers") + u'\n');
        view->setFaults(faults.isEmpty() ? QList<Fault>{{QStringLiteral("updateqm"), text("Wrong Permissions")},
                                                        {QStringLiteral("finderoverlaytool"), text("Missing")},
                                                        {QStringLiteral("QuillmarkFS"), text("Old Version")}}
                                         : faults);
    }
    /// The window as it comes to the front, and as the user has it before him.
    QDialog &show() {
        EXPECT_TRUE(load());
        fill();
        view->bringToFront();
        EXPECT_TRUE(QTest::qWaitForWindowActive(findWindow()));
        QApplication::processEvents();
        return *findWindow();
    }
    void showLines(int count) {
        faults.clear();
        for (int index = 1; index <= count; ++index) {
            faults.append({QStringLiteral("component%1").arg(index), QStringLiteral("Missing")});
        }
        show();
    }
    QDialog &showSheet() {
        show();
        view->beginProgressSheet();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&sheet()));
        return sheet();
    }

    static QDialog *findWindow() {
        for (QWidget *const widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == u"checkWindow") {
                return dynamic_cast<QDialog *>(widget);
            }
        }
        return nullptr;
    }
    template <class Widget = QWidget>
    static Widget &outlet(const char *name) {
        auto *const widget = findWindow()->findChild<Widget *>(QLatin1StringView(name));
        EXPECT_NE(widget, nullptr) << name;
        return *widget;
    }
    static QLabel &explanation() { return outlet<QLabel>("checkText"); }
    static QTreeWidget &list() { return outlet<QTreeWidget>("checkFaults"); }
    static QPushButton &install() { return outlet<QPushButton>("checkInstall"); }
    static QPushButton &dontInstall() { return outlet<QPushButton>("checkDontInstall"); }
    static QPushButton &details() { return outlet<QPushButton>("checkDetails"); }
    static QDialog &sheet() { return outlet<QDialog>("repairProgressWindow"); }

    /// Where it stands in the window.
    static QRect placeOf(const QWidget &widget) { return {widget.mapTo(widget.window(), QPoint(0, 0)), widget.size()}; }

    static void useLargerFont(double factor) {
        QFont font = QApplication::font();
        font.setPointSizeF(font.pointSizeF() * factor);
        QApplication::setFont(font);
    }
    static void useDarkPalette() { QApplication::setPalette(QPalette(QColor(0x2a, 0x2e, 0x32))); }

    static std::optional<Image> shippedLogo() {
        const QString name = QStringLiteral("logo-1.bmp");
        std::optional<Image> image =
            nativePlatform().images.load(QStringLiteral(QUILLMARK_APP "/Contents/Resources/") + name);
        image->name = name;
        return image;
    }

    /// Leaves a picture for whoever wants to see it.
    static void keepPicture(QWidget &window, const QString &name) {
        const QString folder = QStringLiteral(QUILLMARK_DRAWN_PICTURES);
        QDir().mkpath(folder);
        const QString path = QStringLiteral("%1/%2@%3x.png").arg(folder, name).arg(window.devicePixelRatioF());
        EXPECT_TRUE(window.grab().save(path)) << qPrintable(path);
    }

    /// What was reported since the test began.
    static QStringList &problems() {
        static QStringList list;
        return list;
    }

    CheckWindowView *view = nullptr;
    QString language = QStringLiteral("en");
    QString shortExplanation;
    QList<Fault> faults; ///< three, if none are given
    QString interfaceFile = QStringLiteral(QUILLMARK_APP "/Contents/Resources/InstallCheck.ui");
    qint32 brand = 1;
    std::optional<Image> logo = shippedLogo();
    HeaderBranding branding{QStringLiteral(QUILLMARK_APP "/Contents/Resources"), QStringLiteral("Quillmark"),
                            [] { return -1; }, [this] { return brand; },
                            [](qint32 /*brand*/) { return std::optional<Image>(); }};
    QStringList calls; ///< what the owner was told

    void installButtonClick() override { calls << QStringLiteral("install"); }
    void dontInstallButtonClick() override { calls << QStringLiteral("don't install"); }
    void detailsButtonClick() override { calls << QStringLiteral("details"); }
    void windowWillClose() override { calls << QStringLiteral("close"); }
    void sheetDidEnd() override {
        calls << QStringLiteral("sheet ended");
        view->orderOutProgressSheet();
    }

private:
    const QFont m_font = QApplication::font();
    const QPalette m_palette = QApplication::palette();
    std::unique_ptr<Bundle> m_bundle = nativeBundle(QStringLiteral(QUILLMARK_APP));
    WindowModule m_module{*m_bundle};
    LinuxCheckWindows m_checkWindows{m_module};
};

} // namespace quillmark::test

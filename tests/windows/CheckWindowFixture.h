#pragma once

#include "QtPrinters.h"
#include "WindowsRunLoop.h"
#include "platform/Platform.h"
#include "platform/linux/windows/LinuxCheckWindows.h"
#include "platform/linux/windows/WindowModule.h"
#include "platform/process/Problem.h"
#include "platform/windows/HeaderBranding.h"
#include "support/InstallCheckFixture.h"
#include "texts/windows/QtText.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <gtest/gtest.h>

namespace quillmark::test {

/// Shows the check window of the built bundle's own module, filled by an install check over components of the test's
/// own, in one of the languages of the bundle.
class CheckWindowFixture : public InstallCheckFixture, protected CheckWindowView::Owner {
protected:
    using Outlet = CheckWindowView::Outlet;
    using Fault = CheckWindowView::Fault;

    CheckWindowFixture() {
        problems().clear();
        setProblemReporter([](const std::string &sentence) { problems() << qtText(sentence); });
    }
    ~CheckWindowFixture() override {
        setProblemReporter([](const std::string & /*sentence*/) {});
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
    /// Lets the install check find the components at fault, and give the window what it gives it.
    void fill() {
        speak();
        platform.images.pictures[platform.bundle.resourcePath() + "/logo-1.bmp"] = *logo;
        platform.bundle.resources.push_back(logo->name);
        platform.checkWindows.windowInItsPlace = view;
        setItems(components.empty() ? componentsAtFault() : components);
        EXPECT_FALSE(manager().checkForRequiredItems());
        if (!faults.empty()) {
            view->setFaults(faults);
        }
    }
    /// Has the language's texts looked up from now on.
    void speak() {
        const Dictionary texts = nativePlatform().propertyList.readDictionary(QUILLMARK_APP "/Contents/Resources/" +
                                                                              language + ".lproj/Localizable.strings");
        EXPECT_FALSE(texts.empty()) << language;
        for (const auto &[key, text] : texts) {
            platform.bundle.strings[key] = text.text().value_or("");
        }
    }

    // Components for the install check to find.

    RequiredItem missing(const char *type, const char *name) const { return itemOf(type, name, home.path("none")); }
    RequiredItem toolWithWrongPermissions() {
        return itemOf("QMTool", "updateqm", installTool("updateqm", "Limited 1.14.4.1303", 0775));
    }
    RequiredItem oldFileSystem() {
        return itemOf("Bundle", "QuillmarkFS", installBundle("fs", "1.0.0"), {{kVersion, "1.14.4"}});
    }
    RequiredItem invalidFramework() { return itemOf("Bundle", "QuillmarkRuntime", installBundle("runtime", Value())); }
    /// Of both kinds that the explanation names, each with a status of its own.
    List componentsAtFault() {
        return {toolWithWrongPermissions(), missing("QMTool", "finderoverlaytool"), oldFileSystem()};
    }

    /// The window as it comes to the front, and as the user has it before him.
    QDialog &show() {
        EXPECT_TRUE(load());
        fill();
        EXPECT_TRUE(QTest::qWaitForWindowActive(findWindow()));
        QApplication::processEvents();
        return *findWindow();
    }
    void showLines(int count) {
        components.clear();
        for (int index = 1; index <= count; ++index) {
            components.push_back(missing("QMTool", ("component" + std::to_string(index)).c_str()));
        }
        show();
    }
    void bringToFront() {
        view->bringToFront();
        QApplication::processEvents();
    }
    void beginSheet() {
        view->beginProgressSheet();
        QApplication::processEvents();
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

    static std::optional<Image> shippedLogo(const char *file = "logo-1.bmp") {
        std::optional<Image> image =
            nativePlatform().images.load(std::string(QUILLMARK_APP "/Contents/Resources/") + file);
        image->name = file;
        return image;
    }

    /// Leaves a picture for whoever wants to see it, of the window with the sheet or the alert that covers it.
    static void keepPicture(QWidget &window, const QString &name, const QString &folder = QUILLMARK_DRAWN_PICTURES) {
        QDir().mkpath(folder);
        const QString path = QString("%1/%2@%3x.png").arg(folder, name).arg(window.devicePixelRatioF());
        QPixmap picture = window.grab();
        QPainter painter(&picture);
        for (QDialog *const cover : window.findChildren<QDialog *>()) {
            if (cover->isVisible()) {
                const QRect place(window.mapFromGlobal(cover->pos()), cover->size());
                painter.drawPixmap(place.topLeft(), cover->grab());
                if (!cover->windowFlags().testFlag(Qt::FramelessWindowHint)) {
                    painter.drawRect(place); // in a desktop's frame's place
                }
            }
        }
        painter.end();
        EXPECT_TRUE(picture.save(path)) << qPrintable(path);
    }

    /// What was reported since the test began.
    static QStringList &problems() {
        static QStringList list;
        return list;
    }

    CheckWindowView *view = nullptr;
    std::string language = "en";
    List components;           ///< all of them at fault; three, if none are given
    std::vector<Fault> faults; ///< what the list shows; that of the components, if none are given
    std::string interfaceFile = QUILLMARK_APP "/Contents/Resources/InstallCheck.ui";
    std::int32_t brand = 1;
    std::optional<Image> logo = shippedLogo();
    HeaderBranding branding{QUILLMARK_APP "/Contents/Resources", "Quillmark", [] { return -1; },
                            [this] { return brand; },
                            [](std::int32_t id) { return shippedLogo(id == 15 ? "logo-15.bmp" : "logo-1.bmp"); }};
    QStringList calls; ///< what the owner was told

    void installButtonClick() override { calls << "install"; }
    void dontInstallButtonClick() override { calls << "don't install"; }
    void detailsButtonClick() override { calls << "details"; }
    void windowWillClose() override { calls << "close"; }
    void sheetDidEnd() override {
        calls << "sheet ended";
        view->orderOutProgressSheet();
    }

private:
    const QFont m_font = QApplication::font();
    const QPalette m_palette = QApplication::palette();
    std::unique_ptr<Bundle> m_bundle = nativeBundle(QUILLMARK_APP);
    WindowModule m_module{*m_bundle, windowsRunLoop()};
    LinuxCheckWindows m_checkWindows{m_module};
};

} // namespace quillmark::test

// Every state of every window in every language, in light and in dark colours: checked for what a program can see, and
// kept as pictures for people, which gallery_test.py puts on one page.

#include "alerts/windows/AlertDialog.h"
#include "alerts/windows/DialogAlerts.h"
#include "desktop/MoveToApplications.h"
#include "launcher/Quillmark_LauncherAppDelegate.h"
#include "platform/Authorization.h"
#include "windows/CheckWindowFixture.h"
#include "windows/NothingClipped.h"

#include <filesystem>

namespace quillmark::test {

namespace {

constexpr std::array kLanguages{"en", "de", "fr", "es", "ja"};

constexpr double kNewestAppKit = 2487;
constexpr double kAppKitWithoutCheckBoxes = 824;

class WindowStates : public CheckWindowFixture {
protected:
    struct State {
        const char *name = "";
        std::function<void(WindowStates &)> show;
    };

    WindowStates() {
        platform.workspace.ownFolder = home.path();
        platform.workspace.localFolders = {home.makeFolder("local")};
        platform.workspace.downloads = {home.path("Downloads")};
    }

    static const std::vector<State> &states() {
        static const std::vector<State> all{
            {"check-helpers", [](auto &self) { self.showCheck({self.missing("QMTool", "finderoverlaytool")}); }},
            {"check-file-system", [](auto &self) { self.showCheck({self.oldFileSystem()}); }},
            {"check-both", [](auto &self) { self.showCheck(self.componentsAtFault()); }},
            {"check-neither", [](auto &self) { self.showCheck({self.missing("Bundle", "QuillmarkRuntime")}); }},
            {"check-every-status", [](auto &self) { self.showEveryStatus(); }},
            {"check-of-brand-15", [](auto &self) { self.showBrand(15); }},
            {"check-of-a-reseller", [](auto &self) { self.showBrand(10001); }},
            {"check-repairing", [](auto &self) { self.showCheckAfter(&InstallCheckManager::installButtonClick); }},
            {"check-repair-failed", [](auto &self) { self.showCheckAfter(&InstallCheckManager::repairFailed); }},
            {"check-run-failed", [](auto &self) { self.showCheckAfter(&InstallCheckManager::runQuillmark); }},
            {"alert-without-check-window", [](auto &self) { self.showFaultsAlert(); }},
            {"alert-already-running", [](auto &self) { self.showAlreadyRunning(); }},
            {"alert-move", [](auto &self) { self.showMove("Desktop", true); }},
            {"alert-move-from-downloads", [](auto &self) { self.showMove("Downloads", true); }},
            {"alert-move-with-password", [](auto &self) { self.showMove("Downloads", false); }},
            {"alert-move-without-check-box", [](auto &self) { self.showMoveOnAnOldSystem(); }},
            {"alert-move-failed", [](auto &self) { self.showFailedMove(); }},
        };
        return all;
    }

    /// Shows the state in that language. \returns its windows, the lowest first.
    QList<QDialog *> windowsOf(const State &state, const std::string &inLanguage) {
        for (QWidget *const widget : QApplication::topLevelWidgets()) {
            widget->hide(); // what is left of the state before
        }
        components.clear();
        brand = 1;
        platform.systemInfo.appKit = kNewestAppKit;
        language = inLanguage;
        speak();
        state.show(*this);
        QApplication::processEvents();
        QList<QDialog *> windows;
        for (QWidget *const widget : QApplication::topLevelWidgets()) {
            auto *const window = qobject_cast<QDialog *>(widget);
            if (window != nullptr && window->isVisible()) {
                windows.insert(window->parentWidget() == nullptr ? 0 : windows.size(), window);
            }
        }
        EXPECT_FALSE(windows.isEmpty()) << state.name;
        return windows;
    }

private:
    void showCheck(const List &list) {
        components = list;
        show();
    }
    void showCheckAfter(void (InstallCheckManager::*deed)()) {
        showCheck(componentsAtFault());
        (manager().*deed)();
    }
    void showEveryStatus() {
        List all{toolWithWrongPermissions(), oldFileSystem(), invalidFramework()};
        for (const char *name : {"finderoverlaytool", "QuillmarkContextMenu", "QuillmarkOverlay", "QuillmarkBackup"}) {
            all.push_back(missing("QMTool", name));
        }
        showCheck(all);
    }
    void showBrand(qint32 other) {
        brand = other;
        show();
    }
    void showFaultsAlert() {
        platform.checkWindows.canBeShown = false;
        setItems(componentsAtFault());
        manager().checkForRequiredItems();
        manager().runFaultsAlert();
        platform.checkWindows.canBeShown = true;
        showAlert();
    }
    void showAlreadyRunning() {
        platform.tasks.usualStatus = 0;
        LocalizedStrings strings(platform.bundle);
        Quillmark_LauncherAppDelegate delegate(strings, [this]() -> InstallCheckManager & { return manager(); });
        EXPECT_THROW(delegate.ensureCoreNotRunning(), Terminated);
        platform.tasks.usualStatus = 1;
        showAlert();
    }
    void showMove(const char *folder, bool hasOldCopy) {
        platform.bundle.bundlePath = home.makeFolder(std::string(folder) + "/Quillmark.app");
        if (hasOldCopy) {
            home.makeFolder("local/Quillmark.app");
        }
        LocalizedStrings strings(platform.bundle);
        PFMove(strings); // asks, and is answered "Do Not Move"
        std::filesystem::remove(home.path("local/Quillmark.app"));
        showAlert();
    }
    void showMoveOnAnOldSystem() {
        platform.systemInfo.appKit = kAppKitWithoutCheckBoxes;
        showMove("Downloads", false);
    }
    /// The user has agreed, and there is no way to ask for the password that it takes.
    void showFailedMove() {
        platform.authorization.createStatus = kAuthorizationDenied;
        platform.alerts.answers = {{0, false}};
        showMove("Downloads", false);
    }
    /// The alert that the launcher has asked for last.
    void showAlert() {
        static const DialogAlerts alerts(QUILLMARK_APP "/Contents/Resources");
        m_alert = std::make_unique<AlertDialog>(platform.alerts.last, alerts.icon());
        m_alert->show();
    }

    std::unique_ptr<AlertDialog> m_alert;
};

/// All that a window says, to those who see it and to those who hear it.
QStringList textsOf(const QDialog &window) {
    QStringList texts{window.windowTitle(), window.accessibleDescription()};
    for (const auto *widget : window.findChildren<QWidget *>()) {
        if (widget->isVisibleTo(&window) && widget->window() == &window) {
            const auto *const text = qobject_cast<const QLabel *>(widget);
            const auto *const button = qobject_cast<const QAbstractButton *>(widget);
            const auto *const list = qobject_cast<const QTreeWidget *>(widget);
            texts << widget->accessibleName() << (text != nullptr ? text->text() : QString())
                  << (button != nullptr ? button->text() : QString());
            for (int line = -1; list != nullptr && line < list->topLevelItemCount(); ++line) {
                const QTreeWidgetItem &item = line < 0 ? *list->headerItem() : *list->topLevelItem(line);
                texts << item.text(0) << item.text(1);
            }
        }
    }
    texts.removeAll(QString());
    return texts;
}

class Gallery : public WindowStates, public testing::WithParamInterface<std::tuple<const char *, bool>> {};

} // namespace

TEST_P(Gallery, ShowsEveryStateWithNothingClippedAndNoLetterMissing) {
    const auto &[inLanguage, isDark] = GetParam();
    if (isDark) {
        useDarkPalette();
    }
    for (const State &state : states()) {
        SCOPED_TRACE(state.name);
        const QList<QDialog *> windows = windowsOf(state, inLanguage);
        for (QDialog *const window : windows) {
            expectNothingClipped(*window);
        }
        const QString theme = isDark ? "dark" : "light";
        keepPicture(*windows.first(), QString("%1.%2.%3").arg(QLatin1StringView(state.name), qtText(language), theme),
                    QUILLMARK_GALLERY "/pictures");
    }
}

INSTANTIATE_TEST_SUITE_P(Of, Gallery, testing::Combine(testing::ValuesIn(kLanguages), testing::Bool()),
                         [](const auto &param) {
                             return std::string(std::get<0>(param.param)) +
                                    (std::get<1>(param.param) ? "InDark" : "InLight");
                         });

TEST_F(WindowStates, SayNothingInEnglishToThoseWhoReadAnotherLanguage) {
    const QStringList names =
        QStringList({"Quillmark", "OK", "updateqm", "finderoverlaytool", "QuillmarkFS", "QuillmarkRuntime",
                     "QuillmarkContextMenu", "QuillmarkOverlay", "QuillmarkBackup"});
    for (const State &state : states()) {
        QStringList english;
        for (const QDialog *const window : windowsOf(state, "en")) {
            english << textsOf(*window);
        }
        for (const char *const other : kLanguages) {
            SCOPED_TRACE(std::string(state.name) + " in " + other);
            QStringList texts;
            for (const QDialog *const window : windowsOf(state, other)) {
                texts << textsOf(*window);
            }
            ASSERT_EQ(texts.size(), english.size());
            for (qsizetype index = 0; index < texts.size() && language != "en"; ++index) {
                EXPECT_TRUE(texts[index] != english[index] || names.contains(texts[index])) << qPrintable(texts[index]);
            }
        }
    }
}

} // namespace quillmark::test

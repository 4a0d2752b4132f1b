#pragma once

#include "QtPrinters.h"
#include "WindowsRunLoop.h"
#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/linux/windows/LinuxAlerts.h"
#include "platform/linux/windows/WindowModule.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <functional>
#include <gtest/gtest.h>

namespace quillmark::test {

/// Shows alerts of the built bundle's own module.
class AlertFixture : public testing::Test {
protected:
    AlertFixture() : m_bundle(nativeBundle(QUILLMARK_APP)) {
        alert.windowTitle = "Quillmark";
        alert.messageText = "Move to Applications folder?";
        alert.informativeText = "This will keep your Downloads folder uncluttered.";
        alert.buttons = {"Move", "Ask Later", "Do Not Move"};
    }

    /// Shows the alert, lets `act` look at it once it is active and press something, and returns the answer;
    /// kNothingPressed when the alert is still open behind `act`.
    int answerAfter(const std::function<void(QDialog &)> &act) {
        QTimer::singleShot(0, qApp, [&act] {
            auto *const dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr) << "no alert is shown";
            EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
            act(*dialog);
            if (dialog->isVisible()) {
                dialog->done(kNothingPressed);
            }
        });
        const AlertAnswer answer = m_alerts.runModal(alert);
        isSuppressionChecked = answer.isSuppressionChecked;
        return answer.button;
    }
    /// Shows the alert to `look`, which leaves it open.
    void lookAt(const std::function<void(QDialog &)> &look) { EXPECT_EQ(answerAfter(look), kNothingPressed); }

    static QPushButton &button(const QDialog &dialog, int index) {
        return *dialog.findChild<QPushButton *>(QString("button%1").arg(index));
    }
    static QLabel &label(const QDialog &dialog, const char *name) {
        return *dialog.findChild<QLabel *>(QLatin1StringView(name));
    }

    static QCheckBox &suppression(const QDialog &dialog) { return *dialog.findChild<QCheckBox *>("suppression"); }

    static constexpr int kNothingPressed = -7;
    AlertDescription alert;
    bool isSuppressionChecked = false; ///< in the last answer

private:
    std::unique_ptr<Bundle> m_bundle;
    WindowModule m_module{*m_bundle, windowsRunLoop()};
    LinuxAlerts m_alerts{m_module};
};

} // namespace quillmark::test

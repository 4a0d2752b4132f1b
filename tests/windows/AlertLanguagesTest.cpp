#include "platform/linux/LinuxBundle.h"
#include "texts/LocalizedStrings.h"
#include "windows/AlertFixture.h"
#include "windows/NothingClipped.h"

namespace quillmark::test {

namespace {

/// The alert of a second start, in each language of the texts.
class AlertLanguages : public AlertFixture, public testing::WithParamInterface<const char *> {
protected:
    AlertLanguages() {
        alert.messageText = text("QuillmarkLauncher_AlreadyRunning");
        alert.informativeText = text("QuillmarkLauncher_YouMustQuit");
        alert.buttons = {text("Quit")};
    }
    std::string text(const char *key) { return m_strings.localisedString(key); }

private:
    LinuxBundle m_bundle{QUILLMARK_APP, {GetParam()}, nativePlatform().propertyList};
    LocalizedStrings m_strings{m_bundle};
};

/// The offer to move, with its longest text.
class MoveAlertLanguages : public AlertLanguages {
protected:
    MoveAlertLanguages() {
        alert.messageText = text("Move to Applications folder?");
        alert.informativeText = text("I can move myself to the Applications folder if you'd like.") + ' ' +
                                text("Note that this will require an administrator password.");
        alert.buttons = {text("Move to Applications Folder"), text("Do Not Move")};
        alert.suppressionText = text("Do not show this message again");
    }
};

void expectNothingClippedInALargeFont(const std::function<void()> &look) {
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPointSizeF(before.pointSizeF() * 2.5);
    QApplication::setFont(large);
    look();
    QApplication::setFont(before);
}

} // namespace

TEST_P(AlertLanguages, ClipNoTextAndNoButton) { lookAt(expectNothingClipped); }

TEST_P(AlertLanguages, ClipNothingInALargeFont) {
    expectNothingClippedInALargeFont([this] { lookAt(expectNothingClipped); });
}

TEST_P(AlertLanguages, WrapLongTextsAtAComfortableMeasure) {
    lookAt([](QDialog &dialog) {
        const QLabel &text = label(dialog, "informativeText");
        const int lines = text.height() / text.fontMetrics().height();
        EXPECT_GE(lines, 2);
        EXPECT_LE(lines, 6);
    });
}

TEST_P(MoveAlertLanguages, ClipNoTextAndNoButton) { lookAt(expectNothingClipped); }

TEST_P(MoveAlertLanguages, ClipNothingInALargeFont) {
    expectNothingClippedInALargeFont([this] { lookAt(expectNothingClipped); });
}

constexpr auto kLanguageName = [](const auto &language) { return std::string(language.param); };
INSTANTIATE_TEST_SUITE_P(EachOne, AlertLanguages, testing::Values("en", "de", "fr", "es", "ja"), kLanguageName);
INSTANTIATE_TEST_SUITE_P(EachOne, MoveAlertLanguages, testing::Values("en", "de", "fr", "es", "ja"), kLanguageName);

TEST_F(AlertFixture, AWordThatIsLongerThanTheMeasureIsNotClipped) {
    alert.informativeText = "/Applications/" + std::string(90, 'x') + ".app is damaged.";
    lookAt(expectNothingClipped);
}

} // namespace quillmark::test

#include "branding/LocalizedStrings.h"
#include "platform/linux/LinuxBundle.h"
#include "windows/AlertFixture.h"
#include "windows/NothingClipped.h"

namespace quillmark::test {

namespace {

/// The alert of a second start, in each language of the texts.
class AlertLanguages : public AlertFixture, public testing::WithParamInterface<const char *> {
protected:
    AlertLanguages() {
        const LinuxBundle bundle(QStringLiteral(QUILLMARK_APP), {QLatin1StringView(GetParam())},
                                 nativePlatform().propertyList);
        LocalizedStrings strings(bundle);
        alert.messageText = strings.localisedString(QStringLiteral("QuillmarkLauncher_AlreadyRunning"));
        alert.informativeText = strings.localisedString(QStringLiteral("QuillmarkLauncher_YouMustQuit"));
        alert.buttons = {strings.localisedString(QStringLiteral("Quit"))};
    }
};

} // namespace

TEST_P(AlertLanguages, ClipNoTextAndNoButton) { lookAt(expectNothingClipped); }

TEST_P(AlertLanguages, ClipNothingInALargeFont) {
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPointSizeF(before.pointSizeF() * 2.5);
    QApplication::setFont(large);
    lookAt(expectNothingClipped);
    QApplication::setFont(before);
}

TEST_P(AlertLanguages, WrapLongTextsAtAComfortableMeasure) {
    lookAt([](QDialog &dialog) {
        const QLabel &text = label(dialog, "informativeText");
        const int lines = text.height() / text.fontMetrics().height();
        EXPECT_GE(lines, 2);
        EXPECT_LE(lines, 6);
    });
}

INSTANTIATE_TEST_SUITE_P(EachOne, AlertLanguages, testing::Values("en", "de", "fr", "es", "ja"),
                         [](const auto &language) { return std::string(language.param); });

TEST_F(AlertFixture, AWordThatIsLongerThanTheMeasureIsNotClipped) {
    alert.informativeText = QStringLiteral("/Applications/") + QString(90, u'x') + QStringLiteral(".app is damaged.");
    lookAt(expectNothingClipped);
}

} // namespace quillmark::test

#include "platform/Alerts.h"
#include "windows/CheckWindowFixture.h"
#include "windows/NothingClipped.h"

namespace quillmark::test {

namespace {

/// Each leaves its picture in the build folder.
class CheckWindowLanguages : public CheckWindowFixture, public testing::WithParamInterface<const char *> {
protected:
    CheckWindowLanguages() { language = GetParam(); }
    QString pictureName(const char *state) const {
        return QString("check-%1-%2").arg(QLatin1StringView(state), qtText(language));
    }
};

} // namespace

TEST_P(CheckWindowLanguages, ClipNothingInTheWindow) {
    QDialog &window = show();
    expectNothingClipped(window);
    keepPicture(window, pictureName("window"));
}

TEST_P(CheckWindowLanguages, ClipNothingInTheSheet) {
    QDialog &progress = showSheet();
    expectNothingClipped(progress);
    keepPicture(progress, pictureName("sheet"));
}

TEST_P(CheckWindowLanguages, ClipNothingInALargeFont) {
    useLargerFont(1.5);
    QDialog &window = show();
    expectNothingClipped(window);
    keepPicture(window, pictureName("large"));
    view->beginProgressSheet();
    expectNothingClipped(sheet());
}

TEST_P(CheckWindowLanguages, FitIntoASmallScreenWithALongListInALargeFont) {
    for (int index = 0; index < 30; ++index) {
        faults.push_back({"component" + std::to_string(index), "Missing"});
    }
    useLargerFont(1.5);
    EXPECT_LE(show().frameGeometry().height(), 768);
    expectNothingClipped(*findWindow());
}

INSTANTIATE_TEST_SUITE_P(EachOne, CheckWindowLanguages, testing::Values("en", "de", "fr", "es", "ja"),
                         [](const auto &name) { return std::string(name.param); });

} // namespace quillmark::test

#include <QApplication>
#include <QTemporaryFile>
#include <gtest/gtest.h>

namespace {

/// A screen of 1024 by 768 points without a display, in the format of Qt's platform plug-in.
QByteArray smallScreen(int scale) {
    return QString(R"({"screens": [{"name": "small", "x": 0, "y": 0, "width": %1, "height": %2,
                              "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})")
        .arg(1024 * scale)
        .arg(768 * scale)
        .toUtf8();
}

} // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    QTemporaryFile screen;
    if (!screen.open() || screen.write(smallScreen(std::max(1, qEnvironmentVariableIntValue("QT_SCALE_FACTOR")))) < 0) {
        return EXIT_FAILURE;
    }
    screen.close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + screen.fileName().toUtf8());
    // The module finds an application and uses it.
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

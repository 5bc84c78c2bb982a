#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// The app tier runs on Qt's offscreen platform, with HOME and the XDG folders in a temporary
// directory so that no test touches the user's files.
int main(int argc, char** argv) {
    QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toUtf8());
    qputenv("XDG_STATE_HOME", (home.path() + "/state").toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

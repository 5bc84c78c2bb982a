// The cleaning overlay on a real X server at one scale, as run-overlay-scale.sh sets it up: two
// monitors of 1200 by 720 side by side, each filled with a pattern of four coloured quarters.
// Locked, the screen as the server holds it shows near each corner of each monitor that
// corner's own colour, darkened: the blurred picture fills every monitor edge to edge.
#include "Tolvane/lock/CleaningOverlay.h"
#include "Tolvane/lock/KeyboardLock.h"
#include "support/AppHarness.h"
#include "support/Views.h"

#include <QApplication>
#include <QPainter>
#include <QProcess>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tolvane::testing {
namespace {

constexpr int monitorWidth = 1200;
constexpr int monitorHeight = 720;
// The corners' colours, monitor by monitor: top left, top right, bottom left, bottom right.
const QColor quarters[2][4] = {{{220, 40, 40}, {40, 200, 40}, {40, 60, 220}, {220, 200, 40}},
                               {{200, 40, 200}, {40, 200, 200}, {240, 240, 240}, {240, 130, 20}}};

class Pattern final : public QWidget {
public:
    explicit Pattern(int monitor) : monitor(monitor) {
        setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const int w = width() / 2, h = height() / 2;
        painter.fillRect(0, 0, w, h, quarters[monitor][0]);
        painter.fillRect(w, 0, width() - w, h, quarters[monitor][1]);
        painter.fillRect(0, h, w, height() - h, quarters[monitor][2]);
        painter.fillRect(w, h, width() - w, height() - h, quarters[monitor][3]);
    }

private:
    int monitor;
};

// The whole X screen, read by another client.
QImage serverPicture() {
    QProcess import;
    import.start(QStringLiteral("import"), {"-window", "root", "png:-"});
    import.waitForFinished(20000);
    return QImage::fromData(import.readAllStandardOutput(), "PNG");
}

TEST(OverlayScale, TheBlurredPictureFillsEachMonitor) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    ASSERT_EQ(screens.size(), 2) << "run by run-overlay-scale.sh, on two monitors";
    std::vector<std::unique_ptr<Pattern>> patterns;
    for (int i = 0; i < 2; ++i) {
        patterns.push_back(std::make_unique<Pattern>(i));
        patterns.back()->setScreen(screens[i]);
        patterns.back()->setGeometry(screens[i]->geometry());
        patterns.back()->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(patterns.back().get()));
    }
    QTest::qWait(500); // the X server's picture of the windows

    FakePlatform fakes;
    KeyboardLock lock(fakes.keyboard);
    ASSERT_TRUE(lock.lock());
    for (CleaningOverlay* overlay : overlayWindows(true)) {
        ASSERT_TRUE(QTest::qWaitForWindowExposed(overlay));
    }
    QTest::qWait(1000); // the backdrop's blur, then the server's picture
    const QImage shot = serverPicture();
    ASSERT_EQ(shot.size(), QSize(2 * monitorWidth, monitorHeight));
    const int inX = monitorWidth / 12, inY = monitorHeight / 12;
    for (int monitor = 0; monitor < 2; ++monitor) {
        for (int corner = 0; corner < 4; ++corner) {
            const QPoint at(monitor * monitorWidth + (corner % 2 ? monitorWidth - 1 - inX : inX),
                            corner / 2 ? monitorHeight - 1 - inY : inY);
            const QColor want = quarters[monitor][corner];
            const QColor darkened(int(want.red() * 0.65), int(want.green() * 0.65),
                                  int(want.blue() * 0.65));
            EXPECT_TRUE(closeTo(shot.pixelColor(at), darkened, 12))
                << "monitor " << monitor << " at " << at.x() << "," << at.y() << ": "
                << shot.pixelColor(at).name().toStdString() << " for "
                << darkened.name().toStdString();
        }
    }
}

} // namespace
} // namespace tolvane::testing

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

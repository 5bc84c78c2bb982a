// A plain see-through window, half black, over an opaque green one: what a compositor does with
// a window like the cleaning overlay, with nothing of Tolvane in it.
//   tolvane_translucent_cover window|fullscreen
#include <QApplication>
#include <QPainter>
#include <QTimer>
#include <QWidget>

namespace {

class Plain final : public QWidget {
public:
    explicit Plain(QColor colour) : colour(colour) {}

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(rect(), colour);
    }

private:
    QColor colour;
};

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const bool fullScreen = app.arguments().value(1) == QStringLiteral("fullscreen");
    Plain green(Qt::green);
    green.setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    green.showFullScreen();
    Plain cover(QColor(0, 0, 0, 128));
    cover.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    cover.setAttribute(Qt::WA_TranslucentBackground);
    cover.resize(640, 400);
    QTimer::singleShot(1000, &cover, [&] { fullScreen ? cover.showFullScreen() : cover.show(); });
    return app.exec();
}

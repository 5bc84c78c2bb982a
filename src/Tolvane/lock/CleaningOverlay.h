#pragma once

#include <QImage>
#include <QPixmap>
#include <QRect>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <functional>

namespace tolvane {

class UnlockButton;

// What fills one screen while the keyboard is locked: the screen's own picture, blurred and
// darkened, under a keyboard badge, a heading, an instruction, a running clock and the
// "Unlock keyboard" button. The button is the only thing that reacts, and only to the pointer;
// keys and shortcuts are taken and dropped here. It knows nothing of the lock: the button
// calls `onUnlock`.
class CleaningOverlay : public QWidget {
    Q_OBJECT

public:
    // `backdrop` is the blurred screen picture, stretched over the whole overlay; when it is
    // null the overlay is only a darkening layer over whatever the compositor shows.
    CleaningOverlay(std::function<void()> onUnlock, QImage backdrop, QWidget* parent = nullptr);

    // "mm:ss" since this overlay was made; each overlay has its own start.
    QString clockText() const;
    // Where the clock is drawn, in the overlay's coordinates.
    QRect clockArea() const { return clockRect; }
    // The texts it paints, in reading order (heading, instruction, clock), each with its area.
    struct ShownText {
        QString text;
        QRect area;
    };
    QList<ShownText> shownTexts() const;
    UnlockButton* unlockButton() const { return button; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void layOutContent();
    void paintBackdrop(QPainter& painter);
    void paintBadge(QPainter& painter);
    void paintTexts(QPainter& painter);

    std::function<void()> onUnlock;
    QImage backdrop;
    QPixmap stretchedBackdrop;
    const std::chrono::steady_clock::time_point startedAt;
    QTimer clockTimer;
    UnlockButton* button;

    QRect badgeRect;
    QRect headingRect;
    QRect instructionRect;
    QRect clockRect;
};

} // namespace tolvane

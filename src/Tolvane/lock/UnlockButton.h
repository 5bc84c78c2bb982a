#pragma once

#include <QAbstractButton>
#include <QImage>
#include <QVariantAnimation>

namespace tolvane {

// The "Unlock keyboard" capsule of the cleaning overlay. Only the pointer presses it: it never
// takes focus and ignores every key, so nothing typed on a keyboard being wiped can end the
// lock. The widget is larger than the capsule by a margin that holds its glow; only the
// capsule itself reacts to the pointer.
class UnlockButton : public QAbstractButton {
    Q_OBJECT

public:
    explicit UnlockButton(QWidget* parent = nullptr);

    // The capsule at rest, in the button's coordinates.
    QRectF capsuleRect() const;
    // The capsule's size at rest, which the overlay lays out (the glow margin is not counted).
    QSize capsuleSize() const;

    bool hovering() const { return isHovering; }

    // The hover look, eased in and out over 0.15 s: glow opacity, glow radius, scale.
    struct Look {
        qreal shadowOpacity;
        qreal shadowRadius;
        qreal scale;
    };
    static Look lookAt(qreal hoverProgress);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& pos) const override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    void setHovering(bool hovering);
    QImage glowImage(const QRectF& capsule, const Look& look) const;

    // The blurred glow of the last paint and the hover progress it was made for.
    QImage glow;
    qreal glowProgress = -1;
    bool isHovering = false;
    qreal hoverProgress = 0;
    QVariantAnimation hoverAnimation;
};

} // namespace tolvane

#pragma once

#include "Tolvane/gauges/SystemStats.h"
#include "Tolvane/look/Theme.h"
#include "TolvaneCore/GaugeValues.h"

#include <QPixmap>
#include <QPointer>
#include <QTimeLine>
#include <QWidget>

#include <functional>

class QAction;
class QWidgetAction;

namespace tolvane {

// A rich row of the menu: it paints itself inside a centred frame 300 wide and takes its
// height from its content. It keeps every click to itself, so the menu never treats a click
// on a row as the choice of an item.
class MenuRow : public QWidget {
public:
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    // What stands for the row in a menu that cannot show widgets: a new item, or none.
    virtual QAction* plainItem(QObject* parent) const;

protected:
    explicit MenuRow(QWidget* parent = nullptr);

    virtual int contentHeight() const = 0;

    // The 300 wide frame the row lays itself out in, centred when the menu is wider.
    QRectF frame() const;

    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
};

// A disabled item that shows `text`.
QAction* textItem(const QString& text, QObject* parent);

// Wraps a row in a menu item that shows it in place of a title; the item takes ownership.
QWidgetAction* hostedMenuItem(MenuRow* view, QObject* parent);

// Badge, name, the scroll direction in force, and a pill that says whether a mouse is there.
class HeaderView final : public MenuRow {
public:
    HeaderView(bool reversed, bool mouseConnected, QWidget* parent = nullptr);

    // One disabled item: the subtitle, " · ", the chip's text.
    QAction* plainItem(QObject* parent) const override;

protected:
    int contentHeight() const override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool reversed;
    bool mouseConnected;
};

// One circular gauge: a ring over a track around the percentage, the titled icon and a detail
// line below. The ring's end eases to each new value over 0.6 s.
class RingGauge final : public QWidget {
public:
    RingGauge(QString title, QString icon, ThemeGradient gradient, QWidget* parent = nullptr);

    void setReading(const SystemStats::Reading& reading);
    const GaugeValues& values() const { return shown; }
    qreal ringEnd() const { return end; }
    bool isAnimating() const;
    // The ease's clock; a test moves it with setCurrentTime() instead of waiting.
    QTimeLine& easeClock() { return animation; }

    static constexpr qreal size = 58;
    static constexpr qreal line = 6;
    static constexpr int animationMs = 600;
    // Frames of the ease; twenty-five a second look smooth on a ring this small.
    static constexpr int frameMs = 40;
    static int contentHeight(const QWidget& widget);

    // Where the ring's square frame stands in the gauge.
    QRectF ringFrame() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QRect movedPiece(qreal from, qreal to) const;
    void paintRing(QPainter& painter, const QRectF& frame) const;
    void paintPercent(QPainter& painter, const QRectF& frame) const;
    void paintLabels(QPainter& painter, qreal top) const;

    QString title;
    QString icon;
    ThemeGradient gradient;
    SystemStats::Reading reading;
    GaugeValues shown;
    qreal end;
    qreal easeFrom = 0;
    qreal easeTo = 0;
    QTimeLine animation;
};

// The live card of CPU, memory and storage gauges. It alone repaints while the menu is open:
// it follows the sampler's notices.
class StatsView final : public MenuRow {
public:
    explicit StatsView(SystemStats& stats, QWidget* parent = nullptr);

    RingGauge* gauge(int index) const { return gauges[index]; }

protected:
    int contentHeight() const override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void refresh();
    void paintCard(QPaintDevice& device) const;

    QPointer<SystemStats> stats;
    RingGauge* gauges[3];
    bool refreshQueued = false;
    QPixmap card; // the card as drawn, at the view's size
};

// The menu's one button: starts the keyboard cleaning, and stays visibly off without input
// access.
class CleanKeyboardRow final : public MenuRow {
public:
    CleanKeyboardRow(bool enabled, std::function<void()> action, QWidget* parent = nullptr);

    QAction* plainItem(QObject* parent) const override;

    bool isHovering() const { return hovering; }

    // The card that takes clicks and hover; the margin around it takes neither.
    QRectF buttonRect() const;

protected:
    int contentHeight() const override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void setHovering(bool value);

    bool enabled;
    std::function<void()> action;
    bool hovering = false;
    bool pressed = false;
};

// A small upper-case heading over a group of items.
class SectionCaption final : public MenuRow {
public:
    explicit SectionCaption(QString text, QWidget* parent = nullptr);

    QAction* plainItem(QObject* parent) const override;

protected:
    int contentHeight() const override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString text;
};

} // namespace tolvane

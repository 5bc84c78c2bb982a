#pragma once

#include "Tolvane/gauges/SystemStats.h"
#include "Tolvane/menu/MenuRow.h"

#include <QPixmap>
#include <QPointer>

namespace tolvane {

class RingGauge;

// The live card of CPU, memory and storage gauges. It alone repaints while the menu is open:
// it follows the sampler's notices.
class StatsView final : public MenuRow {
public:
    explicit StatsView(SystemStats& stats, QWidget* parent = nullptr);

    RingGauge* gauge(int index) const { return gauges[index]; }
    QAccessible::Role accessibleRole() const override { return QAccessible::Grouping; }

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

} // namespace tolvane

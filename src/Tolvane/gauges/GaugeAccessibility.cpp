#include "Tolvane/gauges/GaugeAccessibility.h"

#include "Tolvane/gauges/RingGauge.h"

#include <QAccessibleWidget>

namespace tolvane {

namespace {

class GaugeAccessible final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit GaugeAccessible(RingGauge* gauge)
        : QAccessibleWidget(gauge, QAccessible::ProgressBar) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text t) const override {
        return t == QAccessible::Value ? QStringLiteral("%1 percent").arg(percent())
                                       : QAccessibleWidget::text(t);
    }

    QVariant currentValue() const override { return percent(); }
    void setCurrentValue(const QVariant&) override {}
    QVariant maximumValue() const override { return 100; }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }

private:
    int percent() const { return static_cast<RingGauge*>(widget())->values().percent; }
};

QAccessibleInterface* gaugeAccessible(const QString&, QObject* object) {
    auto* gauge = dynamic_cast<RingGauge*>(object);
    return gauge ? new GaugeAccessible(gauge) : nullptr;
}

} // namespace

void installGaugeAccessibility() {
    // Qt adds a factory that is already installed only once.
    QAccessible::installFactory(gaugeAccessible);
}

} // namespace tolvane

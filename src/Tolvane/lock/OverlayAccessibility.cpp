#include "Tolvane/lock/OverlayAccessibility.h"

#include "Tolvane/lock/CleaningOverlay.h"

#include <QAccessibleWidget>
#include <QPointer>

#include <array>

namespace tolvane {

namespace {

constexpr int textCount = 3;

// One text that the overlay paints; it has no object of its own.
class PaintedTextAccessible final : public QAccessibleInterface {
public:
    PaintedTextAccessible(CleaningOverlay* overlay, int index) : overlay(overlay), index(index) {}

    bool isValid() const override { return overlay; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return overlay->windowHandle(); }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(overlay);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QString text(QAccessible::Text t) const override {
        return t == QAccessible::Name ? shown().text : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override {
        const QRect area = shown().area;
        return QRect(overlay->mapToGlobal(area.topLeft()), area.size());
    }
    QAccessible::Role role() const override { return QAccessible::StaticText; }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.readOnly = true;
        return state;
    }

private:
    CleaningOverlay::ShownText shown() const { return overlay->shownTexts().value(index); }

    QPointer<CleaningOverlay> overlay;
    int index;
};

// The overlay's widget children (the button) come after its painted texts.
class OverlayAccessible final : public QAccessibleWidget {
public:
    explicit OverlayAccessible(CleaningOverlay* overlay)
        : QAccessibleWidget(overlay, QAccessible::Window) {
        for (int i = 0; i < textCount; ++i) {
            texts[size_t(i)] =
                QAccessible::registerAccessibleInterface(new PaintedTextAccessible(overlay, i));
        }
    }
    ~OverlayAccessible() override {
        for (const QAccessible::Id id : texts) {
            QAccessible::deleteAccessibleInterface(id);
        }
    }

    int childCount() const override { return textCount + QAccessibleWidget::childCount(); }
    QAccessibleInterface* child(int index) const override {
        return index < textCount ? QAccessible::accessibleInterface(texts[size_t(index)])
                                 : QAccessibleWidget::child(index - textCount);
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        for (int i = 0; i < textCount; ++i) {
            if (QAccessible::accessibleInterface(texts[size_t(i)]) == child) {
                return i;
            }
        }
        const int widgetIndex = QAccessibleWidget::indexOfChild(child);
        return widgetIndex < 0 ? -1 : textCount + widgetIndex;
    }

private:
    std::array<QAccessible::Id, textCount> texts{};
};

QAccessibleInterface* overlayAccessible(const QString&, QObject* object) {
    auto* overlay = qobject_cast<CleaningOverlay*>(object);
    return overlay ? new OverlayAccessible(overlay) : nullptr;
}

} // namespace

void installOverlayAccessibility() {
    // Qt adds a factory that is already installed only once.
    QAccessible::installFactory(overlayAccessible);
}

} // namespace tolvane

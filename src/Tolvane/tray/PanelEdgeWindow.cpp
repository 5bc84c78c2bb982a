// Under Wayland a program cannot place its windows. A compositor with the layer shell (KWin,
// and those built on wlroots) lays a surface against a screen edge and keeps it clear of the
// panels there, so the rich menu can still open beside the panel whose icon was clicked. GNOME
// has no layer shell, and Debian 12 has LayerShellQt only for Qt 5: there this does nothing and
// the compositor places the window where it likes.
#include "Tolvane/tray/PanelEdgeWindow.h"

#ifdef TOLVANE_LAYER_SHELL

#include "TolvaneCore/MenuPlacement.h"

#include <LayerShellQt/Window>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <cstring>
#include <utility>
#include <wayland-client.h>

namespace tolvane {

namespace {

// Asked of the compositor once, on a queue of its own so that Qt's events wait meanwhile.
bool compositorHasLayerShell() {
    static const bool found = [] {
        auto* wayland = qGuiApp->nativeInterface<QNativeInterface::QWaylandApplication>();
        wl_display* display = wayland ? wayland->display() : nullptr;
        if (!display) {
            return false;
        }
        bool has = false;
        wl_event_queue* queue = wl_display_create_queue(display);
        auto* proxy = static_cast<wl_display*>(wl_proxy_create_wrapper(display));
        wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(proxy), queue);
        wl_registry* registry = wl_display_get_registry(proxy);
        static const wl_registry_listener listener = {
            [](void* data, wl_registry*, uint32_t, const char* interface, uint32_t) {
                if (std::strcmp(interface, "zwlr_layer_shell_v1") == 0) {
                    *static_cast<bool*>(data) = true;
                }
            },
            [](void*, wl_registry*, uint32_t) {}};
        wl_registry_add_listener(registry, &listener, &has);
        const bool answered = wl_display_roundtrip_queue(display, queue) >= 0;
        wl_registry_destroy(registry);
        wl_proxy_wrapper_destroy(proxy);
        wl_event_queue_destroy(queue);
        return answered && has;
    }();
    return found;
}

} // namespace

bool layBesidePanel(QWidget* window, QPoint click) {
    QScreen* screen = QGuiApplication::screenAt(click);
    if (!screen || !compositorHasLayerShell()) {
        return false;
    }
    const int clearance = menuClearance;
    const QRect area = screen->geometry().adjusted(clearance, clearance, -clearance, -clearance);
    const QSize size = window->sizeHint();
    const EdgePlacement at = edgePlacement({click.x(), click.y()}, size.width(), size.height(),
                                           {area.x(), area.y(), area.width(), area.height()});
    window->createWinId();
    QWindow* handle = window->windowHandle();
    handle->setScreen(screen);
    using Layer = LayerShellQt::Window;
    Layer* layer = Layer::get(handle);
    // Against the panel's edge, and along it from the screen's left or top.
    const int along = clearance + at.along;
    const auto [anchors, margins] = [&]() -> std::pair<Layer::Anchors, QMargins> {
        switch (at.edge) {
        case ScreenEdge::top:
            return {Layer::Anchors(Layer::AnchorTop) | Layer::AnchorLeft, {along, clearance, 0, 0}};
        case ScreenEdge::bottom:
            return {Layer::Anchors(Layer::AnchorBottom) | Layer::AnchorLeft,
                    {along, 0, 0, clearance}};
        case ScreenEdge::left:
            return {Layer::Anchors(Layer::AnchorLeft) | Layer::AnchorTop, {clearance, along, 0, 0}};
        case ScreenEdge::right:
            return {Layer::Anchors(Layer::AnchorRight) | Layer::AnchorTop,
                    {0, along, clearance, 0}};
        }
        return {};
    }();
    layer->setAnchors(anchors);
    layer->setMargins(margins);
    layer->setExclusiveZone(0);
    layer->setLayer(Layer::LayerTop);
    layer->setKeyboardInteractivity(Layer::KeyboardInteractivityOnDemand);
    layer->setScope(QStringLiteral("tolvane-menu"));
    return true;
}

} // namespace tolvane

#else

namespace tolvane {

bool layBesidePanel(QWidget*, QPoint) {
    return false;
}

} // namespace tolvane

#endif

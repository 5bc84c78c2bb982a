#include "TolvaneCore/ExternalMouse.h"
#include "TolvaneCore/WheelEvents.h"
#include "kernel/GuestFixture.h"

#include <gtest/gtest.h>

namespace tolvane::kerneltest {
namespace {

using Events = std::vector<InputEvent>;

// The application's filter in small: negate the wheel axes while inverting.
bool inverting = true;
void invert(void*, InputEvent* events, std::size_t count) {
    if (inverting) {
        negateWheelAxes(events, count);
    }
}

constexpr InputEvent rel(std::uint16_t code, int value) {
    return {EV_REL, code, value};
}
constexpr InputEvent key(std::uint16_t code) {
    return {EV_KEY, code, 1};
}

// One kind of device: what the pointer monitor calls it, one frame it sends, and what another
// reader (the desktop) sees of that frame through the clone if the device has one, else on the
// device itself: with the scroll tap inverting, and with the keyboard held as well. Once the
// hold ends and the inversion stops, the desktop sees the frame as it was sent.
struct Row {
    DeviceRecipe recipe;
    const char* pointer; // "", "external" or "built-in"
    Events frame, inverted, held;
};

const std::vector<Row>& rows() {
    const Events mouse{rel(REL_X, 5),
                       rel(REL_WHEEL, 1),
                       rel(REL_WHEEL_HI_RES, 120),
                       rel(REL_HWHEEL, -2),
                       rel(REL_HWHEEL_HI_RES, -240),
                       key(BTN_LEFT)};
    const Events inverted{
        rel(REL_X, 5),      rel(REL_WHEEL, -1),          rel(REL_WHEEL_HI_RES, -120),
        rel(REL_HWHEEL, 2), rel(REL_HWHEEL_HI_RES, 240), key(BTN_LEFT)};
    const Events trackpoint{rel(REL_X, 4), key(BTN_RIGHT)};
    const Events typing{key(KEY_LEFTSHIFT), key(KEY_A), key(KEY_POWER)};
    const Events touchAndKey{{EV_ABS, ABS_X, 100}, key(BTN_TOUCH), key(KEY_K)};
    const Events lid{{EV_SW, SW_LID, 1}};
    DeviceRecipe touchpadKeyboard = usbKeyboard("Tolvane Test Keyboard with Touchpad");
    touchpadKeyboard.keys.insert(touchpadKeyboard.keys.end(),
                                 {BTN_LEFT, BTN_TOOL_FINGER, BTN_TOUCH});
    touchpadKeyboard.abs = {ABS_X, ABS_Y};
    touchpadKeyboard.props = {INPUT_PROP_POINTER};
    // clang-format off
    static const std::vector<Row> table{
        // device                                    pointer     frame  inverted  held
        {usbMouse(),                                 "external", mouse, inverted, inverted},
        {{"Tolvane Test TrackPoint", BUS_I8042, {REL_X, REL_Y}, {BTN_LEFT, BTN_RIGHT}},
                                                     "built-in", trackpoint, trackpoint, trackpoint},
        {usbKeyboard(),                              "",         typing, typing,  {key(KEY_POWER)}},
        {consumerControl(),                          "",         {key(KEY_VOLUMEUP), rel(REL_HWHEEL, 2)},
                                                                 {key(KEY_VOLUMEUP), rel(REL_HWHEEL, -2)},
                                                                          {rel(REL_HWHEEL, -2)}},
        {{"Tolvane Test Power Button", BUS_HOST, {}, {KEY_POWER}},
                                                     "",  {key(KEY_POWER)}, {key(KEY_POWER)}, {key(KEY_POWER)}},
        {{"Tolvane Test Lid Switch", BUS_HOST, {}, {}, {}, {SW_LID}}, "", lid, lid, lid},
        {touchpadKeyboard, "", touchAndKey, touchAndKey, {{EV_ABS, ABS_X, 100}, key(BTN_TOUCH)}},
    };
    // clang-format on
    return table;
}

class DeviceRoles : public GuestFixture {
protected:
    // Sends the row's frame and checks what the desktop sees, then puts keys, switches and
    // axes back to zero so that the next frame is not dropped as a repeat by the input core.
    void expectDesktopSees(const Row& row, VirtualDevice& device, const Events& expected,
                           const char* phase) {
        SCOPED_TRACE(row.recipe.name + ", " + phase);
        const auto clones = nodesNamed(row.recipe.name, {device.path()});
        ASSERT_LE(clones.size(), 1u) << "a clone of a clone";
        NodeReader desktop(clones.empty() ? device.path() : clones[0]), original(device.path());
        EXPECT_FALSE(!clones.empty() && desktop.hasType(EV_REP)) << "the clone repeats keys itself";
        device.frame(row.frame);
        loop.settle();
        EXPECT_EQ(withoutSync(desktop.readAll()), expected);
        EXPECT_TRUE(clones.empty() || original.readAll().empty()) << "the cloned device leaked";
        Events back;
        for (InputEvent e : row.frame) {
            if (e.type != EV_REL) {
                back.push_back({e.type, e.code, 0});
            }
        }
        device.frame(back);
        loop.settle();
    }
};

TEST_F(DeviceRoles, EachKindOfDeviceIsReportedInvertedAndHeldByWhatItCanSend) {
    std::vector<std::unique_ptr<VirtualDevice>> devices;
    for (const Row& row : rows()) {
        devices.push_back(VirtualDevice::plug(row.recipe));
        ASSERT_TRUE(devices.back());
    }
    start();
    const auto current = layer->current();
    for (std::size_t i = 0; i < rows().size(); ++i) {
        std::string seen;
        for (const auto& pointer : current) {
            if (pointer.id == devices[i]->path()) {
                seen = pointer.properties.builtIn == 1       ? "built-in"
                       : isExternalMouse(pointer.properties) ? "external"
                                                             : "other pointer";
                EXPECT_EQ(pointer.properties.product, rows()[i].recipe.name);
            }
        }
        EXPECT_EQ(seen, rows()[i].pointer) << rows()[i].recipe.name;
    }

    inverting = true;
    ASSERT_TRUE(layer->create(&invert, nullptr));
    for (std::size_t i = 0; i < rows().size(); ++i) {
        expectDesktopSees(rows()[i], *devices[i], rows()[i].inverted, "inverting");
    }
    ASSERT_TRUE(layer->grab());
    for (std::size_t i = 0; i < rows().size(); ++i) {
        expectDesktopSees(rows()[i], *devices[i], rows()[i].held, "held");
    }
    layer->release();
    inverting = false;
    ASSERT_TRUE(loop.turnUntil([&] { return nodesNamed(rows()[2].recipe.name).size() == 1; }))
        << "the clone made for the hold outlived it";
    for (std::size_t i = 0; i < rows().size(); ++i) {
        expectDesktopSees(rows()[i], *devices[i], rows()[i].frame, "released, not inverting");
    }
}

// Every way the tap or the hold can be refused, and that a refusal leaves nothing taken.
TEST_F(DeviceRoles, ARefusedTapOrHoldLeavesNothingTaken) {
    struct Case {
        const char* what;
        bool uinput, bogusNode, otherHoldsKeyboard, otherHoldsMouse, tapMade, holdTaken;
    };
    const Case cases[] = {
        {"every device usable", true, false, false, false, true, true},
        {"no uinput: no clone for the power key", false, false, false, false, false, false},
        {"a node that is no event device", true, true, false, false, false, false},
        {"another program holds the keyboard", true, false, true, false, true, false},
        {"another program holds the mouse", true, false, false, true, true, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        auto mouse = VirtualDevice::plug(usbMouse());
        auto keyboard = VirtualDevice::plug(usbKeyboard());
        FakeDeviceRoot root;
        root.linkNode(mouse->node(), mouse->path());
        root.linkNode(keyboard->node(), keyboard->path());
        if (c.uinput) {
            root.linkUinput();
        }
        if (c.bogusNode) {
            root.linkNode("event999", "");
        }
        NodeReader otherMouse(mouse->path()), otherKeyboard(keyboard->path());
        ASSERT_TRUE((!c.otherHoldsMouse || otherMouse.grab()) &&
                    (!c.otherHoldsKeyboard || otherKeyboard.grab()));
        start(root.path());
        NodeReader mouseFree(mouse->path()), keyboardFree(keyboard->path());
        EXPECT_EQ(layer->create(&invert, nullptr), c.tapMade);
        EXPECT_TRUE(c.otherHoldsMouse || mouseFree.tryGrab() != c.tapMade) << "the mouse";
        EXPECT_EQ(layer->grab(), c.holdTaken);
        EXPECT_TRUE(c.otherHoldsKeyboard || keyboardFree.tryGrab() != c.holdTaken) << "keyboard";
        layer.reset();
    }
}

} // namespace
} // namespace tolvane::kerneltest

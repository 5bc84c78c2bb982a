#pragma once

#include "TolvaneCore/InputEvent.h"

#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct libevdev_uinput;

namespace tolvane::kerneltest {

// What a virtual device made through uinput can send; absolute axes range over 0..4095, but
// ABS_MT_SLOT over two slots.
struct DeviceRecipe {
    std::string name{};
    std::uint16_t bus = BUS_USB;
    std::vector<std::uint16_t> rel{}, keys{}, abs{}, switches{}, props{}, leds{};
    bool repeat = false; // kernel auto-repeat, as real keyboards have
};

DeviceRecipe usbMouse(const std::string& name = "Tolvane Test USB Mouse");
DeviceRecipe usbKeyboard(const std::string& name = "Tolvane Test Keyboard"); // power key too
DeviceRecipe consumerControl(); // media keys and a horizontal wheel, as many keyboards have

// A device plugged in for as long as the object lives.
class VirtualDevice {
public:
    static std::unique_ptr<VirtualDevice> plug(const DeviceRecipe& recipe);
    ~VirtualDevice();

    const std::string& path() const { return nodePath; } // /dev/input/eventN
    std::string node() const { return nodePath.substr(nodePath.rfind('/') + 1); }
    int descriptor() const; // uinput's, for writing events without frame()'s copy

    // Writes the events and then a SYN_REPORT.
    void frame(const std::vector<InputEvent>& events);
    void key(std::uint16_t code, int value) { frame({{EV_KEY, code, value}}); }
    void tap(std::uint16_t code) { frame({{EV_KEY, code, 1}}), frame({{EV_KEY, code, 0}}); }

private:
    VirtualDevice(libevdev_uinput* device, std::string path)
        : device(device), nodePath(std::move(path)) {}
    libevdev_uinput* device;
    std::string nodePath;
};

// A plain reader of an event node, as the desktop would be: it never grabs unless told to.
class NodeReader {
public:
    explicit NodeReader(const std::string& path);
    ~NodeReader() { ::close(fd); }

    bool isOpen() const { return fd >= 0; }
    int descriptor() const { return fd; }
    // Everything pending now (after waiting up to `ms` for something), SYN_REPORTs included.
    std::vector<InputEvent> readAll(int ms = 0);
    // EVIOCGKEY: note that it also drops the key events still queued for this reader.
    bool keyDown(std::uint16_t code) const { return bit(EVIOCGKEY(bitBytes), code); }
    bool hasType(std::uint16_t type) const { return bit(EVIOCGBIT(0, bitBytes), type); }
    bool tryGrab(); // true when nobody else holds the device; released again at once
    bool grab() { return ::ioctl(fd, EVIOCGRAB, 1) == 0; } // held until the reader closes

private:
    static constexpr unsigned bitBytes = KEY_CNT / 8 + 1;
    bool bit(unsigned long request, unsigned index) const; // of a bitmap EVIOCG* fills in
    int fd;
};

// Event nodes whose device has this name, other than the listed ones.
std::vector<std::string> nodesNamed(const std::string& name,
                                    const std::vector<std::string>& except = {});

// Only the events that carry input: no SYN_REPORT, no scan code.
std::vector<InputEvent> withoutSync(std::vector<InputEvent> events);

} // namespace tolvane::kerneltest

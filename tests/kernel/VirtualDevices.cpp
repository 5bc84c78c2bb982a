#include "kernel/VirtualDevices.h"

#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/ioctl.h>
#include <tuple>
#include <unistd.h>

namespace tolvane::kerneltest {

DeviceRecipe usbMouse(const std::string& name) {
    return {name,
            BUS_USB,
            {REL_X, REL_Y, REL_WHEEL, REL_HWHEEL, REL_WHEEL_HI_RES, REL_HWHEEL_HI_RES},
            {BTN_LEFT, BTN_RIGHT, BTN_MIDDLE}};
}

DeviceRecipe usbKeyboard(const std::string& name) {
    DeviceRecipe r{name};
    for (std::uint16_t k = KEY_ESC; k <= KEY_MICMUTE; ++k) {
        r.keys.push_back(k);
    }
    r.leds = {LED_NUML, LED_CAPSL};
    r.repeat = true;
    return r;
}

DeviceRecipe consumerControl() {
    DeviceRecipe r{"Tolvane Test Keyboard Consumer Control", BUS_USB, {REL_HWHEEL}};
    r.keys = {KEY_MUTE, KEY_VOLUMEDOWN, KEY_VOLUMEUP, KEY_PLAYPAUSE, KEY_BRIGHTNESSUP};
    r.repeat = true;
    return r;
}

std::unique_ptr<VirtualDevice> VirtualDevice::plug(const DeviceRecipe& recipe) {
    libevdev* dev = libevdev_new();
    libevdev_set_name(dev, recipe.name.c_str());
    libevdev_set_id_bustype(dev, recipe.bus);
    libevdev_set_id_vendor(dev, 0x7a1e);
    libevdev_set_id_product(dev, 0x0001);
    const input_absinfo range{0, 0, 4095, 0, 0, 0}, slots{0, 0, 1, 0, 0, 0};
    for (const auto& [type, codes, data] : {std::tuple{EV_REL, &recipe.rel, (const void*)nullptr},
                                            {EV_KEY, &recipe.keys, nullptr},
                                            {EV_ABS, &recipe.abs, &range},
                                            {EV_SW, &recipe.switches, nullptr},
                                            {EV_LED, &recipe.leds, nullptr}}) {
        for (auto c : *codes) {
            libevdev_enable_event_code(dev, type, c,
                                       type == EV_ABS && c == ABS_MT_SLOT ? &slots : data);
        }
    }
    for (auto p : recipe.props) {
        libevdev_enable_property(dev, p);
    }
    if (!recipe.keys.empty()) {
        libevdev_enable_event_code(dev, EV_MSC, MSC_SCAN, nullptr);
    }
    if (recipe.repeat) {
        libevdev_enable_event_type(dev, EV_REP);
    }
    libevdev_uinput* device = nullptr;
    const int rc = libevdev_uinput_create_from_device(dev, LIBEVDEV_UINPUT_OPEN_MANAGED, &device);
    libevdev_free(dev);
    const char* node = rc == 0 ? libevdev_uinput_get_devnode(device) : nullptr;
    return node ? std::unique_ptr<VirtualDevice>(new VirtualDevice(device, node)) : nullptr;
}

VirtualDevice::~VirtualDevice() {
    libevdev_uinput_destroy(device);
}

int VirtualDevice::descriptor() const {
    return libevdev_uinput_get_fd(device);
}

void VirtualDevice::frame(const std::vector<InputEvent>& events) {
    std::vector<input_event> out;
    for (const InputEvent& e : events) {
        out.push_back(input_event{{}, e.type, e.code, e.value});
    }
    out.push_back(input_event{{}, EV_SYN, SYN_REPORT, 0});
    [[maybe_unused]] auto n = ::write(descriptor(), out.data(), out.size() * sizeof(input_event));
}

NodeReader::NodeReader(const std::string& path)
    : fd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}

std::vector<InputEvent> NodeReader::readAll(int ms) {
    pollfd p{fd, POLLIN, 0};
    ::poll(&p, 1, ms);
    std::vector<InputEvent> events;
    std::array<input_event, 64> buffer;
    for (ssize_t n; (n = ::read(fd, buffer.data(), sizeof(buffer))) > 0;) {
        for (ssize_t i = 0; i < n / ssize_t(sizeof(input_event)); ++i) {
            events.push_back({buffer[i].type, buffer[i].code, buffer[i].value});
        }
    }
    return events;
}

bool NodeReader::bit(unsigned long request, unsigned index) const {
    std::array<unsigned char, bitBytes> bits{};
    ::ioctl(fd, request, bits.data());
    return (bits[index / 8] >> (index % 8)) & 1;
}

bool NodeReader::tryGrab() {
    const bool free = grab();
    ::ioctl(fd, EVIOCGRAB, 0);
    return free;
}

// A device of an earlier case may be going while the folder is read: its name then reads as
// ENODEV, which a stream would throw on, so the name is read with plain calls.
static std::string nameOf(const std::filesystem::path& entry) {
    std::array<char, 256> text{};
    const int fd = ::open((entry / "device/name").c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t n = fd < 0 ? -1 : ::read(fd, text.data(), text.size() - 1);
    if (fd >= 0) {
        ::close(fd);
    }
    std::string name(text.data(), n > 0 ? std::size_t(n) : 0);
    return name.substr(0, name.find('\n'));
}

std::vector<std::string> nodesNamed(const std::string& name,
                                    const std::vector<std::string>& except) {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator("/sys/class/input")) {
        const std::string node = entry.path().filename(), path = "/dev/input/" + node;
        if (node.starts_with("event") && nameOf(entry.path()) == name &&
            std::find(except.begin(), except.end(), path) == except.end()) {
            found.push_back(path);
        }
    }
    return found;
}

std::vector<InputEvent> withoutSync(std::vector<InputEvent> events) {
    std::erase_if(events, [](const InputEvent& e) { return e.type == EV_SYN || e.type == EV_MSC; });
    return events;
}

} // namespace tolvane::kerneltest

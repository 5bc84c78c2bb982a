#include "kernel/VirtualDevices.h"

#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>

#include <array>
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tolvane::kerneltest {

namespace {

DeviceRecipe recipe(std::string name, std::uint16_t bus, std::vector<std::uint16_t> rel,
                    std::vector<std::uint16_t> keys) {
    DeviceRecipe s;
    s.name = std::move(name);
    s.bus = bus;
    s.rel = std::move(rel);
    s.keys = std::move(keys);
    return s;
}

} // namespace

DeviceRecipe usbMouse(const std::string& name) {
    return recipe(name, BUS_USB,
                  {REL_X, REL_Y, REL_WHEEL, REL_HWHEEL, REL_WHEEL_HI_RES, REL_HWHEEL_HI_RES},
                  {BTN_LEFT, BTN_RIGHT, BTN_MIDDLE});
}

DeviceRecipe builtInPointer() {
    return recipe("Tolvane Test TrackPoint", BUS_I8042, {REL_X, REL_Y}, {BTN_LEFT, BTN_RIGHT});
}

DeviceRecipe usbKeyboard(const std::string& name) {
    DeviceRecipe s = recipe(name, BUS_USB, {}, {});
    for (std::uint16_t k = KEY_ESC; k <= KEY_MICMUTE; ++k) {
        s.keys.push_back(k);
    }
    s.repeat = true;
    return s;
}

DeviceRecipe consumerControl() {
    return recipe("Tolvane Test Keyboard Consumer Control", BUS_USB, {REL_HWHEEL},
                  {KEY_MUTE, KEY_VOLUMEDOWN, KEY_VOLUMEUP, KEY_PLAYPAUSE, KEY_BRIGHTNESSDOWN,
                   KEY_BRIGHTNESSUP});
}

DeviceRecipe powerButton() {
    return recipe("Tolvane Test Power Button", BUS_HOST, {}, {KEY_POWER});
}

DeviceRecipe lidSwitch() {
    DeviceRecipe s = recipe("Tolvane Test Lid Switch", BUS_HOST, {}, {});
    s.switches = {SW_LID};
    return s;
}

DeviceRecipe keyboardWithTouchpad() {
    DeviceRecipe s = usbKeyboard("Tolvane Test Keyboard with Touchpad");
    s.abs = {ABS_X, ABS_Y};
    s.keys.insert(s.keys.end(), {BTN_LEFT, BTN_TOOL_FINGER, BTN_TOUCH});
    s.props = {INPUT_PROP_POINTER};
    s.repeat = false;
    return s;
}

std::unique_ptr<VirtualDevice> VirtualDevice::plug(const DeviceRecipe& recipe) {
    libevdev* dev = libevdev_new();
    libevdev_set_name(dev, recipe.name.c_str());
    libevdev_set_id_bustype(dev, recipe.bus);
    libevdev_set_id_vendor(dev, 0x7a1e);
    libevdev_set_id_product(dev, 0x0001);
    for (auto c : recipe.rel) {
        libevdev_enable_event_code(dev, EV_REL, c, nullptr);
    }
    for (auto c : recipe.abs) {
        const input_absinfo info{0, 0, 4095, 0, 0, 0};
        libevdev_enable_event_code(dev, EV_ABS, c, &info);
    }
    for (auto c : recipe.keys) {
        libevdev_enable_event_code(dev, EV_KEY, c, nullptr);
    }
    for (auto c : recipe.switches) {
        libevdev_enable_event_code(dev, EV_SW, c, nullptr);
    }
    for (auto p : recipe.props) {
        libevdev_enable_property(dev, p);
    }
    if (!recipe.keys.empty()) {
        libevdev_enable_event_type(dev, EV_MSC);
        libevdev_enable_event_code(dev, EV_MSC, MSC_SCAN, nullptr);
    }
    if (recipe.repeat) {
        libevdev_enable_event_type(dev, EV_REP);
    }
    libevdev_uinput* device = nullptr;
    const int rc = libevdev_uinput_create_from_device(dev, LIBEVDEV_UINPUT_OPEN_MANAGED, &device);
    libevdev_free(dev);
    if (rc != 0) {
        return nullptr;
    }
    const char* node = libevdev_uinput_get_devnode(device);
    return std::unique_ptr<VirtualDevice>(new VirtualDevice(device, node ? node : ""));
}

VirtualDevice::VirtualDevice(libevdev_uinput* device, std::string path)
    : device(device), nodePath(std::move(path)) {}

VirtualDevice::~VirtualDevice() {
    libevdev_uinput_destroy(device);
}

std::string VirtualDevice::node() const {
    return nodePath.substr(nodePath.rfind('/') + 1);
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
    [[maybe_unused]] auto n =
        ::write(libevdev_uinput_get_fd(device), out.data(), out.size() * sizeof(input_event));
}

NodeReader::NodeReader(const std::string& path)
    : fd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}

NodeReader::~NodeReader() {
    if (fd >= 0) {
        ::close(fd);
    }
}

std::vector<InputEvent> NodeReader::readAll() {
    std::vector<InputEvent> events;
    std::array<input_event, 64> buffer;
    for (;;) {
        const ssize_t n = ::read(fd, buffer.data(), sizeof(buffer));
        if (n <= 0) {
            return events;
        }
        for (ssize_t i = 0; i < n / ssize_t(sizeof(input_event)); ++i) {
            events.push_back({buffer[i].type, buffer[i].code, buffer[i].value});
        }
    }
}

std::vector<InputEvent> NodeReader::readWithin(int ms) {
    pollfd p{fd, POLLIN, 0};
    ::poll(&p, 1, ms);
    return readAll();
}

bool NodeReader::keyDown(std::uint16_t code) const {
    std::array<unsigned char, KEY_CNT / 8 + 1> bits{};
    ::ioctl(fd, EVIOCGKEY(bits.size()), bits.data());
    return (bits[code / 8] >> (code % 8)) & 1;
}

bool NodeReader::tryGrab() {
    if (::ioctl(fd, EVIOCGRAB, 1) != 0) {
        return false;
    }
    ::ioctl(fd, EVIOCGRAB, 0);
    return true;
}

input_id NodeReader::id() const {
    input_id id{};
    ::ioctl(fd, EVIOCGID, &id);
    return id;
}

bool NodeReader::grab() {
    return ::ioctl(fd, EVIOCGRAB, 1) == 0;
}

void NodeReader::ungrab() {
    ::ioctl(fd, EVIOCGRAB, 0);
}

std::vector<std::string> nodesNamed(const std::string& name,
                                    const std::vector<std::string>& except) {
    std::vector<std::string> found;
    DIR* dir = ::opendir("/dev/input");
    while (dir) {
        const dirent* entry = ::readdir(dir);
        if (!entry) {
            break;
        }
        const std::string path = std::string("/dev/input/") + entry->d_name;
        if (path.find("/event") == std::string::npos) {
            continue;
        }
        bool excluded = false;
        for (const std::string& e : except) {
            excluded = excluded || e == path;
        }
        const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        std::array<char, 256> buffer{};
        if (fd >= 0 && ::ioctl(fd, EVIOCGNAME(buffer.size() - 1), buffer.data()) >= 0 &&
            name == buffer.data() && !excluded) {
            found.push_back(path);
        }
        if (fd >= 0) {
            ::close(fd);
        }
    }
    if (dir) {
        ::closedir(dir);
    }
    return found;
}

std::vector<InputEvent> withoutSync(const std::vector<InputEvent>& events) {
    std::vector<InputEvent> kept;
    for (const InputEvent& e : events) {
        if (e.type != EV_SYN && e.type != EV_MSC) {
            kept.push_back(e);
        }
    }
    return kept;
}

} // namespace tolvane::kerneltest

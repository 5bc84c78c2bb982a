// The guest's side of the desktop lock session: a keyboard the kernel believes in, and a way
// to find things on Xvfb's screen without a screenshot tool.
//
//   tolvane-lock-guest keyboard FIFO
//       Plugs a virtual USB keyboard through uinput and prints "keyboard NODE". Each line
//       "type N" read from FIFO taps N letter keys and prints "typed N seen M", where M counts
//       the key events that a plain reader of the node (as a desktop would be: no grab) got.
//       "quit" unplugs it.
//   tolvane-lock-guest find XWD RRGGBB TOLERANCE X Y WIDTH HEIGHT
//       Prints "COUNT LEFT TOP RIGHT BOTTOM" for the pixels near the colour inside the
//       rectangle of the screen dump, or "0" when there are none.
#include "desktop/guest/XwdPicture.h"
#include "kernel/VirtualDevices.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

using namespace tolvane;

namespace {

constexpr int settleMs = 300;

int countKeys(const std::vector<InputEvent>& events) {
    int keys = 0;
    for (const InputEvent& e : kerneltest::withoutSync(events)) {
        keys += e.type == EV_KEY ? 1 : 0;
    }
    return keys;
}

int runKeyboard(const char* fifoPath) {
    const auto keyboard =
        kerneltest::VirtualDevice::plug(kerneltest::usbKeyboard("Tolvane Desk Keyboard"));
    if (!keyboard) {
        std::printf("keyboard: uinput refused the device\n");
        return 1;
    }
    kerneltest::NodeReader reader(keyboard->path());
    // Read and write, so that the pipe never reports an end while no writer has it open.
    FILE* commands = ::fdopen(::open(fifoPath, O_RDWR | O_CLOEXEC), "r");
    if (!reader.isOpen() || !commands) {
        std::printf("keyboard: cannot open %s or %s\n", keyboard->path().c_str(), fifoPath);
        return 1;
    }
    std::printf("keyboard %s\n", keyboard->path().c_str());
    std::fflush(stdout);
    char line[64];
    while (std::fgets(line, sizeof line, commands)) {
        int count = 0;
        if (std::sscanf(line, "type %d", &count) == 1) {
            reader.readAll();
            static const std::uint16_t letters[] = {KEY_S, KEY_E, KEY_C, KEY_R, KEY_E, KEY_T};
            for (int i = 0; i < count; ++i) {
                keyboard->tap(letters[i % 6]);
            }
            ::usleep(settleMs * 1000);
            std::printf("typed %d seen %d\n", count, countKeys(reader.readWithin(settleMs)));
            std::fflush(stdout);
        } else if (std::string(line).rfind("quit", 0) == 0) {
            break;
        }
    }
    return 0;
}

int runFind(char** argv) {
    const auto picture = desktoptest::XwdPicture::read(argv[0]);
    if (!picture) {
        std::printf("find: %s is not a TrueColor screen dump\n", argv[0]);
        return 1;
    }
    const auto rgb = std::uint32_t(std::strtoul(argv[1], nullptr, 16));
    const auto patch = picture->find(rgb, std::atoi(argv[2]), std::atoi(argv[3]),
                                     std::atoi(argv[4]), std::atoi(argv[5]), std::atoi(argv[6]));
    if (!patch) {
        std::printf("0\n");
    } else {
        std::printf("%d %d %d %d %d\n", patch->count, patch->left, patch->top, patch->right,
                    patch->bottom);
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "keyboard" && argc == 3) {
        return runKeyboard(argv[2]);
    }
    if (command == "find" && argc == 9) {
        return runFind(argv + 2);
    }
    std::fprintf(stderr, "usage: tolvane-lock-guest keyboard FIFO | find XWD RRGGBB TOLERANCE "
                         "X Y WIDTH HEIGHT\n");
    return 2;
}

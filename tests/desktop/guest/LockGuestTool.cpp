// The guest's side of the lock session: a keyboard the kernel believes in, and a way to find
// things on Xvfb's screen without a screenshot tool.
//
//   tolvane-lock-guest keyboard
//       Plugs a virtual USB keyboard and prints "keyboard NODE". Each line read on standard
//       input taps six letter keys and prints "seen M", the key events that a plain reader of
//       the node (as the desktop is: no grab) got.
//   tolvane-lock-guest XWD RRGGBB TOLERANCE X Y WIDTH HEIGHT
//       Prints "COUNT LEFT TOP RIGHT BOTTOM" for the pixels near the colour inside the
//       rectangle of the screen dump.
#include "kernel/VirtualDevices.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace {

int runKeyboard() {
    using namespace tolvane::kerneltest;
    const auto keyboard = VirtualDevice::plug(usbKeyboard("Tolvane Desk Keyboard"));
    if (!keyboard) {
        std::printf("keyboard: uinput refused the device\n");
        return 1;
    }
    NodeReader reader(keyboard->path());
    std::printf("keyboard %s\n", keyboard->path().c_str());
    std::fflush(stdout);
    for (std::string line; std::getline(std::cin, line);) {
        reader.readAll();
        for (const std::uint16_t key : {KEY_S, KEY_E, KEY_C, KEY_R, KEY_E, KEY_T}) {
            keyboard->tap(key);
        }
        std::printf("seen %zu\n", withoutSync(reader.readAll(300)).size());
        std::fflush(stdout);
    }
    return 0;
}

} // namespace

// Xvfb keeps its screen (-fbdir) as an X window dump: 25 big-endian header fields, the window
// name and the colour map, then the pixels; at depth 24, 32 bits each in the server's byte
// order, red, green and blue a byte each.
int main(int argc, char** argv) {
    if (argc == 2 && std::string(argv[1]) == "keyboard") {
        return runKeyboard();
    }
    if (argc != 8) {
        std::fprintf(stderr, "usage: tolvane-lock-guest keyboard | XWD RRGGBB TOLERANCE X Y "
                             "WIDTH HEIGHT\n");
        return 2;
    }
    ++argv;
    std::ifstream in(argv[0], std::ios::binary);
    const std::vector<unsigned char> file((std::istreambuf_iterator<char>(in)),
                                          std::istreambuf_iterator<char>());
    const auto field = [&file](std::size_t i) {
        return file.size() < 100 ? 0u
                                 : std::uint32_t(file[4 * i]) << 24 | file[4 * i + 1] << 16 |
                                       file[4 * i + 2] << 8 | file[4 * i + 3];
    };
    const std::size_t start = field(0) + field(19) * 12, line = field(12);
    const int width = int(field(4)), height = int(field(5));
    if (field(11) != 32 || field(14) != 0xff0000 || field(16) != 0xff ||
        file.size() < start + line * std::size_t(height)) {
        std::printf("find: %s is not a 32-bit screen dump\n", argv[0]);
        return 1;
    }
    const auto rgb = std::uint32_t(std::strtoul(argv[1], nullptr, 16));
    const int tolerance = std::atoi(argv[2]), x = std::atoi(argv[3]), y = std::atoi(argv[4]);
    const bool little = field(7) == 0;
    int count = 0, left = width, top = height, right = -1, bottom = -1;
    for (int row = std::max(y, 0); row < std::min(y + std::atoi(argv[6]), height); ++row) {
        for (int column = std::max(x, 0); column < std::min(x + std::atoi(argv[5]), width);
             ++column) {
            const unsigned char* p = file.data() + start + line * std::size_t(row) + 4 * column;
            const int channels[] = {little ? p[2] : p[1], p[1 + (little ? 0 : 1)],
                                    little ? p[0] : p[3]};
            bool near = true;
            for (int c = 0; c < 3; ++c) {
                near = near && std::abs(channels[c] - int(rgb >> (16 - 8 * c) & 0xff)) <= tolerance;
            }
            if (near) {
                ++count;
                left = std::min(left, column), right = std::max(right, column);
                top = std::min(top, row), bottom = std::max(bottom, row);
            }
        }
    }
    std::printf("%d %d %d %d %d\n", count, left, top, right, bottom);
    return 0;
}

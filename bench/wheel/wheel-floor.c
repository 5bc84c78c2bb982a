// The floor of the wheel benchmark: the least a user-space pass-through of a mouse can do.
// It takes one event node for itself, makes one uinput device with the same name, ids,
// buttons and axes, and writes what it reads there unchanged. Nothing else is on the path:
// no library, no poll, one read and one write per batch of events.
#include <fcntl.h>
#include <linux/input.h>
#include <linux/uinput.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>

// Gives the uinput device every code of `type` the original has.
static void copyCodes(int original, int device, int type, int last, unsigned long request) {
    unsigned char bits[KEY_MAX / 8 + 1];
    memset(bits, 0, sizeof bits);
    if (ioctl(original, EVIOCGBIT(type, sizeof bits), bits) < 0) {
        return;
    }
    ioctl(device, UI_SET_EVBIT, type);
    for (int code = 0; code <= last; ++code) {
        if (bits[code / 8] & (1 << (code % 8))) {
            ioctl(device, request, code);
        }
    }
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: wheel-floor /dev/input/eventN\n");
        return 2;
    }
    const int original = open(argv[1], O_RDONLY | O_CLOEXEC);
    const int device = open("/dev/uinput", O_WRONLY | O_CLOEXEC);
    if (original < 0 || device < 0) {
        perror("wheel-floor: open");
        return 1;
    }
    struct uinput_setup setup;
    memset(&setup, 0, sizeof setup);
    ioctl(original, EVIOCGID, &setup.id);
    ioctl(original, EVIOCGNAME(sizeof setup.name - 1), setup.name);
    copyCodes(original, device, EV_REL, REL_MAX, UI_SET_RELBIT);
    copyCodes(original, device, EV_KEY, KEY_MAX, UI_SET_KEYBIT);
    if (ioctl(device, UI_DEV_SETUP, &setup) < 0 || ioctl(device, UI_DEV_CREATE) < 0 ||
        ioctl(original, EVIOCGRAB, 1) < 0) {
        perror("wheel-floor: uinput or grab");
        return 1;
    }
    struct input_event events[64];
    for (;;) {
        const ssize_t got = read(original, events, sizeof events);
        if (got <= 0 || write(device, events, (size_t)got) != got) {
            return 1;
        }
    }
}

// The filter of the interception-tools pipeline in the wheel benchmark, written as such
// filters are: raw input events in on stdin, the same out on stdout, with the vertical and
// horizontal wheels (legacy and high-resolution) negated. A read from the pipe may end inside
// an event, so the unfinished bytes wait for the next read.
#include <linux/input.h>
#include <string.h>
#include <unistd.h>

static int isWheel(const struct input_event* event) {
    return event->type == EV_REL &&
           (event->code == REL_WHEEL || event->code == REL_HWHEEL ||
            event->code == REL_WHEEL_HI_RES || event->code == REL_HWHEEL_HI_RES);
}

static int writeAll(const char* bytes, size_t length) {
    while (length > 0) {
        const ssize_t put = write(STDOUT_FILENO, bytes, length);
        if (put <= 0) {
            return 0;
        }
        bytes += put;
        length -= (size_t)put;
    }
    return 1;
}

int main(void) {
    struct input_event events[64];
    char* const bytes = (char*)events;
    size_t held = 0;
    for (;;) {
        const ssize_t got = read(STDIN_FILENO, bytes + held, sizeof events - held);
        if (got <= 0) {
            return 0;
        }
        held += (size_t)got;
        const size_t whole = held / sizeof(struct input_event);
        for (size_t i = 0; i < whole; ++i) {
            if (isWheel(&events[i])) {
                events[i].value = (int)(0u - (unsigned)events[i].value);
            }
        }
        if (!writeAll(bytes, whole * sizeof(struct input_event))) {
            return 1;
        }
        held -= whole * sizeof(struct input_event);
        memmove(bytes, bytes + whole * sizeof(struct input_event), held);
    }
}

// Starts a program and measures the time from its start to its tray icon being shown, for the
// idle-cost figures. Run as `tray-icon-timer OUT PROGRAM [ARGS...]`: this process becomes
// PROGRAM (same process id, so a shell's $! is the program's), while a detached watcher keeps
// the X connection and writes "N ms" to OUT, or "none" after ten seconds.
//
// An XEmbed tray takes an icon window from the root window into its own, which shows on the
// root window as a ReparentNotify; the icon is shown once that window is viewable there. The
// watcher subscribes before the program starts, so no step can be missed.
#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <xcb/xcb.h>

static double nowMs(void) {
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

static int isViewable(xcb_connection_t* x, xcb_window_t window) {
    xcb_get_window_attributes_reply_t* attributes =
        xcb_get_window_attributes_reply(x, xcb_get_window_attributes(x, window), NULL);
    const int viewable = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    free(attributes);
    return viewable;
}

// Waits for the first window that leaves the root window for a tray and becomes viewable.
static double waitForIcon(xcb_connection_t* x, xcb_window_t root, double started) {
    xcb_window_t icon = XCB_NONE;
    struct pollfd ready = {xcb_get_file_descriptor(x), POLLIN, 0};
    while (nowMs() - started < 10000) {
        xcb_generic_event_t* event = xcb_poll_for_event(x);
        if (!event) {
            if (xcb_connection_has_error(x)) {
                return -1;
            }
            poll(&ready, 1, 50);
            continue;
        }
        const int type = event->response_type & 0x7f;
        if (type == XCB_REPARENT_NOTIFY && icon == XCB_NONE) {
            const xcb_reparent_notify_event_t* moved = (const xcb_reparent_notify_event_t*)event;
            if (moved->event == root && moved->parent != root) {
                icon = moved->window;
                const uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
                xcb_change_window_attributes(x, icon, XCB_CW_EVENT_MASK, &mask);
            }
        }
        free(event);
        // Checked after every event: the tray may have mapped the icon before the subscription
        // to the icon's own events took effect.
        if (icon != XCB_NONE && isViewable(x, icon)) {
            return nowMs() - started;
        }
    }
    return -1;
}

int main(int argc, char** argv) {
    if (argc < 3) {
        fprintf(stderr, "usage: tray-icon-timer OUT PROGRAM [ARGS...]\n");
        return 2;
    }
    xcb_connection_t* x = xcb_connect(NULL, NULL);
    if (xcb_connection_has_error(x)) {
        fprintf(stderr, "tray-icon-timer: no X display\n");
        return 1;
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
    const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_generic_error_t* error = xcb_request_check(
        x, xcb_change_window_attributes_checked(x, root, XCB_CW_EVENT_MASK, &mask));
    if (error) {
        fprintf(stderr, "tray-icon-timer: cannot watch the root window\n");
        return 1;
    }
    const double started = nowMs();
    const pid_t watcher = fork();
    if (watcher == 0) {
        // Detached, so that the program never has a child of its own to reap.
        if (fork() != 0) {
            _exit(0);
        }
        const double ms = waitForIcon(x, root, started);
        FILE* out = fopen(argv[1], "w");
        if (out) {
            if (ms < 0) {
                fprintf(out, "none\n");
            } else {
                fprintf(out, "%.0f ms\n", ms);
            }
            fclose(out);
        }
        _exit(0);
    }
    waitpid(watcher, NULL, 0);
    close(xcb_get_file_descriptor(x));
    execvp(argv[2], argv + 2);
    perror("tray-icon-timer: exec");
    return 127;
}

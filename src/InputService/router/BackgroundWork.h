#pragma once

#include <functional>

namespace tolvane::oslinux {

// Runs `task` on the one background thread, after everything handed over before it, and
// returns at once. For what the kernel makes wait and the loop must not: destroying a uinput
// device waits for its removal from sysfs and for grace periods, making one waits for its
// registration, tens of milliseconds each under load; nothing the loop owns may be touched.
void runInBackground(std::function<void()> task);

// Closes fd in the background. For descriptors whose close() the kernel makes wait: an evdev
// client's close waits for an RCU grace period, milliseconds each, which over every input node
// at start-up would hold up the main loop for a noticeable time. The descriptor must no longer
// be used by the caller, and nothing may depend on when it closes: a grab is let go with its
// own call first.
void closeInBackground(int fd);

// Returns once everything handed over so far has run.
void finishBackgroundWork();

} // namespace tolvane::oslinux

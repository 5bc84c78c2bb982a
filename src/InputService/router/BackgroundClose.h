#pragma once

#include <functional>

namespace tolvane::oslinux {

// Closes fd on the closing thread and returns at once. For descriptors whose close() the kernel
// makes wait: an evdev client's close waits for an RCU grace period, milliseconds each, which
// over every input node at start-up would hold up the main loop for a noticeable time.
// The descriptor must no longer be used by the caller, and nothing may depend on when it
// closes: a grab is let go with its own call first.
void closeInBackground(int fd);

// The same for any closing the kernel makes wait: destroying a uinput device waits for its
// removal from sysfs and for grace periods, tens of milliseconds under load.
void closeInBackground(std::function<void()> closing);

// Returns once everything handed over so far is closed.
void finishBackgroundClosing();

} // namespace tolvane::oslinux

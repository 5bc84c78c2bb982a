// An advisory flock on a file in the user's runtime folder. The kernel drops the lock when
// the process ends in any way, crash and SIGKILL included, so a stale lock never keeps
// Tolvane from starting again.
#include "platform/linux/SingleInstanceLock.h"

#include <cerrno>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace tolvane::oslinux {

namespace {

std::string lockPath() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime && runtime[0] == '/') {
        return std::string(runtime) + "/tolvane.lock";
    }
    return "/tmp/tolvane-" + std::to_string(::getuid()) + ".lock";
}

} // namespace

SingleInstanceLock::~SingleInstanceLock() {
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

bool SingleInstanceLock::acquire() {
    descriptor = ::open(lockPath().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor < 0) {
        return true;
    }
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
        return true;
    }
    const bool heldElsewhere = errno == EWOULDBLOCK;
    ::close(descriptor);
    descriptor = -1;
    return !heldElsewhere;
}

} // namespace tolvane::oslinux

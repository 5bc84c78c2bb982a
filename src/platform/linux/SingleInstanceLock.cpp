// One Tolvane per user, with nothing that another local user can hold or replace. The lock is
// an flock on a file in each folder that only the user can write (checked with lstat and
// fstat, never through a symlink): XDG_RUNTIME_DIR, the runtime folder that logind makes for
// the uid, and one under the home of the password database. Taking it in all of them, not the
// first that works, is what makes two starts meet whatever their environment says. The kernel
// drops an flock when the process ends in any way, so a stale lock never keeps Tolvane from
// starting. Next to each lock the holder listens on a unix socket, bound before anyone can
// ask, for requests to open its menu. A user with none of these folders is locked by an
// abstract unix socket named after the uid, whose bind is atomic and which vanishes with the
// process. Whoever answers on a socket must be the same user (SO_PEERCRED); a name that
// another user holds, or binds without listening, is passed over for the next at once.
#include "platform/linux/SingleInstanceLock.h"

#include "platform/linux/OpenRequestListener.h"
#include "platform/linux/UserFolders.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tolvane::oslinux {

namespace {

constexpr int abstractSlots = 8;

bool ownedByUserAlone(const struct stat& info) {
    return info.st_uid == ::geteuid() && (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool privateFolder(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && ownedByUserAlone(info);
}

// The socket next to the lock, or an abstract name when there is no folder or its path is
// too long for a socket address.
socklen_t requestAddress(const std::string& folder, int slot, sockaddr_un& address) {
    std::memset(&address, 0, sizeof address);
    address.sun_family = AF_UNIX;
    const std::string path = folder + "/tolvane.socket";
    if (!folder.empty() && path.size() < sizeof address.sun_path) {
        std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
        return socklen_t(offsetof(sockaddr_un, sun_path) + path.size() + 1);
    }
    const std::string name =
        "tolvane-instance-" + std::to_string(::geteuid()) + "-" + std::to_string(slot);
    std::memcpy(address.sun_path + 1, name.data(), name.size());
    return socklen_t(offsetof(sockaddr_un, sun_path) + 1 + name.size());
}

} // namespace

std::vector<SingleInstanceLock::Folder> SingleInstanceLock::userFolders() {
    std::vector<Folder> result;
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && runtime[0] == '/') {
        result.push_back({runtime, false});
    }
    result.push_back({"/run/user/" + std::to_string(::geteuid()), false});
    if (const std::string home = accountHome(); !home.empty()) {
        result.push_back({home + "/.cache/tolvane", true});
    }
    return result;
}

SingleInstanceLock::SingleInstanceLock(std::vector<Folder> folders) : folders(std::move(folders)) {}

SingleInstanceLock::~SingleInstanceLock() {
    listeners.clear();
    for (const int descriptor : listening) {
        ::close(descriptor);
    }
    for (const int descriptor : lockDescriptors) {
        ::close(descriptor);
    }
}

bool SingleInstanceLock::acquire() {
    std::vector<std::string> locked;
    for (const Folder& folder : folders) {
        if (std::ranges::find(locked, folder.path) != locked.end()) {
            continue; // XDG_RUNTIME_DIR is mostly logind's folder: a second flock would fail
        }
        const Lock lock = lockIn(folder);
        if (lock == Lock::heldElsewhere) {
            for (const int descriptor : lockDescriptors) {
                ::close(descriptor);
            }
            lockDescriptors.clear();
            chosenFolder = folder.path;
            return false;
        }
        if (lock == Lock::taken) {
            locked.push_back(folder.path);
        }
    }
    for (const std::string& folder : locked) {
        listenIn(folder, 0);
    }
    if (!locked.empty()) {
        chosenFolder = locked.front();
        return true;
    }
    return listenAbstract();
}

SingleInstanceLock::Lock SingleInstanceLock::lockIn(const Folder& folder) {
    if (folder.create) {
        const std::string parent = folder.path.substr(0, folder.path.rfind('/'));
        ::mkdir(parent.c_str(), 0700);
        ::mkdir(folder.path.c_str(), 0700);
    }
    if (!privateFolder(folder.path)) {
        return Lock::unusable;
    }
    const std::string path = folder.path + "/tolvane.lock";
    int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor < 0) {
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    }
    struct stat info {};
    if (descriptor < 0) {
        return Lock::unusable;
    }
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode) || !ownedByUserAlone(info)) {
        ::close(descriptor);
        return Lock::unusable;
    }
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        const bool held = errno == EWOULDBLOCK;
        ::close(descriptor);
        return held ? Lock::heldElsewhere : Lock::unusable;
    }
    lockDescriptors.push_back(descriptor);
    return Lock::taken;
}

// Only the holder of the lock touches a socket in its folder, so a leftover one can go.
bool SingleInstanceLock::listenIn(const std::string& folder, int slot) {
    sockaddr_un address{};
    const socklen_t length = requestAddress(folder, slot, address);
    if (address.sun_path[0] != '\0') {
        ::unlink(address.sun_path);
    }
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) {
        return false;
    }
    if (::bind(descriptor, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        ::listen(descriptor, 64) != 0) {
        ::close(descriptor);
        return false;
    }
    listening.push_back(descriptor);
    return true;
}

// The first free abstract name is the lock. One the user's running Tolvane answers on means
// another start; one that someone else holds, or binds without listening, is skipped. Every
// name squatted: the start goes on unlocked rather than not at all.
bool SingleInstanceLock::listenAbstract() {
    chosenFolder.clear();
    for (int slot = 0; slot < abstractSlots; ++slot) {
        if (listenIn("", slot)) {
            abstractSlot = slot;
            return true;
        }
        // The holder listens microseconds after its bind: a few tries cover that.
        const int running = connectTo("", slot, 3);
        if (running >= 0) {
            ::close(running);
            abstractSlot = slot;
            return false;
        }
    }
    return true;
}

// A connection to the user's own Tolvane, or -1. The holder listens right after it takes the
// lock or binds the name; a start that comes in between retries, every 50 ms.
int SingleInstanceLock::connectTo(const std::string& folder, int slot, int attempts) const {
    sockaddr_un address{};
    const socklen_t length = requestAddress(folder, slot, address);
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (descriptor < 0) {
            return -1;
        }
        if (::connect(descriptor, reinterpret_cast<sockaddr*>(&address), length) == 0) {
            if (peerIsUser(descriptor)) {
                return descriptor;
            }
            ::close(descriptor);
            return -1;
        }
        ::close(descriptor);
        if (attempt + 1 < attempts) {
            ::usleep(attempts > 3 ? 50000 : 10000);
        }
    }
    return -1;
}

// Up to five seconds for a holder found by its lock, which a loaded machine may need.
bool SingleInstanceLock::askRunningToOpen() const {
    const int descriptor = chosenFolder.empty() && abstractSlot >= 0
                               ? connectTo("", abstractSlot, 3)
                               : connectTo(chosenFolder, 0, 100);
    if (descriptor < 0) {
        return false;
    }
    const bool sent = ::send(descriptor, &OpenRequestListener::openRequest, 1, MSG_NOSIGNAL) == 1;
    ::close(descriptor);
    return sent;
}

void SingleInstanceLock::onOpenRequest(const std::function<void()>& onRequest) {
    if (!listeners.empty()) {
        return;
    }
    for (const int descriptor : listening) {
        listeners.push_back(std::make_unique<OpenRequestListener>(descriptor, onRequest));
    }
    listening.clear(); // the listeners close them now
}

} // namespace tolvane::oslinux

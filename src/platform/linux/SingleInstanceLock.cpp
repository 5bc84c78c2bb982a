// One Tolvane per user, with nothing that another local user can hold or replace. The lock is
// an flock on a file in a folder that only the user can write (checked with lstat and fstat,
// never through a symlink): XDG_RUNTIME_DIR where it is such a folder and takes the file, else
// the runtime folder that logind makes for the uid, else one under the home of the password
// database; so a start whose XDG_RUNTIME_DIR is broken still meets the session's lock. The
// kernel drops an flock when the process ends in any way, so a stale lock never keeps Tolvane
// from starting. Next to the lock, the holder listens on a unix socket, bound before anyone can
// ask, for requests to open its menu. A user with none of these folders is locked by an
// abstract unix socket named after the uid, whose bind is atomic and which vanishes with the
// process. Whoever answers on a socket must be the same user (SO_PEERCRED); a name that
// another user holds is passed over for the next, which every start of this user tries in the
// same order.
#include "platform/linux/SingleInstanceLock.h"

#include "platform/linux/UserFolders.h"

#include <QSocketNotifier>

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

bool peerIsUser(int descriptor) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == ::geteuid();
}

constexpr char openRequest = 'o';

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
    notifier.reset();
    if (listenDescriptor >= 0) {
        ::close(listenDescriptor);
    }
    if (lockDescriptor >= 0) {
        ::close(lockDescriptor);
    }
}

bool SingleInstanceLock::acquire() {
    for (const Folder& folder : folders) {
        bool heldElsewhere = false;
        if (lockIn(folder, heldElsewhere)) {
            listen();
            return true;
        }
        if (heldElsewhere) {
            return false;
        }
    }
    chosenFolder.clear();
    for (abstractSlot = 0; abstractSlot < 8; ++abstractSlot) {
        if (listen()) {
            return true;
        }
        const int running = connectToRunning();
        if (running >= 0) {
            ::close(running);
            return false;
        }
    }
    return true;
}

bool SingleInstanceLock::lockIn(const Folder& folder, bool& heldElsewhere) {
    if (folder.create) {
        const std::string parent = folder.path.substr(0, folder.path.rfind('/'));
        ::mkdir(parent.c_str(), 0700);
        ::mkdir(folder.path.c_str(), 0700);
    }
    if (!privateFolder(folder.path)) {
        return false;
    }
    const std::string path = folder.path + "/tolvane.lock";
    int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor < 0) {
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    }
    struct stat info {};
    if (descriptor < 0) {
        return false;
    }
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode) || !ownedByUserAlone(info)) {
        ::close(descriptor);
        return false;
    }
    chosenFolder = folder.path;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        heldElsewhere = errno == EWOULDBLOCK;
        ::close(descriptor);
        return false;
    }
    lockDescriptor = descriptor;
    return true;
}

// Only the holder of the lock touches the socket, so a leftover one can go.
bool SingleInstanceLock::listen() {
    sockaddr_un address{};
    const socklen_t length = requestAddress(chosenFolder, abstractSlot, address);
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
    listenDescriptor = descriptor;
    return true;
}

// The holder listens right after it takes the lock or binds the name; a start that comes in
// between retries for up to five seconds, which a loaded machine may need.
int SingleInstanceLock::connectToRunning() const {
    sockaddr_un address{};
    const socklen_t length = requestAddress(chosenFolder, abstractSlot, address);
    for (int attempt = 0; attempt < 100; ++attempt) {
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
        ::usleep(50000);
    }
    return -1;
}

bool SingleInstanceLock::askRunningToOpen() const {
    const int descriptor = connectToRunning();
    if (descriptor < 0) {
        return false;
    }
    const bool sent = ::send(descriptor, &openRequest, 1, MSG_NOSIGNAL) == 1;
    ::close(descriptor);
    return sent;
}

void SingleInstanceLock::onOpenRequest(std::function<void()> onRequest) {
    requestHandler = std::move(onRequest);
    if (listenDescriptor < 0 || notifier) {
        return;
    }
    notifier = std::make_unique<QSocketNotifier>(listenDescriptor, QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                     [this] { acceptRequests(); });
    acceptRequests();
}

// A request is one byte, sent at once after connecting; a connection that only checks who
// holds the lock sends none.
void SingleInstanceLock::acceptRequests() {
    for (;;) {
        const int connection = ::accept4(listenDescriptor, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) {
            return;
        }
        const timeval wait{0, 500000};
        ::setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
        char request = 0;
        const bool asked = peerIsUser(connection) && ::recv(connection, &request, 1, 0) == 1 &&
                           request == openRequest;
        ::close(connection);
        if (asked && requestHandler) {
            requestHandler();
        }
    }
}

} // namespace tolvane::oslinux

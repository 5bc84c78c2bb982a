#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tolvane::oslinux {

class OpenRequestListener;

// One Tolvane per user: two inverters would cancel each other out. A second start hands the
// running one a request to open its menu, then leaves.
class SingleInstanceLock {
public:
    // The folders the lock is taken in, each one of them: XDG_RUNTIME_DIR, the runtime folder
    // that logind makes, a folder under the home of the password database. Starts with
    // different or broken XDG_RUNTIME_DIRs meet at the others all the same.
    struct Folder {
        std::string path;
        bool create; // made, with its parent, when missing
    };
    static std::vector<Folder> userFolders();

    explicit SingleInstanceLock(std::vector<Folder> folders = userFolders());
    SingleInstanceLock(const SingleInstanceLock&) = delete;
    SingleInstanceLock& operator=(const SingleInstanceLock&) = delete;
    ~SingleInstanceLock();

    // True when this process is the only Tolvane of the user; false when another one runs.
    // A lock that cannot be made at all does not stop the start.
    bool acquire();

    // For a start that did not get the lock: asks the running Tolvane to open its menu, and
    // says whether the request was delivered.
    bool askRunningToOpen() const;

    // For the start that holds the lock: `onRequest` runs on Qt's event loop for each request.
    void onOpenRequest(const std::function<void()>& onRequest);

    // The folder whose socket a request goes to: for the holder the first it locked, for a
    // later start the one where it met the holder's lock; empty for neither.
    const std::string& folder() const { return chosenFolder; }

private:
    enum class Lock { taken, heldElsewhere, unusable };
    Lock lockIn(const Folder& folder);
    bool listenIn(const std::string& folder, int slot);
    bool listenAbstract();
    int connectTo(const std::string& folder, int slot, int attempts) const;

    std::vector<Folder> folders;
    std::string chosenFolder;
    int abstractSlot = -1;
    std::vector<int> lockDescriptors;
    std::vector<int> listening;
    std::vector<std::unique_ptr<OpenRequestListener>> listeners;
};

} // namespace tolvane::oslinux

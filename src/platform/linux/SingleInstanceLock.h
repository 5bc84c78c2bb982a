#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QSocketNotifier;

namespace tolvane::oslinux {

// One Tolvane per user: two inverters would cancel each other out. A second start hands the
// running one a request to open its menu, then leaves.
class SingleInstanceLock {
public:
    // The folders tried for the lock, in order: XDG_RUNTIME_DIR, the runtime folder that
    // logind makes, a folder under the home of the password database. A start whose
    // XDG_RUNTIME_DIR is missing, unset or read-only meets the lock of the session's runtime
    // folder all the same.
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
    void onOpenRequest(std::function<void()> onRequest);

    // The folder that holds the lock and the request socket; empty when the user has none.
    const std::string& folder() const { return chosenFolder; }

private:
    bool lockIn(const Folder& folder, bool& heldElsewhere);
    bool listen();
    int connectToRunning() const;
    void acceptRequests();

    std::vector<Folder> folders;
    std::string chosenFolder;
    int abstractSlot = 0;
    int lockDescriptor = -1;
    int listenDescriptor = -1;
    std::function<void()> requestHandler;
    std::unique_ptr<QSocketNotifier> notifier;
};

} // namespace tolvane::oslinux

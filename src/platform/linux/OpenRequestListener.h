#pragma once

#include <QObject>
#include <QTimer>

#include <functional>
#include <map>
#include <memory>

class QSocketNotifier;

namespace tolvane::oslinux {

// Takes requests to open the menu on a listening unix socket, without ever waiting for one:
// a connection is accepted at once, its one byte read when it comes, and a connection that
// sends nothing within a second, or beyond the sixteen that may wait at a time, is closed.
// Whether the process at the other end of a unix socket is this user's.
bool peerIsUser(int descriptor);

class OpenRequestListener {
public:
    // Takes `listening` (a non-blocking listening socket) and closes it at the end.
    OpenRequestListener(int listening, std::function<void()> onRequest);
    ~OpenRequestListener();

    OpenRequestListener(const OpenRequestListener&) = delete;
    OpenRequestListener& operator=(const OpenRequestListener&) = delete;

    // What a start sends to ask for the menu.
    static constexpr char openRequest = 'o';
    static constexpr int waitingLimit = 16;
    static constexpr int silenceLimitMs = 1000;

private:
    struct Waiting {
        std::unique_ptr<QSocketNotifier> readable;
        qint64 since = 0;
    };
    void acceptAll();
    void readFrom(int connection);
    void close(int connection);
    void closeSilent();

    int listening;
    std::function<void()> onRequest;
    std::unique_ptr<QSocketNotifier> incoming;
    std::map<int, Waiting> waiting;
    QTimer silence; // runs only while a connection waits
};

} // namespace tolvane::oslinux

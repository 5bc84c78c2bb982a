#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tolvane {

// Milliseconds of a monotonic clock: time is an input here, never read.
using MonotonicMs = std::int64_t;

inline constexpr std::size_t maxServiceCallers = 16;
inline constexpr MonotonicMs keepAliveLimitMs = 2000;

// What the input service does with the devices, decided from its callers alone.
struct InputEffect {
    bool tap = false;       // the wheel devices are taken
    bool inverting = false; // and their wheel negated
    bool hold = false;      // the keyboards are held

    friend bool operator==(const InputEffect&, const InputEffect&) = default;
};

// The input service's callers and what belongs to each: its inversion, which counts while its
// session is active and it stays connected, and its keyboard hold, which ends for good when
// its session stops being active or its keep-alive is late. Of several callers in active
// sessions, the one that set its inversion last decides it. At most maxServiceCallers at once.
class ServiceCallers {
public:
    // Makes room for a new caller; false when it is new and every place is taken.
    bool admit(const std::string& name);
    bool knows(const std::string& name) const { return find(name) != nullptr; }
    // A caller with nothing of its own, so that a refused call leaves no state behind.
    bool idle(const std::string& name) const;
    void forget(const std::string& name);

    // The caller's login session, once looked up; empty when there is no session manager.
    void setSession(const std::string& name, const std::string& session, bool active);
    bool hasSession(const std::string& name) const;
    // A session became active or stopped being so: its callers' holds end with it.
    void sessionActivity(const std::string& session, bool active);

    void setInversion(const std::string& name, bool inverting);
    void hold(const std::string& name, MonotonicMs now);
    // False when the caller holds nothing (any more).
    bool keepAlive(const std::string& name, MonotonicMs now);
    void release(const std::string& name);
    bool holds(const std::string& name) const;
    void stopTap(const std::string& name);

    // Ends every hold whose last keep-alive is keepAliveLimitMs old or older.
    void expireHolds(MonotonicMs now);
    // When the next hold runs out unless kept alive; absent without holds.
    std::optional<MonotonicMs> nextExpiry() const;

    InputEffect effect() const;
    std::size_t size() const { return callers.size(); }

private:
    struct Caller {
        std::string name;
        std::optional<std::string> session; // absent until looked up
        bool sessionActive = false;
        bool tapping = false;
        bool inverting = false;
        std::uint64_t tapOrder = 0;
        bool holding = false;
        MonotonicMs lastKeepAlive = 0;
    };
    Caller* find(const std::string& name);
    const Caller* find(const std::string& name) const;

    std::vector<Caller> callers;
    std::uint64_t taps = 0;
};

} // namespace tolvane

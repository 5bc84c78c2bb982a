#include "TolvaneCore/ServiceCallers.h"

#include <algorithm>

namespace tolvane {

ServiceCallers::Caller* ServiceCallers::find(const std::string& name) {
    const auto found = std::find_if(callers.begin(), callers.end(),
                                    [&](const Caller& caller) { return caller.name == name; });
    return found == callers.end() ? nullptr : &*found;
}

const ServiceCallers::Caller* ServiceCallers::find(const std::string& name) const {
    return const_cast<ServiceCallers*>(this)->find(name);
}

bool ServiceCallers::admit(const std::string& name) {
    if (find(name)) {
        return true;
    }
    if (callers.size() >= maxServiceCallers) {
        return false;
    }
    Caller caller;
    caller.name = name;
    callers.push_back(std::move(caller));
    return true;
}

bool ServiceCallers::idle(const std::string& name) const {
    const Caller* caller = find(name);
    return !caller || (!caller->tapping && !caller->holding);
}

void ServiceCallers::forget(const std::string& name) {
    std::erase_if(callers, [&](const Caller& caller) { return caller.name == name; });
}

void ServiceCallers::setSession(const std::string& name, const std::string& session, bool active) {
    if (Caller* caller = find(name)) {
        caller->session = session;
        caller->sessionActive = active;
        caller->holding = caller->holding && active;
    }
}

bool ServiceCallers::hasSession(const std::string& name) const {
    const Caller* caller = find(name);
    return caller && caller->session;
}

void ServiceCallers::sessionActivity(const std::string& session, bool active) {
    for (Caller& caller : callers) {
        if (caller.session == session) {
            caller.sessionActive = active;
            caller.holding = caller.holding && active;
        }
    }
}

void ServiceCallers::setInversion(const std::string& name, bool inverting) {
    if (Caller* caller = find(name)) {
        caller->tapping = true;
        caller->inverting = inverting;
        caller->tapOrder = ++taps;
    }
}

void ServiceCallers::stopTap(const std::string& name) {
    if (Caller* caller = find(name)) {
        caller->tapping = false;
    }
}

void ServiceCallers::hold(const std::string& name, MonotonicMs now) {
    if (Caller* caller = find(name); caller && caller->sessionActive) {
        caller->holding = true;
        caller->lastKeepAlive = now;
    }
}

bool ServiceCallers::keepAlive(const std::string& name, MonotonicMs now) {
    Caller* caller = find(name);
    if (!caller || !caller->holding) {
        return false;
    }
    caller->lastKeepAlive = now;
    return true;
}

void ServiceCallers::release(const std::string& name) {
    if (Caller* caller = find(name)) {
        caller->holding = false;
    }
}

bool ServiceCallers::holds(const std::string& name) const {
    const Caller* caller = find(name);
    return caller && caller->holding;
}

void ServiceCallers::expireHolds(MonotonicMs now) {
    for (Caller& caller : callers) {
        if (caller.holding && now - caller.lastKeepAlive >= keepAliveLimitMs) {
            caller.holding = false;
        }
    }
}

std::optional<MonotonicMs> ServiceCallers::nextExpiry() const {
    std::optional<MonotonicMs> next;
    for (const Caller& caller : callers) {
        if (caller.holding) {
            const MonotonicMs at = caller.lastKeepAlive + keepAliveLimitMs;
            next = next ? std::min(*next, at) : at;
        }
    }
    return next;
}

InputEffect ServiceCallers::effect() const {
    InputEffect effect;
    std::uint64_t latest = 0;
    for (const Caller& caller : callers) {
        if (!caller.sessionActive) {
            continue;
        }
        if (caller.tapping && caller.tapOrder > latest) {
            latest = caller.tapOrder;
            effect.tap = true;
            effect.inverting = caller.inverting;
        }
        effect.hold = effect.hold || caller.holding;
    }
    return effect;
}

} // namespace tolvane

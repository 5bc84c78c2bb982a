#pragma once

#include <string>
#include <vector>

namespace tolvane::testing {

// One journal shared by every fake of a test, so a test can check the order of calls across
// interfaces and log lines together.
class Recorder {
public:
    void record(std::string call) { calls.push_back(std::move(call)); }
    void clear() { calls.clear(); }

    // The calls whose text starts with `prefix`, in order.
    std::vector<std::string> matching(const std::string& prefix) const;

    std::vector<std::string> calls;
};

} // namespace tolvane::testing

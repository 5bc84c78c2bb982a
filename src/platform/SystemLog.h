#pragma once

#include <string>

namespace tolvane::platform {

class SystemLog {
public:
    virtual ~SystemLog() = default;

    // One entry, the text as given.
    virtual void write(const std::string& text) = 0;
};

} // namespace tolvane::platform

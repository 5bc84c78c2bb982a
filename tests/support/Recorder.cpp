#include "support/Recorder.h"

namespace tolvane::testing {

std::vector<std::string> Recorder::matching(const std::string& prefix) const {
    std::vector<std::string> found;
    for (const std::string& call : calls) {
        if (call.rfind(prefix, 0) == 0) {
            found.push_back(call);
        }
    }
    return found;
}

} // namespace tolvane::testing

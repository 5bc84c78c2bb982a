// Where a user's files go: the XDG base folders, and the home folder they fall back on. A
// session started without HOME (some service managers, `env -i`, su without a login) must
// still find the account's own folders: Qt would take "/" then, which as root is the system's
// root and as a user a place nothing can be saved in.
#include "platform/linux/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace tolvane::oslinux {

namespace {

std::string absoluteVariable(const char* name) {
    const char* value = std::getenv(name);
    return value && value[0] == '/' ? std::string(value) : std::string();
}

std::string xdgFolder(const char* variable, const char* underHome) {
    const std::string fromEnvironment = absoluteVariable(variable);
    return fromEnvironment.empty() ? homeFolder() + underHome : fromEnvironment;
}

} // namespace

std::string accountHome() {
    std::string home;
    const long suggested = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(suggested > 0 ? std::size_t(suggested) : 16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found &&
        found->pw_dir && found->pw_dir[0] == '/') {
        home = found->pw_dir;
    }
    return home;
}

std::string homeFolder() {
    const std::string home = absoluteVariable("HOME");
    return home.empty() ? accountHome() : home;
}

std::string configHome() {
    return xdgFolder("XDG_CONFIG_HOME", "/.config");
}

std::string stateHome() {
    return xdgFolder("XDG_STATE_HOME", "/.local/state");
}

std::string logFile() {
    return stateHome() + "/Tolvane/Tolvane.log";
}

} // namespace tolvane::oslinux

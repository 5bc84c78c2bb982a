#include "kernel/GuestFixture.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tolvane::kerneltest {

FakeDeviceRoot::FakeDeviceRoot() {
    char pattern[] = "/tmp/tolvane-root.XXXXXX";
    root = ::mkdtemp(pattern);
    ::mkdir((root + "/input").c_str(), 0755);
}

FakeDeviceRoot::~FakeDeviceRoot() {
    const std::string command = "rm -rf " + root;
    [[maybe_unused]] int rc = std::system(command.c_str());
}

void FakeDeviceRoot::linkNode(const std::string& node, const std::string& target) {
    [[maybe_unused]] int rc = ::symlink(target.c_str(), (root + "/input/" + node).c_str());
}

void FakeDeviceRoot::linkUinput() {
    [[maybe_unused]] int rc = ::symlink("/dev/uinput", (root + "/uinput").c_str());
}

void FakeDeviceRoot::addBogusNode(const std::string& node) {
    const int fd = ::open((root + "/input/" + node).c_str(), O_CREAT | O_WRONLY, 0644);
    ::close(fd);
}

void FakeDeviceRoot::replaceNode(const std::string& node, const std::string& target) {
    const std::string staging = root + "/input/staging-" + node;
    [[maybe_unused]] int rc = ::symlink(target.c_str(), staging.c_str());
    ::rename(staging.c_str(), (root + "/input/" + node).c_str());
}

void FakeDeviceRoot::removeNode(const std::string& node) {
    ::unlink((root + "/input/" + node).c_str());
}

} // namespace tolvane::kerneltest

// GNOME keeps the mouse's natural scrolling in org.gnome.desktop.peripherals.mouse, and GIO's
// `gsettings get` prints it as "true" or "false", or fails when the schema or the key is not
// installed: then the setting is absent.
//
// The tool reads it in a process of its own, started with posix_spawn: GIO's settings in this
// process would bring in the dconf backend, GDBus and three threads for the life of the
// program, and GIO's libraries would stay resident, together about 3 MB for one value read
// once at start. A forked copy of this process would cost the start more than the tool does,
// in copied pages. The thing easy to get wrong: an answer that never comes must not hold up
// the start, so it is awaited for a second at most.
#include "platform/linux/GSettingsScrollSetting.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

extern char** environ;

namespace tolvane::oslinux {

namespace {
constexpr int answerWaitMs = 1000;
} // namespace

GSettingsScrollSetting::GSettingsScrollSetting() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    char* const argv[] = {const_cast<char*>("gsettings"), const_cast<char*>("get"),
                          const_cast<char*>("org.gnome.desktop.peripherals.mouse"),
                          const_cast<char*>("natural-scroll"), nullptr};
    if (::posix_spawnp(&reader, "gsettings", &actions, nullptr, argv, environ) != 0) {
        reader = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    if (reader < 0) {
        ::close(ends[0]);
        return;
    }
    output = ends[0];
}

GSettingsScrollSetting::~GSettingsScrollSetting() {
    endReader();
}

std::optional<bool> GSettingsScrollSetting::naturalScroll() {
    if (asked) {
        return value;
    }
    asked = true;
    std::string text;
    bool ended = false; // the tool closed its output: it is exiting
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(answerWaitMs);
    while (output >= 0 && !ended) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd ready{output, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&ready, 1, int(left.count())) <= 0) {
            break;
        }
        char buffer[64];
        const ssize_t got = ::read(output, buffer, sizeof buffer);
        ended = got <= 0;
        text.append(buffer, got > 0 ? std::size_t(got) : 0);
    }
    int status = -1;
    if (ended && ::waitpid(reader, &status, 0) == reader) {
        reader = -1;
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0 && (text == "true\n" || text == "false\n")) {
        value = text == "true\n";
    }
    endReader();
    return value;
}

void GSettingsScrollSetting::endReader() {
    if (output >= 0) {
        ::close(output);
        output = -1;
    }
    if (reader > 0) {
        ::kill(reader, SIGKILL); // harmless when it has already ended
        ::waitpid(reader, nullptr, 0);
        reader = -1;
    }
}

} // namespace tolvane::oslinux

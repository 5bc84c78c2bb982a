#pragma once

#include <string>

namespace tolvane::oslinux {

// The user's home: $HOME when it is an absolute path, else the account's home from the
// password database; empty when neither is known.
std::string homeFolder();

// $XDG_CONFIG_HOME when it is an absolute path, else ~/.config.
std::string configHome();

// $XDG_STATE_HOME when it is an absolute path, else ~/.local/state.
std::string stateHome();

// Tolvane's log file, in stateHome(): written by the program and by its input watchdog.
std::string logFile();

} // namespace tolvane::oslinux

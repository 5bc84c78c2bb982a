#pragma once

#include <string>

namespace tolvane::oslinux {

// The account's home from the password database, whatever $HOME says; empty when unknown.
std::string accountHome();

// The user's home: $HOME when it is an absolute path, else accountHome().
std::string homeFolder();

// $XDG_CONFIG_HOME when it is an absolute path, else ~/.config.
std::string configHome();

// $XDG_STATE_HOME when it is an absolute path, else ~/.local/state.
std::string stateHome();

// Tolvane's log file, in stateHome().
std::string logFile();

} // namespace tolvane::oslinux

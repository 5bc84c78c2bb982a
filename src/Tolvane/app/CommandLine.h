#pragma once

#include <cstdio>
#include <optional>

namespace tolvane::CommandLine {

// Answers --help and --version, and refuses anything else on the command line, before the
// program starts: nothing here opens a file, takes the single-instance lock or needs a
// display. Returns the exit status when the process should end now, after printing the answer
// to `out` or the error to `err`; nothing when the program should start.
std::optional<int> answer(int argc, const char* const* argv, std::FILE* out = stdout,
                          std::FILE* err = stderr);

} // namespace tolvane::CommandLine

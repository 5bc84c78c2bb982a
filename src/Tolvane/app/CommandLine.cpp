#include "Tolvane/app/CommandLine.h"

#include <string_view>

namespace tolvane::CommandLine {

namespace {

constexpr const char* usage =
    "Usage: tolvane [-h | --help | --version]\n"
    "\n"
    "Tolvane lives in the tray of the desktop's panel and has no window of its own.\n"
    "The menu of its tray icon switches the scroll direction of the mouse wheel,\n"
    "locks the keyboard for cleaning and shows CPU, memory and storage gauges.\n"
    "\n"
    "  -h, --help     show this help and exit\n"
    "      --version  show the version and exit\n"
    "\n"
    "See tolvane(1) for the input service it uses and the files it keeps.\n";

constexpr const char* version = "tolvane " TOLVANE_VERSION "\n"
                                "License GPLv3+: GNU GPL version 3 or later.\n"
                                "This is free software: you are free to change and redistribute "
                                "it.\nThere is NO WARRANTY, to the extent permitted by law.\n";

} // namespace

std::optional<int> answer(int argc, const char* const* argv, std::FILE* out, std::FILE* err) {
    if (argc < 2) {
        return std::nullopt;
    }
    const std::string_view first = argv[1];
    if (argc == 2 && (first == "--help" || first == "-h")) {
        std::fputs(usage, out);
        return 0;
    }
    if (argc == 2 && first == "--version") {
        std::fputs(version, out);
        return 0;
    }
    const std::string_view wrong = (first == "--help" || first == "-h" || first == "--version")
                                       ? std::string_view(argv[2])
                                       : first;
    std::fprintf(err, "tolvane: %s '%.*s'\nTry 'tolvane --help' for more information.\n",
                 wrong.starts_with('-') ? "unknown option" : "unexpected argument",
                 int(wrong.size()), wrong.data());
    return 2;
}

} // namespace tolvane::CommandLine

#include "TolvaneCore/AutostartEntry.h"

#include <optional>

namespace tolvane {

namespace {

constexpr std::string_view markerKey = "X-Tolvane-Autostart";

std::string_view trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(" \t\r");
    return text.substr(first, last - first + 1);
}

// A desktop entry's string values escape a backslash as \\ and control characters as \n, \t,
// \r; the Exec value goes through this before its own quoting.
std::string escapeStringValue(std::string_view value) {
    std::string escaped;
    for (char c : value) {
        switch (c) {
        case '\\':
            escaped += "\\\\";
            break;
        case '\n':
            escaped += "\\n";
            break;
        case '\t':
            escaped += "\\t";
            break;
        case '\r':
            escaped += "\\r";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

std::string unescapeStringValue(std::string_view value) {
    std::string plain;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            plain += value[i];
            continue;
        }
        switch (value[++i]) {
        case 's':
            plain += ' ';
            break;
        case 'n':
            plain += '\n';
            break;
        case 't':
            plain += '\t';
            break;
        case 'r':
            plain += '\r';
            break;
        default:
            plain += value[i];
        }
    }
    return plain;
}

// The first argument of an Exec value as the file holds it, unescaped and unquoted.
std::string firstExecArgument(std::string_view value) {
    const std::string unescaped = unescapeStringValue(trim(value));
    const std::string_view exec = unescaped;
    std::string argument;
    if (!exec.empty() && exec.front() == '"') {
        for (std::size_t i = 1; i < exec.size() && exec[i] != '"'; ++i) {
            if (exec[i] == '\\' && i + 1 < exec.size()) {
                ++i;
            }
            argument += exec[i];
        }
    } else {
        argument = exec.substr(0, exec.find_first_of(" \t"));
    }
    std::string literal;
    for (std::size_t i = 0; i < argument.size(); ++i) {
        literal += argument[i];
        if (argument[i] == '%' && i + 1 < argument.size() && argument[i + 1] == '%') {
            ++i;
        }
    }
    return literal;
}

std::string_view baseName(std::string_view path) {
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

} // namespace

std::string quoteExecArgument(std::string_view path) {
    const bool plain = path.find_first_of(" \t\n\"'\\><~|&;$*?#()`=%") == std::string_view::npos;
    if (plain && !path.empty()) {
        return std::string(path);
    }
    std::string quoted = "\"";
    for (char c : path) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
        if (c == '%') {
            quoted += '%';
        }
    }
    quoted += '"';
    return quoted;
}

std::string autostartEntryText(std::string_view executablePath) {
    std::string text = "[Desktop Entry]\n"
                       "Type=Application\n"
                       "Name=Tolvane\n"
                       "Comment=Scroll direction switcher and keyboard cleaning lock\n"
                       "Icon=tolvane\n"
                       "Exec=";
    text += escapeStringValue(quoteExecArgument(executablePath));
    // Where the program is gone, as after the package's removal, the session skips the entry.
    text += "\nTryExec=";
    text += escapeStringValue(executablePath);
    text += "\nTerminal=false\nNoDisplay=true\n";
    text += markerKey;
    text += "=true\n";
    return text;
}

AutostartEntryState autostartEntryState(std::string_view content) {
    bool inMainGroup = false;
    bool sawMainGroup = false;
    bool hidden = false;
    bool marked = false;
    std::optional<std::string> exec;
    while (!content.empty()) {
        const auto end = content.find('\n');
        const std::string_view line = trim(content.substr(0, end));
        content = end == std::string_view::npos ? std::string_view{} : content.substr(end + 1);
        if (line.empty() || line.front() == '#') {
            continue;
        }
        if (line.front() == '[') {
            inMainGroup = line == "[Desktop Entry]" && !sawMainGroup;
            sawMainGroup = sawMainGroup || inMainGroup;
            continue;
        }
        const auto equals = line.find('=');
        if (!inMainGroup || equals == std::string_view::npos) {
            continue;
        }
        const std::string_view key = trim(line.substr(0, equals));
        const std::string_view value = trim(line.substr(equals + 1));
        if (key == "Hidden") {
            hidden = value == "true";
        } else if (key == markerKey) {
            marked = value == "true";
        } else if (key == "Exec") {
            exec = firstExecArgument(value);
        }
    }
    const bool tolvanes = marked || (exec && baseName(*exec) == "tolvane");
    if (!sawMainGroup || !tolvanes) {
        return AutostartEntryState::foreign;
    }
    return hidden ? AutostartEntryState::hidden : AutostartEntryState::enabled;
}

} // namespace tolvane

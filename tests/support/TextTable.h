#pragma once

// Test data kept as plain text in the folder the build names in TOLVANE_TABLES. A table has
// one row a line, its cells parted by '|' and trimmed of blanks; blank lines and lines that
// start with '#' are skipped. In a cell \n \r \t \0 \xHH \| \# and "\ " (a blank kept at the
// edge) stand for what they say, any other backslash for itself; a cell "@NAME" is the whole
// file NAME of the folder, for samples of many lines.
#include "TolvaneCore/EventCodes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace tolvane::testing {

inline std::string tableFile(const std::string& name) {
    std::ifstream in(TOLVANE_TABLES "/" + name, std::ios::binary);
    EXPECT_TRUE(in) << "cannot read " TOLVANE_TABLES "/" << name;
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

struct TableRow {
    std::string where; // "name.txt:12", for failure messages
    std::vector<std::string> cells;
    const std::string& operator[](std::size_t i) const { return cells.at(i); }
};

// The rows of table `name`, each of `columns` cells; a row of another width fails the test.
inline std::vector<TableRow> readTable(const std::string& name, std::size_t columns) {
    constexpr std::string_view escapes = "nrt0|# ", meanings{"\n\r\t\0|# ", 7};
    const auto hex = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
    std::vector<TableRow> rows;
    std::istringstream lines(tableFile(name));
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        const std::size_t first = line.find_first_not_of(' ');
        if (first == std::string::npos || line[first] == '#') {
            continue;
        }
        TableRow row{name + ":" + std::to_string(number), {}};
        std::string cell, next;
        std::size_t kept = 0; // the cell's length without blanks at its end
        for (std::size_t i = 0; i <= line.size(); ++i) {
            const char c = i < line.size() ? line[i] : '|';
            next = line.substr(std::min(i + 1, line.size()), 3) + std::string(3, '\1');
            if (c == '|') {
                cell.resize(kept);
                row.cells.push_back(cell.starts_with('@') ? tableFile(cell.substr(1)) : cell);
                cell.clear();
                kept = 0;
                continue;
            }
            if (c == '\\' && escapes.find(next[0]) != escapes.npos) {
                cell += meanings[escapes.find(next[0])];
                i += 1;
            } else if (c == '\\' && next[0] == 'x' && hex(next[1]) && hex(next[2])) {
                cell += char(std::stoi(next.substr(1, 2), nullptr, 16));
                i += 3;
            } else if (c != ' ' || !cell.empty()) {
                cell += c;
            }
            kept = c == ' ' ? kept : cell.size();
        }
        if (row.cells.size() == columns) {
            rows.push_back(std::move(row));
        } else {
            ADD_FAILURE() << row.where << ": " << row.cells.size() << " cells, not " << columns;
        }
    }
    EXPECT_FALSE(rows.empty()) << name;
    return rows;
}

// Cell `column` of each row of table `name` of `columns` cells: a list, as of a menu's items.
inline std::vector<std::string> readLines(const std::string& name, std::size_t column = 0,
                                          std::size_t columns = 1) {
    std::vector<std::string> lines;
    for (const TableRow& row : readTable(name, columns)) {
        lines.push_back(row[column]);
    }
    return lines;
}

// The number the kernel gives an event type or code `name` (REL_WHEEL).
inline std::uint16_t codeOf(const std::string& name) {
    const std::optional<std::uint16_t> value = code::named(name);
    EXPECT_TRUE(value) << "no code named " << name;
    return value.value_or(0);
}

} // namespace tolvane::testing

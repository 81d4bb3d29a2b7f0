// Reader for the code tables in tables/ (tab-separated, `#` comment lines, one header line).
#pragma once

#include <map>
#include <string>
#include <vector>

namespace kvt::test {

struct TsvRow {
    std::map<std::string, std::string> cells;
    const std::string& operator[](const std::string& column) const { return cells.at(column); }
    int num(const std::string& column) const { return std::stoi(cells.at(column)); }
};

// Rows of `file` in the project's tables/ folder (`#` lines skipped); fails the current test, naming
// the file, when it is missing or has no rows.
std::vector<TsvRow> read_table(const std::string& file);

// A bit string such as "0010" as its numeric value (first bit most significant).
unsigned bits_value(const std::string& code);

}  // namespace kvt::test

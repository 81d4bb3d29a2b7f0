// Reader for the shared code tables (tab-separated, one header line).
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

// Rows of `file` in the shared tables folder; fails the current test when it cannot be read.
std::vector<TsvRow> read_table(const std::string& file);

// A bit string such as "0010" as its numeric value (first bit most significant).
unsigned bits_value(const std::string& code);

}  // namespace kvt::test

#include "tsv.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "checkasm.h"

namespace kvt::test {
namespace {

std::vector<std::string> split_tabs(const std::string& line) {
    std::vector<std::string> out;
    std::string cell;
    std::istringstream is(line);
    while (std::getline(is, cell, '\t')) out.push_back(cell);
    return out;
}

}  // namespace

const std::string& TsvRow::operator[](const std::string& column) const {
    const auto it = cells.find(column);
    if (it == cells.end()) throw std::out_of_range("no column " + column);
    return it->second;
}

int TsvRow::num(const std::string& column) const { return std::stoi((*this)[column]); }

std::vector<TsvRow> read_table(const std::string& file) {
    std::ifstream in(table_path(file));
    EXPECT_TRUE(in.good()) << "cannot open " << table_path(file);
    std::string line;
    std::vector<TsvRow> rows;
    if (!std::getline(in, line)) return rows;
    const std::vector<std::string> header = split_tabs(line);
    while (std::getline(in, line)) {
        if (line.empty()) continue;
        const std::vector<std::string> cells = split_tabs(line);
        TsvRow row;
        for (size_t i = 0; i < header.size() && i < cells.size(); ++i) row.cells[header[i]] = cells[i];
        rows.push_back(std::move(row));
    }
    return rows;
}

unsigned bits_value(const std::string& code) {
    unsigned v = 0;
    for (char c : code) v = v * 2 + unsigned(c == '1');
    return v;
}

}  // namespace kvt::test

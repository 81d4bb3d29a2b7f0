#include "tsv.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace kvt::test {

namespace {

// The next line that is neither empty nor a `#` comment (the provenance line of each file).
bool next_data_line(std::istream& in, std::string& line) {
    while (std::getline(in, line))
        if (!line.empty() && line[0] != '#') return true;
    return false;
}

std::vector<std::string> split_tabs(const std::string& line) {
    std::vector<std::string> cells;
    std::string cell;
    for (std::istringstream is(line); std::getline(is, cell, '\t');) cells.push_back(cell);
    return cells;
}

}  // namespace

std::vector<TsvRow> read_table(const std::string& file) {
    const std::string path = std::string(KVT_TABLES_DIR) + "/" + file;
    std::ifstream in(path);
    std::string line;
    if (!in.good() || !next_data_line(in, line)) {
        ADD_FAILURE() << "cannot read the code table " << path;
        return {};
    }
    const std::vector<std::string> header = split_tabs(line);
    std::vector<TsvRow> rows;
    while (next_data_line(in, line)) {
        const std::vector<std::string> cells = split_tabs(line);
        rows.emplace_back();
        for (size_t i = 0; i < header.size() && i < cells.size(); ++i)
            rows.back().cells[header[i]] = cells[i];
    }
    if (rows.empty()) ADD_FAILURE() << "no rows in the code table " << path;
    return rows;
}

unsigned bits_value(const std::string& code) {
    unsigned v = 0;
    for (char c : code) v = v * 2 + unsigned(c == '1');
    return v;
}

}  // namespace kvt::test

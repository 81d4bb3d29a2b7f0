#include "tsv.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace kvt::test {

std::vector<TsvRow> read_table(const std::string& file) {
    std::ifstream in(std::string(KVT_TABLES_DIR) + "/" + file);
    EXPECT_TRUE(in.good()) << "cannot open " << file;
    std::string line, cell;
    std::getline(in, line);
    std::vector<std::string> header;
    for (std::istringstream is(line); std::getline(is, cell, '\t');) header.push_back(cell);
    std::vector<TsvRow> rows;
    while (std::getline(in, line)) {
        if (line.empty()) continue;
        std::istringstream is(line);
        rows.emplace_back();
        for (size_t i = 0; i < header.size() && std::getline(is, cell, '\t'); ++i) rows.back().cells[header[i]] = cell;
    }
    return rows;
}

unsigned bits_value(const std::string& code) {
    unsigned v = 0;
    for (char c : code) v = v * 2 + unsigned(c == '1');
    return v;
}

}  // namespace kvt::test

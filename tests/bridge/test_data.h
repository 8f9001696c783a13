#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace orlocal {

/// The rows of a table in the tests' folder: a number, a tab, a text. Lines that begin with "#" are comments.
inline std::vector<std::pair<std::int32_t, std::string>> numberedRows(const std::string& fileName) {
  std::vector<std::pair<std::int32_t, std::string>> rows;
  std::ifstream file(std::string(ORLOCAL_TEST_DATA) + "/" + fileName);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.front() == '#') { continue; }
    const auto tab = line.find('\t');
    rows.emplace_back(std::stoi(line.substr(0, tab)), line.substr(tab + 1));
  }
  return rows;
}

}  // namespace orlocal

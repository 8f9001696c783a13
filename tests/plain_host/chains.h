#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"

namespace orlocal::host {

/// A call, its fields parted by tabs, and how it is answered once the store has broken: a code of four digits, or a
/// result.
struct Ask {
  std::string call;
  std::string unreadable;
  std::string unwritable;
  std::string damaged;
};

/// Calls in a sound store, and what is asked when it has broken.
struct Chain {
  std::string name;
  bool readsOnly = false;
  std::vector<std::string> prelude;
  std::vector<Ask> asks;
};

inline std::string callLine(std::string_view words) {
  std::string line;
  for (std::size_t at = 0; at <= words.size();) {
    const auto end = std::min(words.find('|', at), words.size());
    if (at != 0) { line += '\t'; }
    line += trimmed(words.substr(at, end - at), " ");
    at = end + 1;
  }
  return line;
}

inline std::vector<Chain> chainsIn(const std::string& file) {
  std::ifstream stream(file);
  std::vector<Chain> chains;
  for (std::string line; std::getline(stream, line);) {
    const std::string_view text = line;
    if (text.empty() || text.starts_with('#')) { continue; }
    if (text.starts_with("chain ")) {
      chains.push_back({.name = line.substr(6), .prelude = {}, .asks = {}});
    } else if (text == "reads only") {
      chains.back().readsOnly = true;
    } else if (text.starts_with("do ")) {
      chains.back().prelude.push_back(callLine(text.substr(3)));
    } else {
      const auto arrow = text.find("=>");
      std::vector<std::string> answers;
      for (auto at = arrow + 2; at <= text.size();) {
        const auto end = std::min(text.find(';', at), text.size());
        answers.emplace_back(trimmed(text.substr(at, end - at), " "));
        at = end + 1;
      }
      answers.resize(3, answers.front());
      chains.back().asks.push_back({callLine(text.substr(4, arrow - 4)), answers[0], answers[1], answers[2]});
    }
  }
  return chains;
}

}  // namespace orlocal::host

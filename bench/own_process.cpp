#include "own_process.h"

#include <array>
#include <cstdio>
#include <stdexcept>

#include <fmt/format.h>

namespace orlocal::bench {

std::string ownProcess(const Setting& setting, const std::string& words, const std::string& under) {
  const std::string command = fmt::format("{} '{}' '{}' '{}' {}", under, setting.program.string(),
                                          setting.plugin.string(), setting.folder.string(), words);
  std::FILE* child = popen(command.c_str(), "r");
  if (child == nullptr) { throw std::runtime_error("cannot run this program anew"); }
  std::string printed;
  std::array<char, 256> piece;
  while (std::fgets(piece.data(), piece.size(), child) != nullptr) { printed += piece.data(); }
  if (pclose(child) != 0) { throw std::runtime_error("this program, run anew, failed: " + command); }
  return printed;
}

}  // namespace orlocal::bench

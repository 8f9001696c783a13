#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace orlocal::bench {

/// Where and how much to measure.
struct Setting {
  std::filesystem::path program;   ///< this one
  std::filesystem::path plugin;    ///< Orlocal.fmx
  std::filesystem::path folder;    ///< for stores and floors; emptied before
  std::vector<std::size_t> sizes;  ///< of stores, in events; rising
  int rounds = 7;
  bool smoke = false;
  std::string hostileOnly;  ///< of the hostile inputs: those whose name has this in it

  /// What takes long where there is so much is measured less often.
  int roundsFor(std::size_t events) const { return events < 500'000 ? rounds : (rounds + 2) / 3; }
  int fewRoundsFor(std::size_t events) const { return events < 500'000 ? (rounds + 1) / 2 : 1; }
};

}  // namespace orlocal::bench

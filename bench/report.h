#pragma once

#include <string>

#include "results.h"

namespace orlocal::bench {

/// Collects what is found out, and prints it as it comes.
class Report {
 public:
  Report();

  /// Both sides of a comparison must have worked on as many rows; it is said, and remembered, when they did not.
  void add(Row row);
  void add(InstructionCount count);
  void note(std::string line);
  /// Prints a line that belongs to no row.
  void print(const std::string& text) const;

  const Results& results() const { return m_results; }
  bool comparedLike() const { return m_comparedLike; }

 private:
  Results m_results;
  bool m_comparedLike = true;
};

}  // namespace orlocal::bench

#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string>

namespace orlocal::host {

/// A line on a terminal that says how far a longer piece of work has come, and goes when it is done. Work of less than
/// a second shows none, and so does work whose output goes elsewhere.
class ProgressLine {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  ProgressLine(
      std::ostream& terminal, bool onTerminal, std::string what,
      Clock clock = [] { return std::chrono::steady_clock::now(); });
  ~ProgressLine() { clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  /// Shows `text` at once; for a step that cannot say how far it is and is known to take long.
  void announce(const std::string& text);
  void update(std::size_t done, std::size_t all);
  /// The same for work that says in words what it does.
  void tell(const std::string& text);
  void clear();

 private:
  bool isTime();
  void show(const std::string& text);

  std::ostream& m_terminal;
  bool m_on;
  std::string m_what;
  Clock m_clock;
  std::chrono::steady_clock::time_point m_next;  ///< nothing is shown before
  bool m_shown = false;
};

}  // namespace orlocal::host

#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "host/calc/function_library.h"
#include "host/calc/outcome.h"
#include "host/console/line_source.h"

namespace orlocal::host {

/// What the console talks to.
struct ConsoleParts {
  LineSource& lines;
  std::ostream& out;
  bool colors = false;  ///< the output is a terminal: types are dimmed, control characters made harmless
  const calc::FunctionLibrary& library;
  std::function<Result<calc::Outcome>(std::string_view)> evaluate;
  std::function<std::vector<std::string>()> variables;  ///< the session's, for `variables`
  /// Why the plug-in's last call failed; none when it did not, or nobody knows.
  std::function<std::optional<std::string>()> lastError = [] { return std::nullopt; };
  /// Runs a command of the program, given as its words stand behind the dot; true when it did what it should.
  std::function<bool(std::string_view)> command = [](std::string_view) { return false; };
};

/// Reads calculations and shows each result with its type, until `quit` or the end of the input.
///
/// A calculation goes on over several lines while a bracket is open. Besides calculations it knows the words `help`,
/// `help NAME`, `variables` and `quit` (or `exit`), and the commands of the program with a dot before them.
class Console {
 public:
  explicit Console(ConsoleParts parts) : m_parts(std::move(parts)) {}

  /// True when every calculation could be read and done.
  bool run();

 private:
  void obey(const std::string& entry);
  void help(const std::string& name);
  bool helpOnFunction(const std::string& name);
  bool helpOnKeyword(const std::string& name);
  void show(const Result<calc::Outcome>& outcome, const std::string& entry);
  std::string dim(const std::string& text) const;

  ConsoleParts m_parts;
  bool m_failed = false;
};

}  // namespace orlocal::host

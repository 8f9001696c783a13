#pragma once

#include <iosfwd>
#include <string>

#include <nlohmann/json.hpp>

#include "host/commands/describing/row_fields.h"

namespace CLI {
class App;
}

namespace orlocal::host {

/// The option `--format` of a command that prints a list.
class FormatOption {
 public:
  explicit FormatOption(RowKind kind) : m_shape(shapeOf(kind)) {}
  FormatOption(const FormatOption&) = delete;
  FormatOption& operator=(const FormatOption&) = delete;

  /// Gives it to `command`, which keeps its address. What the person writes is judged before the command runs, and is
  /// not taken together with `--json` or with a word under the command.
  void addTo(CLI::App& command);

  bool isGiven() const { return !m_text.empty(); }
  /// A line for each of these rows, as `--json` has them.
  void print(const nlohmann::json& rows, std::ostream& out) const;

 private:
  RowShape m_shape;
  std::string m_text;
};

}  // namespace orlocal::host

#include "host/commands/describing/format_option.h"

#include <ostream>

#include <CLI/CLI.hpp>

#include "base/translation.h"
#include "host/commands/describing/line_format.h"

namespace orlocal::host {

void FormatOption::addTo(CLI::App& command) {
  const auto objection = [&command, shape = m_shape](const std::string& text) -> std::string {
    if (text.empty()) { return tr("Write how a line is to look, such as \"{{title}}\""); }
    // Words under a command take its options on.
    if (!command.get_subcommands().empty()) {
      return tr("This is for lists, and not for `{} {}`", command.get_name(),
                command.get_subcommands().front()->get_name());
    }
    const auto format = LineFormat::read(text, shape);
    return format ? "" : format.error().message;
  };
  command
      .add_option("--format", m_text,
                  "A line of your own for each: '{start:%H:%M} {title:20}'; the fields are those of --json")
      ->type_name("TEMPLATE")
      ->check(objection)
      ->excludes(command.get_parent()->get_option("--json"));
}

void FormatOption::print(const nlohmann::json& rows, std::ostream& out) const {
  const auto format = LineFormat::read(m_text, m_shape);
  if (!format) { return; }
  for (const nlohmann::json& row : rows) { out << format->line(row); }
}

}  // namespace orlocal::host

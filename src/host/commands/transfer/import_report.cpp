#include "host/commands/transfer/import_report.h"

#include <algorithm>
#include <ostream>

#include <fmt/format.h>

#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {
namespace {

/// A feed may say the same about each of its ten thousand items.
constexpr std::size_t kMostWarnings = 20;

nlohmann::json asJson(const std::vector<store::Problem>& problems) {
  nlohmann::json list = nlohmann::json::array();
  for (const auto& problem : problems) {
    list.push_back({{"line", problem.line}, {"uid", problem.uid}, {"message", problem.message}});
  }
  return list;
}

std::string placed(const std::string& file, const store::Problem& problem, const char* mark) {
  return printable(fmt::format("{}:{}: {}{}", file, problem.line, mark, problem.message));
}

}  // namespace

void ImportReports::add(const std::string& file, const Result<store::ImportReport>& outcome) {
  m_failed = m_failed || !outcome || outcome->refused > 0;
  if (!outcome) {
    m_list.push_back({{"file", file}, {"error", outcome.error().message}});
    m_context.streams.err << "orlocal: " << printable(outcome.error().message) << '\n';
    return;
  }
  m_list.push_back({{"file", file},
                    {"new", outcome->added},
                    {"updated", outcome->updated},
                    {"unchanged", outcome->unchanged},
                    {"refused", outcome->refused},
                    {"problems", asJson(outcome->problems)},
                    {"warnings", asJson(outcome->warnings)}});
  if (!m_context.options.json) { print(file, *outcome); }
}

void ImportReports::print(const std::string& file, const store::ImportReport& report) {
  auto& out = m_context.streams.out;
  auto& err = m_context.streams.err;
  for (const auto& problem : report.problems) { err << placed(file, problem, "refused: ") << '\n'; }
  const std::size_t shown = std::min(report.warnings.size(), kMostWarnings);
  for (std::size_t i = 0; i < shown; ++i) { err << placed(file, report.warnings[i], "warning: ") << '\n'; }
  if (report.warnings.size() > shown) {
    err << fmt::format("{}: {} more warnings; --json lists them all\n", printable(file),
                       report.warnings.size() - shown);
  }
  err.flush();
  out << fmt::format("{}: {} new, {} updated, {} unchanged, {} refused\n", printable(file), report.added,
                     report.updated, report.unchanged, report.refused);
  out.flush();
}

ExitStatus ImportReports::finish() {
  if (m_context.options.json) { printJson(m_list, m_context.streams.out); }
  return m_failed ? ExitStatus::kFailed : ExitStatus::kDone;
}

}  // namespace orlocal::host

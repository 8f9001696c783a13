#include "host/commands/transfer/import_report.h"

#include <algorithm>
#include <ostream>
#include <string_view>

#include <fmt/format.h>

#include "base/translation.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {
namespace {

/// A feed may say the same about each of its ten thousand items.
constexpr std::size_t kMostWarnings = 20;
constexpr std::size_t kOutcomeWidth = 8;

constexpr const char* kOutcomes[] = {translatable("new"), translatable("updated"), translatable("unchanged"),
                                     translatable("removed")};

const char* wordOf(store::ImportedItem::Outcome outcome) { return kOutcomes[static_cast<std::size_t>(outcome)]; }

nlohmann::json asJson(const std::vector<store::Problem>& problems) {
  nlohmann::json list = nlohmann::json::array();
  for (const auto& problem : problems) {
    list.push_back(
        {{"line", problem.line}, {"uid", problem.uid}, {"item", problem.item}, {"message", problem.message}});
  }
  return list;
}

nlohmann::json asJson(const std::vector<store::ImportedItem>& items) {
  nlohmann::json list = nlohmann::json::array();
  for (const auto& item : items) {
    list.push_back({{"line", item.line}, {"uid", item.uid}, {"item", item.item}, {"outcome", wordOf(item.outcome)}});
  }
  return list;
}

/// People know an item by its title and day; one that tells neither by its UID.
std::string nameOf(const std::string& item, const std::string& uid) {
  return item.empty() && !uid.empty() ? "UID " + uid : item;
}

std::string placed(const std::string& file, const store::Problem& problem, const std::string& mark) {
  const std::string name = nameOf(problem.item, problem.uid);
  return printable(
      fmt::format("{}:{}: {}{}{}{}", file, problem.line, mark, name, name.empty() ? "" : ": ", problem.message));
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
                    {"warnings", asJson(outcome->warnings)},
                    {"notes", asJson(outcome->notes)}});
  if (m_dryRun) { m_list.back()["items"] = asJson(outcome->items); }
  if (!m_context.options.json) { print(file, *outcome); }
}

void ImportReports::passOver(const std::string& file, const std::string& looksLike) {
  m_list.push_back({{"file", file}, {"passedOver", looksLike}});
  if (!m_context.options.json) {
    m_context.streams.err << printable(tr("{}: passed over: it looks like {}", file, looksLike)) << '\n';
  }
}

void ImportReports::removed(const std::vector<store::ImportedItem>& items) {
  m_list.push_back({{"removed", items.size()}, {"items", asJson(items)}});
  if (m_context.options.json) { return; }
  if (m_dryRun) { printItems(items); }
  m_context.streams.out << tr("removed: {}\n", items.size());
}

void ImportReports::nothingRemoved(const std::string& why) {
  m_list.push_back({{"removed", 0}, {"error", why}});
  m_failed = true;
  m_context.streams.err << "orlocal: " << why << '\n';
}

void ImportReports::printItems(const std::vector<store::ImportedItem>& items) {
  for (const auto& item : items) {
    if (item.outcome == store::ImportedItem::Outcome::kUnchanged) { continue; }
    m_context.streams.out << printable("  " + padded(translated(wordOf(item.outcome)), kOutcomeWidth) + " " +
                                       nameOf(item.item, item.uid))
                          << '\n';
  }
}

void ImportReports::print(const std::string& file, const store::ImportReport& report) {
  auto& out = m_context.streams.out;
  auto& err = m_context.streams.err;
  for (const auto& problem : report.problems) { err << placed(file, problem, tr("refused: ")) << '\n'; }
  for (const auto& note : report.notes) { err << placed(file, note, "") << '\n'; }
  const std::size_t shown = std::min(report.warnings.size(), kMostWarnings);
  for (std::size_t i = 0; i < shown; ++i) { err << placed(file, report.warnings[i], tr("warning: ")) << '\n'; }
  if (report.warnings.size() > shown) {
    err << tr("{}: {} more warnings; --json lists them all\n", printable(file), report.warnings.size() - shown);
  }
  if (report.refused > 0 && !report.isMessage) {
    err << tr("{}: what was refused can be put right in the file; import it again then\n", printable(file));
  }
  err.flush();
  if (m_dryRun) { printItems(report.items); }
  out << tr("{}: {} new, {} updated, {} unchanged, {} refused{}\n", printable(file), report.added, report.updated,
            report.unchanged, report.refused, m_dryRun ? tr(" (nothing was written)") : "");
  out.flush();
}

ExitStatus ImportReports::finish() {
  if (m_context.options.json) { printJson(m_list, m_context.streams.out); }
  return m_failed ? ExitStatus::kFailed : ExitStatus::kDone;
}

}  // namespace orlocal::host

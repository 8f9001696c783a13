#include "tables.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <stdexcept>

#include <fmt/format.h>

#include "files.h"

namespace orlocal::bench {
namespace {

constexpr std::string_view kBegin = "<!-- results begin -->\n", kEnd = "<!-- results end -->";

std::string spreadText(Unit unit, const Spread& spread) {
  if (spread.low == spread.high) { return amountText(unit, spread.median); }
  return fmt::format("{} ({} to {})", amountText(unit, spread.median), amountText(unit, spread.low),
                     amountText(unit, spread.high));
}

std::string aimText(const Row& row) {
  if (row.aim <= 0) { return ""; }
  const double reached = row.floors.empty() ? row.subject.amount.median : row.floors.front().ratio.median;
  return fmt::format("{:g}{}", row.aim, reached <= row.aim ? "" : " (missed)");
}

std::string grouped(std::size_t number) {
  std::string text = std::to_string(number);
  for (auto at = static_cast<std::ptrdiff_t>(text.size()) - 3; at > 0; at -= 3) {
    text.insert(static_cast<std::size_t>(at), ",");
  }
  return text;
}

/// Rows of one name together, in the order in which their names came.
std::vector<Row> byName(std::vector<Row> rows) {
  std::vector<std::string> names;
  for (const Row& row : rows) { names.push_back(row.name); }
  const auto place = [&](const Row& row) { return std::find(names.begin(), names.end(), row.name); };
  std::stable_sort(rows.begin(), rows.end(), [&](const Row& a, const Row& b) { return place(a) < place(b); });
  return rows;
}

std::string growthTable(const std::vector<Growth>& growths) {
  std::set<std::size_t> sizes;
  for (const Growth& growth : growths) {
    for (const Row& row : growth.rows) { sizes.insert(row.events); }
  }
  std::string head = "| what | who |", rule = "|---|---|", lines;
  for (const std::size_t size : sizes) {
    head += fmt::format(" {} |", grouped(size));
    rule += "---|";
  }
  for (const Growth& growth : growths) {
    const Row& base = growth.base();
    // The subject first, then each floor.
    for (std::size_t side = 0; side <= base.floors.size(); ++side) {
      const auto of = [&](const Row& row) { return side == 0 ? row.subject : row.floors.at(side - 1); };
      lines += fmt::format("| {} | {} |", side == 0 ? growth.name : "", side == 0 ? "the plug-in" : of(base).name);
      for (const std::size_t size : sizes) {
        const auto row =
            std::find_if(growth.rows.begin(), growth.rows.end(), [&](const Row& one) { return one.events == size; });
        lines += row == growth.rows.end() || costOfOne(of(base)) <= 0
                     ? " |"
                     : fmt::format(" {:.2f} |", costOfOne(of(*row)) / costOfOne(of(base)));
      }
      lines += "\n";
    }
  }
  return head + "\n" + rule + "\n" + lines;
}

}  // namespace

std::string amountText(Unit unit, double amount) {
  switch (unit) {
    case Unit::kPerSecond:
      return fmt::format("{:.0f} per second", amount);
    case Unit::kMebibytes:
      return fmt::format("{:.1f} MiB", amount);
    case Unit::kSeconds:
      break;
  }
  if (amount < 1e-6) { return fmt::format("{:.0f} ns", amount * 1e9); }
  if (amount < 1e-3) { return fmt::format("{:.1f} µs", amount * 1e6); }
  if (amount < 1) { return fmt::format("{:.2f} ms", amount * 1e3); }
  return fmt::format("{:.2f} s", amount);
}

std::string rowsHead() {
  return "| what | events in store | rows | median (low to high) | beside | its median | ratio (low to high) | aim |\n"
         "|---|---|---|---|---|---|---|---|\n";
}

std::string rowLines(const Row& row) {
  const std::string events = row.events == 0 ? "" : grouped(row.events);
  std::string lines = fmt::format("| {} | {} | {} | {} |", row.name, events, grouped(row.subject.rows),
                                  spreadText(row.unit, row.subject.amount));
  if (row.floors.empty()) { return lines + fmt::format(" | | | {} |\n", aimText(row)); }
  for (std::size_t i = 0; i < row.floors.size(); ++i) {
    const Side& floor = row.floors[i];
    const std::string rows = floor.rows == row.subject.rows ? "" : fmt::format(" for {} rows", grouped(floor.rows));
    if (i > 0) { lines += "| | | | |"; }
    lines += fmt::format(" {} | {}{} | {:.2f} ({:.2f} to {:.2f}) | {} |\n", floor.name,
                         amountText(row.unit, floor.amount.median), rows, floor.ratio.median, floor.ratio.low,
                         floor.ratio.high, i == 0 ? aimText(row) : "");
  }
  return lines;
}

std::string reportText(const Results& results) {
  std::string text = fmt::format("Measured on {}, on {} hardware threads.\n\n", results.date, results.threads);
  text += rowsHead();
  for (const Row& row : byName(results.rows)) { text += rowLines(row); }
  if (const auto growths = growthsOf(results); !growths.empty()) {
    text += fmt::format(
        "\nGrowth: what one row (an occurrence, an event, a save) costs in a store of so many events, by what it costs "
        "in one of {}.\n\n{}",
        grouped(growths.front().base().events), growthTable(growths));
  }
  if (!results.instructions.empty()) {
    text += "\n| task | instructions |\n|---|---|\n";
    for (const auto& count : results.instructions) {
      text += fmt::format("| {} | {} |\n", count.task, grouped(count.instructions));
    }
  }
  if (!results.notes.empty()) { text += "\n"; }
  for (const auto& note : results.notes) { text += "- " + note + "\n"; }
  return text;
}

void writeReport(const Results& results, const std::filesystem::path& file) {
  std::string text = std::filesystem::exists(file) ? contentOf(file) : "";
  const auto begin = text.find(kBegin), end = text.find(kEnd);
  if (begin == std::string::npos || end == std::string::npos || end < begin) {
    text = reportText(results);
  } else {
    text.replace(begin + kBegin.size(), end - begin - kBegin.size(), reportText(results));
  }
  std::ofstream out(file, std::ios::binary);
  out << text;
  if (!out.flush()) { throw std::runtime_error("cannot write " + file.string()); }
}

}  // namespace orlocal::bench

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

std::string withUnit(Unit unit, const std::string& number) {
  return number + (unit == Unit::kPerSecond ? " per second" : " MiB");
}

std::string spreadText(Unit unit, const Spread& spread) {
  if (spread.low == spread.high) { return amountText(unit, spread.median); }
  if (unit != Unit::kSeconds) {
    const int digits = unit == Unit::kPerSecond ? 0 : 1;
    return withUnit(unit, fmt::format("{:.{}f} ({:.{}f} to {:.{}f})", spread.median, digits, spread.low, digits,
                                      spread.high, digits));
  }
  return fmt::format("{} ({} to {})", amountText(unit, spread.median), amountText(unit, spread.low),
                     amountText(unit, spread.high));
}

/// What an aim is for: the ratio to the first floor, or the amount where there is none.
double aimedAt(const Row& row) {
  return row.floors.empty() ? row.subject.amount.median : row.floors.front().ratio.median;
}

std::string grouped(std::size_t number) {
  std::string text = std::to_string(number);
  for (auto at = static_cast<std::ptrdiff_t>(text.size()) - 3; at > 0; at -= 3) {
    text.insert(static_cast<std::size_t>(at), ",");
  }
  return text;
}

std::string aimText(const Row& row) {
  if (row.aim <= 0) { return ""; }
  const std::string aim = row.floors.empty() ? amountText(row.unit, row.aim) : fmt::format("{:g}", row.aim);
  return aim + (aimedAt(row) <= row.aim ? "" : " (missed)");
}

/// A table with a column for each size of store, after others.
class SizeTable {
 public:
  SizeTable(const std::vector<Series>& all, const std::string& before, const std::string& after) {
    for (const Series& series : all) {
      for (const Row& row : series.rows) { m_sizes.insert(row.events); }
    }
    std::string sizes;
    for (const std::size_t size : m_sizes) { sizes += fmt::format(" {} |", grouped(size)); }
    m_text = before + sizes + after + "\n";
    const auto columns = std::count(m_text.begin(), m_text.end(), '|') - 1;
    m_text += "|";
    for (std::ptrdiff_t i = 0; i < columns; ++i) { m_text += "---|"; }
    m_text += "\n";
  }

  /// `cell` is asked for each row that there is.
  template <class Cell>
  void add(const Series& series, const std::string& before, const Cell& cell, const std::string& after) {
    m_text += before;
    for (const std::size_t size : m_sizes) {
      const auto row =
          std::find_if(series.rows.begin(), series.rows.end(), [&](const Row& one) { return one.events == size; });
      m_text += row == series.rows.end() ? " |" : " " + cell(*row) + " |";
    }
    m_text += after + "\n";
  }

  const std::string& text() const { return m_text; }

 private:
  std::set<std::size_t> m_sizes;
  std::string m_text;
};

/// The aims, and in which stores they are missed. `aimOf` and `reachedBy` are asked for each row.
template <class AimOf, class ReachedBy>
std::string aimText(const Series& series, const AimOf& aimOf, const ReachedBy& reachedBy) {
  std::string aims, missed;
  double before = 0;
  for (const Row& row : series.rows) {
    const double aim = aimOf(row);
    if (aim <= 0) { continue; }
    if (aim != before) {
      aims += before <= 0 ? fmt::format("{:g}", aim) : fmt::format("; {:g} at {}", aim, grouped(row.events));
    }
    before = aim;
    if (reachedBy(row) > aim) { missed += (missed.empty() ? " (missed at " : ", ") + grouped(row.events); }
  }
  return aims + (missed.empty() ? "" : missed + ")");
}

/// Ratios, and amounts where there is no floor.
std::string ratiosBySize(std::vector<Series> all) {
  std::erase_if(all, [](const Series& series) { return !series.grows(); });
  if (all.empty()) { return ""; }
  SizeTable table(all, "| what | beside |", " aim |");
  for (const Series& series : all) {
    const std::size_t floors = series.base().floors.size();
    for (std::size_t i = 0; i < std::max<std::size_t>(floors, 1); ++i) {
      const auto cell = [&](const Row& row) {
        return floors == 0 ? amountText(row.unit, row.subject.amount.median)
                           : fmt::format("{:.2f}", row.floors.at(i).ratio.median);
      };
      table.add(series,
                fmt::format("| {} | {} |", i == 0 ? series.name : "", floors == 0 ? "" : series.base().floors[i].name),
                cell,
                fmt::format(" {} |", i == 0 ? aimText(
                                                  series, [](const Row& row) { return row.aim; }, aimedAt)
                                            : ""));
    }
  }
  return "Ratios to the floors, by the number of events in the store:\n\n" + table.text() + "\n";
}

std::string singleRows(std::vector<Series> all) {
  std::erase_if(all, [](const Series& series) { return series.grows(); });
  if (all.empty()) { return ""; }
  std::string text = "Measured in one store, or without any:\n\n" + rowsHead();
  for (const Series& series : all) { text += rowLines(series.rows.front()); }
  return text + "\n";
}

std::string growthTable(const std::vector<Series>& all) {
  if (all.empty()) { return ""; }
  SizeTable table(all, "| what | who |", " aim |");
  for (const Series& series : all) {
    const Row& base = series.base();
    // The subject first, then each floor.
    for (std::size_t side = 0; side <= base.floors.size(); ++side) {
      const auto of = [&](const Row& row) { return costOfOne(side == 0 ? row.subject : row.floors.at(side - 1)); };
      table.add(
          series,
          fmt::format("| {} | {} |", side == 0 ? series.name : "",
                      side == 0 ? "the plug-in" : base.floors[side - 1].name),
          [&](const Row& row) { return of(base) > 0 ? fmt::format("{:.2f}", of(row) / of(base)) : ""; },
          side > 0 ? " |"
                   : fmt::format(" {} |", aimText(
                                              series, [](const Row& row) { return row.growthAim; },
                                              [&](const Row& row) {
                                                return row.events > base.events ? of(row) / of(base) : 0;
                                              })));
    }
  }
  return fmt::format(
      "Growth: what one row (an occurrence, an event, a save) costs in a store of so many events, by what it costs in "
      "one of {}:\n\n{}\n",
      grouped(all.front().base().events), table.text());
}

std::string instructionTable(const std::vector<InstructionCount>& counts) {
  if (counts.empty()) { return ""; }
  std::string text = "| task | instructions |\n|---|---|\n";
  for (const auto& count : counts) { text += fmt::format("| {} | {} |\n", count.task, grouped(count.instructions)); }
  return text + "\n";
}

}  // namespace

std::string amountText(Unit unit, double amount) {
  switch (unit) {
    case Unit::kPerSecond:
      return withUnit(unit, fmt::format("{:.0f}", amount));
    case Unit::kMebibytes:
      return withUnit(unit, fmt::format("{:.1f}", amount));
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
  const auto all = seriesOf(results);
  std::string text = fmt::format("Measured on {}, on {} hardware threads.\n\n", results.date, results.threads);
  text += ratiosBySize(all) + singleRows(all) + growthTable(growingTimesOf(results));
  text += instructionTable(results.instructions);
  for (const auto& note : results.notes) { text += "- " + note + "\n"; }
  text += "\n<details><summary>All numbers</summary>\n\n" + rowsHead();
  for (const Series& series : all) {
    for (const Row& row : series.rows) { text += rowLines(row); }
  }
  return text + "\n</details>\n";
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

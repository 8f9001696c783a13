#include "report.h"

#include <cstdio>
#include <ctime>
#include <thread>
#include <utility>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "tables.h"

namespace orlocal::bench {

Report::Report() {
  m_results.date = fmt::format("{:%Y-%m-%d}", fmt::gmtime(std::time(nullptr)));
  m_results.threads = std::thread::hardware_concurrency();
}

void Report::add(Row row) {
  if (m_results.rows.empty()) { std::fputs(rowsHead().c_str(), stdout); }
  std::fputs(rowLines(row).c_str(), stdout);
  std::fflush(stdout);
  for (const Side& floor : row.floors) {
    if (floor.rows == row.subject.rows) { continue; }
    m_comparedLike = false;
    note(fmt::format("Not alike: \"{}\" in a store of {} events was about {} rows, and {} about {}.", row.name,
                     row.events, row.subject.rows, floor.name, floor.rows));
  }
  m_results.rows.push_back(std::move(row));
}

void Report::add(InstructionCount count) {
  print(fmt::format("| {} | {} instructions |", count.task, count.instructions));
  m_results.instructions.push_back(std::move(count));
}

void Report::note(std::string line) {
  print("(" + line + ")");
  m_results.notes.push_back(std::move(line));
}

void Report::print(const std::string& text) const {
  std::puts(text.c_str());
  std::fflush(stdout);
}

}  // namespace orlocal::bench

#include <cstdio>
#include <utility>

#include <fmt/format.h>

#include "measurements.h"

namespace orlocal::bench {
namespace {

std::string time(double seconds) {
  if (seconds < 1e-6) { return fmt::format("{:.0f} ns", seconds * 1e9); }
  if (seconds < 1e-3) { return fmt::format("{:.1f} µs", seconds * 1e6); }
  if (seconds < 1) { return fmt::format("{:.2f} ms", seconds * 1e3); }
  return fmt::format("{:.2f} s", seconds);
}

std::string line(const Row& row) {
  const std::string aim = row.aim > 0 ? fmt::format("{:g}{}", row.aim, row.ratio() <= row.aim ? "" : " (missed)") : "";
  return fmt::format("| {} | {} | {} | {} ({} to {}) | {} | {:.2f} | {} |", row.name, row.events, row.rows,
                     time(row.subject.median), time(row.subject.low), time(row.subject.high), time(row.floor.median),
                     row.ratio(), aim);
}

constexpr const char* kHead =
    "| what | events in store | rows | time, median (low to high) | floor | ratio | aim |\n"
    "|---|---|---|---|---|---|---|";

}  // namespace

void Report::add(Row row) {
  if (m_rows.empty()) { std::puts(kHead); }
  std::puts(line(row).c_str());
  std::fflush(stdout);
  m_rows.push_back(std::move(row));
}

void Report::note(std::string line) {
  std::printf("(%s)\n", line.c_str());
  std::fflush(stdout);
  m_notes.push_back(std::move(line));
}

void Report::print(const std::string& text) const {
  std::puts(text.c_str());
  std::fflush(stdout);
}

std::string Report::markdown() const {
  std::string text = std::string(kHead) + "\n";
  for (const auto& row : m_rows) { text += line(row) + "\n"; }
  if (!m_notes.empty()) { text += "\n"; }
  for (const auto& note : m_notes) { text += "- " + note + "\n"; }
  return text;
}

}  // namespace orlocal::bench

#include "host/commands/command_line/progress_line.h"

#include <ostream>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"

namespace orlocal::host {
namespace {

constexpr std::chrono::seconds kPatience{1};
constexpr std::chrono::milliseconds kBetweenUpdates{100};

}  // namespace

ProgressLine::ProgressLine(std::ostream& terminal, bool onTerminal, std::string what, Clock clock)
    : m_terminal(terminal),
      m_on(onTerminal),
      m_what(std::move(what)),
      m_clock(std::move(clock)),
      m_next(m_clock() + kPatience) {}

void ProgressLine::announce(const std::string& text) {
  if (m_on) { show(text); }
}

void ProgressLine::update(std::size_t done, std::size_t all) {
  if (all > 0 && isTime()) { show(tr("{} of {} ({}%)", done, all, done * 100 / all)); }
}

void ProgressLine::tell(const std::string& text) {
  if (isTime()) { show(text); }
}

bool ProgressLine::isTime() {
  if (!m_on) { return false; }
  const auto now = m_clock();
  if (now < m_next) { return false; }
  m_next = now + kBetweenUpdates;
  return true;
}

void ProgressLine::show(const std::string& text) {
  m_terminal << "\r\x1b[2K" << m_what << ": " << text << std::flush;
  m_shown = true;
}

void ProgressLine::clear() {
  if (m_shown) { m_terminal << "\r\x1b[2K" << std::flush; }
  m_shown = false;
}

}  // namespace orlocal::host

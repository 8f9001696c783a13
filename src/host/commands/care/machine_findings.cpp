#include "host/commands/care/machine_findings.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>

#include "base/translation.h"

namespace orlocal::host {
namespace {

std::string offsetText(int seconds) {
  const int minutes = std::abs(seconds) / 60;
  return fmt::format("{}{:02}:{:02}", seconds < 0 ? '-' : '+', minutes / 60, minutes % 60);
}

}  // namespace

Findings zoneFindings(const store::Zone& zone, bool partHours, store::Moment now) {
  constexpr const char* kSubject = translatable("zone");
  constexpr std::chrono::hours kHalfYear{24 * 182};
  constexpr int kHour = 3600;
  const int today = zone.offsetSeconds(now);
  const bool whole = today % kHour == 0 && zone.offsetSeconds(now + kHalfYear) % kHour == 0;
  const std::string seen = tr("{}, now {} from UTC", zone.name(), offsetText(today));
  if (!whole && !partHours) {
    return {problem(kSubject, tr("{}: the plug-in's functions take no dates in a zone of part hours.", seen),
                    tr("Set dates-in-part-hour-zones = yes in [plug-in] of a settings file, or another zone."))};
  }
  return {fine(kSubject, tr("{}; functions take dates in it.", seen))};
}

Findings settingsFindings(const Settings& settings) {
  constexpr const char* kSubject = translatable("settings");
  Findings findings;
  for (const auto& complaint : settings.complaints()) {
    findings.push_back(problem(kSubject, complaint + '.', tr("docs/settings.md describes what may stand there.")));
  }
  std::string read;
  for (const auto& file : Settings::filesOfUser()) {
    std::error_code error;
    if (std::filesystem::exists(file, error)) { read += (read.empty() ? "" : ", ") + file.string(); }
  }
  findings.push_back(fine(kSubject, read.empty() ? tr("No settings file is there.") : tr("Read from {}.", read)));
  if (const char* pinned = std::getenv("ORLOCAL_NOW"); pinned != nullptr && *pinned != '\0') {
    findings.push_back(note(kSubject, tr("The clock is pinned to {} (ORLOCAL_NOW).", pinned),
                            tr("Take the variable away, unless this is a test.")));
  }
  return findings;
}

}  // namespace orlocal::host
